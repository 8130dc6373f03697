// How log and dump read their settings from the registry, and follow them.
#include "audioapi/audio_api_settings.h"

#include "audioapi/audio_api_registry.h"

#include <algorithm>
#include <exception>
#include <limits>

namespace
{
constexpr UINT64 BYTES_PER_MEGABYTE = 1000000;
}

UINT32 CAudioSettings::ReadNumber(const std::string& strPath, const std::string& strName, UINT32 iMissing)
{
    UINT32 iValue = iMissing;
    CAudioREG::ReadRegValue(strPath, strName, iValue);
    return iValue;
}

UINT32 CAudioSettings::ReadCount(const std::string& strPath, const std::string& strName, UINT32 iDefault)
{
    const UINT32 iValue = ReadNumber(strPath, strName, 0);
    return iValue == 0 ? iDefault : iValue;
}

UINT32 CAudioSettings::ReadMegabytes(const std::string& strPath, const std::string& strName, UINT32 iDefault)
{
    const UINT64 iBytes = ReadNumber(strPath, strName, 0) * BYTES_PER_MEGABYTE;
    const UINT64 iLargest = std::numeric_limits<UINT32>::max(); // a larger limit would wrap round to a small one
    return iBytes == 0 ? iDefault : static_cast<UINT32>(std::min(iBytes, iLargest));
}

void CAudioSettings::Follow(HKEY hKey, const CAudioWorkerEvent& hRegistEvent, const CAudioFlag& iRunFlag,
                            const std::function<void()>& fnRead)
{
    while (iRunFlag == 1)
    {
        if (WaitForSingleObject(hRegistEvent, INFINITE) != WAIT_OBJECT_0)
        {
            Sleep(1);
            continue;
        }
        if (iRunFlag == 0)
            break;
        CAudioREG::RegNotifyReset(hKey, hRegistEvent);
        try
        {
            fnRead();
        }
        catch (const std::exception&)
        {
            // Without memory the settings stay as they are until the next change.
        }
    }
}
