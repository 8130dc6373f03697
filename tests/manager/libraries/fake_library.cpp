// A protection library with a fault: which one, the build says. What it plays has its sign turned, so that it is known.
#include "protection/kelvane_protection.h"

#include <cstring>
#include <stdexcept>

extern "C"
{
    int32_t AudioKelvaneGetVersion(const KelvaneVersion** pVersion)
    {
        if (FAKE_THROWS)
            throw std::runtime_error("no version");
        static KelvaneVersion oVersion = {"fake", "Fake 7.8.9", "today"};
        if (FAKE_LONG_VERSION)
        {
            // All three together are one character more than the program's line of them takes.
            memset(oVersion.szPlatform, 'p', KELVANE_VERSION_TEXT_LEN - 1);
            memset(oVersion.szBuildTime, 't',
                   261 - sizeof("KelvanePlatForm:,Ver:Fake 7.8.9,Time:") - (KELVANE_VERSION_TEXT_LEN - 1));
        }
        *pVersion = &oVersion;
        return FAKE_VERSION_RESULT;
    }

    int32_t AudioKelvaneGetSize(KelvaneMemSize* pMemSize)
    {
        *pMemSize = {64, 64, {}};
        return 0;
    }
    int32_t AudioKelvaneInit(void*, void*)
    {
        return 0;
    }
    int32_t AudioKelvaneSetParams(void*, void*, const KelvaneStruParam*)
    {
        return 0;
    }
    int32_t AudioKelvaneGetParams(void*, KelvaneStruParam*)
    {
        return 0;
    }
    int32_t AudioKelvaneApply(void*, void*, KelvaneDataStruct* pData)
    {
        for (int ch = 0; ch < KELVANE_MAX_CHANNELS && pData->psDataIn[ch] != nullptr; ++ch)
            for (int s = 0; s < pData->iFrameLen; ++s)
                pData->psDataOut[ch][s] = -pData->psDataIn[ch][s];
        return 0;
    }
#if !FAKE_HALF
    int32_t AudioKelvaneIvOptimize(void*)
    {
        return 0;
    }
#endif
    int32_t AudioKelvaneSetBatteryInformation(void*, int32_t)
    {
        return 0;
    }
    int32_t AudioKelvaneClearStatus(void*)
    {
        return 0;
    }
    int32_t AudioKelvaneSetTemperatureInformation(void*, int32_t)
    {
        return 0;
    }
}
