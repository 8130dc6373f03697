// The scope timer: logs the entry into a scope and the exit with the milliseconds between.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// The function and file names are literals (__FUNCTION__, __FILE__): they are not copied, so that a trace below the
// level allocates nothing. A scope goes on without its lines when there is no memory for them.
class CTraceLog
{
public:
    CTraceLog(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
              std::string_view strExtra) noexcept;
    virtual ~CTraceLog();
    CTraceLog(const CTraceLog&) = delete;
    CTraceLog& operator=(const CTraceLog&) = delete;

private:
    // The extra text in brackets, if there is one.
    std::string ExtraText() const;

    SYSTEMTIME m_stStartTime{};
    std::string_view m_strFunction;
    std::string_view m_strFile;
    std::string m_strExtra;
    UINT32 m_iLine;
    UINT32 m_iLevel;
};
