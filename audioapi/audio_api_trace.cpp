// The lines of the scope timer.
#include "audioapi/audio_api_trace.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_time.h"

#include <exception>

CTraceLog::CTraceLog(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
                     std::string_view strExtra) noexcept
    : m_strFunction(strFunction), m_strFile(strFile), m_iLine(iLine), m_iLevel(iLevel)
{
    try
    {
        m_strExtra = strExtra;
    }
    catch (const std::exception&)
    {
        // The lines go without it.
    }
    AUDIO_LOG_STATEMENT(IsRecorded(m_iLevel),
                        RecordItem(m_strFunction, m_strFile, m_iLine, m_iLevel, 0, "==>" + ExtraText()));
    // Last, so that the time of the log call is not measured.
    GetLocalTime(&m_stStartTime);
}

CTraceLog::~CTraceLog()
{
    SYSTEMTIME stEndTime{};
    GetLocalTime(&stEndTime);
    AUDIO_LOG_STATEMENT(
        IsRecorded(m_iLevel),
        RecordItem(m_strFunction, m_strFile, m_iLine, m_iLevel, 0,
                   " [" + std::to_string(CAudioTIME::GetTimeDiff(m_stStartTime, stEndTime)) + "ms]<==" + ExtraText()));
}

std::string CTraceLog::ExtraText() const
{
    return m_strExtra.empty() ? m_strExtra : "[" + m_strExtra + "]";
}
