// The timing statistics and their record.
#include "apo/kelvane/engine/apo_kelvane_apply_times.h"

#include "apo/kelvane/apo_kelvane_manager.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace
{
constexpr int iReportFrameCount = 1000; // a timing period has one frame more
constexpr INT64 i64GapTimeLimit = 10;   // milliseconds for two frames, which is their playing time
} // namespace

void CKelvaneApplyTimes::CountApplyTime(INT64 i64Time, int iOffload)
{
    m_i64GapTime += i64Time;
    m_i64TotalTime += i64Time;
    m_i64MaxTime = std::max(m_i64MaxTime, i64Time);
    m_i64MinTime = m_iApplyFrameCount == 0 ? i64Time : std::min(m_i64MinTime, i64Time);
    if (m_iApplyFrameCount++ < iReportFrameCount)
        return;
    ReportApplyTime(iOffload);
    m_i64TotalTime = 0;
    m_i64MaxTime = 0;
    m_i64MinTime = 0;
    m_iApplyFrameCount = 0;
}

// The formatting takes no heap block; memory that runs out behind it costs the line.
void CKelvaneApplyTimes::ReportApplyTime(int iOffload) const
try
{
    char szText[1024] = {};
    const float fAverage = static_cast<float>(m_i64TotalTime) / static_cast<float>(m_iApplyFrameCount);
    const int iLen = snprintf(szText, sizeof(szText),
                              "Total Time Required(%lld),Max Time Required(%lld),Min Time Required(%lld),"
                              "average Time Required(%.2f) of Per %d frames.",
                              static_cast<long long>(m_i64TotalTime), static_cast<long long>(m_i64MaxTime),
                              static_cast<long long>(m_i64MinTime), fAverage, m_iApplyFrameCount);
    CKelvaneManager::Instance()->PrintSmartDebugLog(AUDIO_PERFORMANCE_FILE, iLen < 0 ? "" : szText, iOffload);
}
catch (...)
{
}

void CKelvaneApplyTimes::EndGap()
{
    if (m_i64GapTime > i64GapTimeLimit)
        AUDIOLOG_WARN("Audio Kelvane Apply time gap:" + std::to_string(m_i64GapTime));
    m_i64GapTime = 0;
}
