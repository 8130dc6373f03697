// The lines of the scope timer.
#include "audioapi/audio_api_trace.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_time.h"

#include <new>

CTraceLog::CTraceLog(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
                     const std::string& strExtra)
    : m_strFunction(strFunction), m_strFile(strFile), m_strExtra(strExtra), m_iLine(iLine), m_iLevel(iLevel)
{
    if (CAudioLog::Instance()->IsRecorded(m_iLevel))
        RecordLine("==>");
    // Last, so that the time of the log call is not measured.
    GetLocalTime(&m_stStartTime);
}

CTraceLog::~CTraceLog()
{
    SYSTEMTIME stEndTime{};
    GetLocalTime(&stEndTime);
    if (!CAudioLog::Instance()->IsRecorded(m_iLevel))
        return;
    try
    {
        RecordLine(" [" + std::to_string(CAudioTIME::GetTimeDiff(m_stStartTime, stEndTime)) + "ms]<==");
    }
    catch (const std::bad_alloc&)
    {
        // The mark of a very long span has no memory: its line is lost.
    }
}

void CTraceLog::RecordLine(const std::string& strMark) const noexcept
{
    try
    {
        const std::string strMessage = m_strExtra.empty() ? strMark : strMark + "[" + m_strExtra + "]";
        CAudioLog::Instance()->RecordItem(std::string(m_strFunction), std::string(m_strFile), m_iLine, m_iLevel, 0,
                                          strMessage);
    }
    catch (const std::bad_alloc&)
    {
        // The line is lost: a scope goes on, with or without its trace.
    }
}
