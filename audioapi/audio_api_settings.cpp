// How log and dump read their settings from the registry, and follow them.
#include "audioapi/audio_api_settings.h"

#include "audioapi/audio_api_key_watch.h"

#include <algorithm>
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

void CAudioSettings::Follow(const char* pPath, CAudioWorkerEvent& hRegistEvent, const CAudioFlag& iRunFlag,
                            const std::function<void()>& fnRead, const AudioLogSite& oSite,
                            const char* pStartText) noexcept
{
    CAudioKeyWatch oWatch(hRegistEvent);
    if (!oWatch.MakeEvent(oSite, "pThis->m_hRegistEvent") || !oWatch.Start(pPath, oSite, pStartText))
        return;
    CAudioKeyWatch::ReadValues(fnRead); // what changed before the watch
    oWatch.Follow(iRunFlag, fnRead);
}
