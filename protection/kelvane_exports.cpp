// The ten entry points: each checks its arguments and hands on to the instance in the run buffer.
#include "protection/kelvane_instance.h"

#include <new>

namespace
{
enum KelvaneResult : int32_t
{
    KELVANE_OK = 0,
    KELVANE_NULL_POINTER = 1,
    KELVANE_NOT_INITIALIZED = 2, // the run buffer holds no instance
    KELVANE_BAD_FRAME = 3,       // a frame length outside 1 to 240
    KELVANE_BAD_VALUE = 4,
    KELVANE_BUSY = 5, // the parameter set was being replaced all the while
};

constexpr int32_t LOWEST_TEMPERATURE = -5000; // degrees Celsius / 100
constexpr int32_t HIGHEST_TEMPERATURE = 20000;

// The tuning files name the version without what stands behind its last point.
const KelvaneVersion g_oVersion = {"x64", "Kelvane 1.0.0.1", __DATE__ " " __TIME__};

CKelvaneInstance* ToInstance(void* pRunBuf)
{
    CKelvaneInstance* pInstance = static_cast<CKelvaneInstance*>(pRunBuf);
    return pInstance->IsInitialized() ? pInstance : nullptr;
}

// Runs the operation on the run buffer's instance.
template <class Operation> int32_t WithInstance(void* pRunBuf, Operation fOperation)
{
    if (pRunBuf == nullptr)
        return KELVANE_NULL_POINTER;
    CKelvaneInstance* pInstance = ToInstance(pRunBuf);
    return pInstance != nullptr ? fOperation(*pInstance) : KELVANE_NOT_INITIALIZED;
}
} // namespace

extern "C"
{
    int32_t AudioKelvaneGetVersion(const KelvaneVersion** pVersion)
    {
        if (pVersion == nullptr)
            return KELVANE_NULL_POINTER;
        *pVersion = &g_oVersion;
        return KELVANE_OK;
    }

    int32_t AudioKelvaneGetSize(KelvaneMemSize* pMemSize)
    {
        if (pMemSize == nullptr)
            return KELVANE_NULL_POINTER;
        pMemSize->iRunBufSize = static_cast<int32_t>(sizeof(CKelvaneInstance));
        pMemSize->iScratchSize = static_cast<int32_t>(sizeof(KelvaneScratch));
        return KELVANE_OK;
    }

    int32_t AudioKelvaneInit(void* pRunBuf, void* pScratchBuf)
    {
        if (pRunBuf == nullptr || pScratchBuf == nullptr)
            return KELVANE_NULL_POINTER;
        new (pScratchBuf) KelvaneScratch{};
        new (pRunBuf) CKelvaneInstance;
        return KELVANE_OK;
    }

    int32_t AudioKelvaneSetParams(void* pRunBuf, void* pScratchBuf, const KelvaneStruParam* pStruParam)
    {
        if (pScratchBuf == nullptr || pStruParam == nullptr)
            return KELVANE_NULL_POINTER;
        return WithInstance(pRunBuf, [=](CKelvaneInstance& oInstance)
                            { return oInstance.SetParams(*pStruParam) ? KELVANE_OK : KELVANE_BAD_VALUE; });
    }

    int32_t AudioKelvaneGetParams(void* pRunBuf, KelvaneStruParam* pStruParam)
    {
        if (pStruParam == nullptr)
            return KELVANE_NULL_POINTER;
        return WithInstance(pRunBuf, [=](const CKelvaneInstance& oInstance)
                            { return oInstance.GetParams(*pStruParam) ? KELVANE_OK : KELVANE_BUSY; });
    }

    int32_t AudioKelvaneApply(void* pRunBuf, void* pScratchBuf, KelvaneDataStruct* pDataStruct)
    {
        if (pScratchBuf == nullptr || pDataStruct == nullptr)
            return KELVANE_NULL_POINTER;
        if (pDataStruct->iFrameLen < 1 || pDataStruct->iFrameLen > CKelvaneInstance::MAX_FRAME_LEN)
            return KELVANE_BAD_FRAME;
        return WithInstance(pRunBuf,
                            [=](CKelvaneInstance& oInstance)
                            {
                                oInstance.Apply(*static_cast<KelvaneScratch*>(pScratchBuf), *pDataStruct);
                                return KELVANE_OK;
                            });
    }

    int32_t AudioKelvaneIvOptimize(void* pRunBuf)
    {
        return WithInstance(pRunBuf,
                            [](CKelvaneInstance& oInstance)
                            {
                                oInstance.IvOptimize();
                                return KELVANE_OK;
                            });
    }

    int32_t AudioKelvaneSetBatteryInformation(void* pRunBuf, int32_t iBattery)
    {
        const bool bGood = (iBattery >= 0 && iBattery <= 100) || iBattery == CKelvaneInstance::UNKNOWN_BATTERY;
        return WithInstance(pRunBuf,
                            [=](CKelvaneInstance& oInstance)
                            {
                                if (bGood)
                                    oInstance.SetBattery(iBattery);
                                return bGood ? KELVANE_OK : KELVANE_BAD_VALUE;
                            });
    }

    int32_t AudioKelvaneClearStatus(void* pRunBuf)
    {
        return WithInstance(pRunBuf,
                            [](CKelvaneInstance& oInstance)
                            {
                                oInstance.ClearStatus();
                                return KELVANE_OK;
                            });
    }

    int32_t AudioKelvaneSetTemperatureInformation(void* pRunBuf, int32_t iTemperature)
    {
        const bool bGood = iTemperature >= LOWEST_TEMPERATURE && iTemperature <= HIGHEST_TEMPERATURE;
        return WithInstance(pRunBuf,
                            [=](CKelvaneInstance& oInstance)
                            {
                                if (bGood)
                                    oInstance.SetTemperature(iTemperature);
                                return bGood ? KELVANE_OK : KELVANE_BAD_VALUE;
                            });
    }
}
