// Reading the event log: lines of eventlog.txt as the platform's records.
#include "base/error.h"
#include "base/failure.h"
#include "eventlog/eventlog_text.h"
#include "processes/account.h"
#include "text/wide.h"
#include "threads/kernel.h"
#include "time/filetime.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>
#include <vector>

namespace
{
constexpr DWORD RECORD_MARK = 0x654C664C;
constexpr size_t FIRST_TEXT = 4; // field

// The lines as they stood when it was opened, newest last.
class CEventLog : public CKernelObject
{
public:
    std::mutex m_oMutex;
    std::vector<std::string> m_vecLines;
};

std::vector<std::string> Fields(const std::string& strLine)
{
    std::vector<std::string> vecFields;
    std::istringstream oStream(strLine);
    for (std::string strField; std::getline(oStream, strField, '\t');)
        vecFields.push_back(UnescapeEventField(strField));
    return vecFields;
}

// Seconds since 1970.
bool ReadTime(const std::string& strText, DWORD& dwTime)
{
    SYSTEMTIME stTime{};
    FILETIME stFileTime{};
    if (std::sscanf(strText.c_str(), "%hu-%hu-%hu %hu:%hu:%hu.%hu", &stTime.wYear, &stTime.wMonth, &stTime.wDay,
                    &stTime.wHour, &stTime.wMinute, &stTime.wSecond, &stTime.wMilliseconds) != 7 ||
        !SystemTimeToFileTime(&stTime, &stFileTime))
        return false;
    dwTime = static_cast<DWORD>(SecondsOf(UtcOfLocal(TicksOf(stFileTime))));
    return true;
}

void AppendText(std::string& strRecord, const std::string& strText)
{
    const std::wstring strWide = WideOf(strText);
    strRecord.append(reinterpret_cast<const char*>(strWide.c_str()), (strWide.size() + 1) * sizeof(WCHAR));
}

// The record's bytes; empty for a line that is none. Wide characters keep every offset a multiple of four.
std::string RecordOf(const std::string& strLine, size_t iNumber)
{
    const std::vector<std::string> vecFields = Fields(strLine);
    EVENTLOGRECORD stHead{};
    if (vecFields.size() < FIRST_TEXT || !ReadTime(vecFields[0], stHead.TimeGenerated))
        return "";
    stHead.Reserved = RECORD_MARK;
    stHead.RecordNumber = static_cast<DWORD>(iNumber);
    stHead.TimeWritten = stHead.TimeGenerated;
    stHead.EventID = static_cast<DWORD>(std::strtoul(vecFields[3].c_str(), nullptr, 0));
    stHead.EventType = EventTypeOf(vecFields[2]);
    stHead.NumStrings = static_cast<WORD>(vecFields.size() - FIRST_TEXT);
    std::string strRecord(sizeof(stHead), '\0');
    AppendText(strRecord, vecFields[1]);
    AppendText(strRecord, NarrowOf(HostName().c_str()));
    stHead.StringOffset = stHead.UserSidOffset = static_cast<DWORD>(strRecord.size());
    for (size_t i = FIRST_TEXT; i < vecFields.size(); ++i)
        AppendText(strRecord, vecFields[i]);
    stHead.DataOffset = static_cast<DWORD>(strRecord.size());
    stHead.Length = static_cast<DWORD>(strRecord.size() + sizeof(DWORD));
    strRecord.append(reinterpret_cast<const char*>(&stHead.Length), sizeof(DWORD));
    std::memcpy(strRecord.data(), &stHead, sizeof(stHead));
    return strRecord;
}
} // namespace

HANDLE OpenEventLogA(LPCSTR lpUNCServerName, LPCSTR lpSourceName)
{
    if (IsToldToFail("OpenEventLogA"))
        return nullptr;
    if (lpUNCServerName != nullptr || lpSourceName == nullptr || lpSourceName[0] == 0)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto pLog = std::make_shared<CEventLog>();
    std::ifstream oFile(EventLogFile()); // none is an empty log
    for (std::string strLine; std::getline(oFile, strLine);)
        pLog->m_vecLines.push_back(strLine);
    return OpenKernelHandle(std::move(pLog));
}

BOOL ReadEventLogW(HANDLE hEventLog, DWORD dwReadFlags, DWORD, LPVOID lpBuffer, DWORD nNumberOfBytesToRead,
                   DWORD* pnBytesRead, DWORD* pnMinNumberOfBytesNeeded)
{
    if (IsToldToFail("ReadEventLogW"))
        return FALSE;
    const std::shared_ptr<CEventLog> pLog = KernelObjectAs<CEventLog>(hEventLog);
    if (pLog == nullptr)
        return FALSE;
    if (dwReadFlags != (EVENTLOG_SEQUENTIAL_READ | EVENTLOG_BACKWARDS_READ) || lpBuffer == nullptr ||
        pnBytesRead == nullptr || pnMinNumberOfBytesNeeded == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    *pnBytesRead = 0;
    *pnMinNumberOfBytesNeeded = 0;
    const std::lock_guard<std::mutex> oLock(pLog->m_oMutex);
    for (std::vector<std::string>& vecLines = pLog->m_vecLines; !vecLines.empty(); vecLines.pop_back())
    {
        const std::string strRecord = RecordOf(vecLines.back(), vecLines.size());
        if (strRecord.size() > nNumberOfBytesToRead - *pnBytesRead)
        {
            *pnMinNumberOfBytesNeeded = *pnBytesRead == 0 ? static_cast<DWORD>(strRecord.size()) : 0;
            return *pnBytesRead > 0 ? TRUE : FailWith(ERROR_INSUFFICIENT_BUFFER);
        }
        std::memcpy(static_cast<BYTE*>(lpBuffer) + *pnBytesRead, strRecord.data(), strRecord.size());
        *pnBytesRead += static_cast<DWORD>(strRecord.size());
    }
    return *pnBytesRead > 0 ? TRUE : FailWith(ERROR_HANDLE_EOF);
}

BOOL CloseEventLog(HANDLE hEventLog)
{
    return KernelObjectAs<CEventLog>(hEventLog) != nullptr && CloseKernelHandle(hEventLog) ? TRUE : FALSE;
}
