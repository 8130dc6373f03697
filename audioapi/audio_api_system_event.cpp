// The system's event log: has an event happened just now.
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"
#include "audioapi/audio_api_time.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace
{
constexpr DWORD BLOCK_BYTES = 65536;

struct CEventLogCloser
{
    void operator()(HANDLE hEventLog) const { CloseEventLog(hEventLog); }
};

// Records lie at any address.
UINT32 ReadField(const BYTE* pRecord, size_t iOffset)
{
    UINT32 iValue = 0;
    std::memcpy(&iValue, pRecord + iOffset, sizeof(iValue));
    return iValue;
}

// The time of the newest record of the event, or nothing.
std::string FindNewestTime(HANDLE hEventLog, DWORD dwEventID)
{
    DWORD dwSize = BLOCK_BYTES;
    std::unique_ptr<BYTE[]> pBuffer(new (std::nothrow) BYTE[dwSize]);
    std::string strTime;
    while (strTime.empty() && !AUDIO_MISSING(pBuffer, AUDIO_NO_OBJECT))
    {
        DWORD dwRead = 0;
        DWORD dwNeeded = 0;
        if (ReadEventLogW(hEventLog, EVENTLOG_SEQUENTIAL_READ | EVENTLOG_BACKWARDS_READ, 0, pBuffer.get(), dwSize,
                          &dwRead, &dwNeeded))
        {
            strTime = CAudioSYS::TraversalSystemEvent(pBuffer.get(), dwRead, dwEventID);
            continue;
        }
        const DWORD dwStatus = AudioLastError();
        if (dwStatus != ERROR_INSUFFICIENT_BUFFER || dwNeeded <= dwSize)
        {
            AUDIO_FAIL_IF(dwStatus != ERROR_HANDLE_EOF, dwStatus);
            break;
        }
        dwSize = dwNeeded;
        pBuffer.reset(new (std::nothrow) BYTE[dwSize]);
    }
    return strTime;
}
} // namespace

std::string CAudioSYS::TraversalSystemEvent(const BYTE* pBuffer, DWORD dwBytes, DWORD dwEventID)
{
    constexpr size_t FIELDS_END = offsetof(EVENTLOGRECORD, EventID) + sizeof(DWORD);
    while (dwBytes >= FIELDS_END)
    {
        const UINT32 iLength = ReadField(pBuffer, offsetof(EVENTLOGRECORD, Length));
        if (iLength < FIELDS_END || iLength > dwBytes)
            break; // no record
        if ((ReadField(pBuffer, offsetof(EVENTLOGRECORD, EventID)) & 0xFFFF) == dwEventID)
        {
            std::string strTime = CAudioTIME::GetStrTime(ReadField(pBuffer, offsetof(EVENTLOGRECORD, TimeGenerated)),
                                                         AUDIO_LOG_TIME_FORMAT);
            AUDIOLOG_DEBUG("Find event " + CAudioSTR::ToString(dwEventID) + " occurse at " + strTime);
            return strTime;
        }
        pBuffer += iLength;
        dwBytes -= iLength;
    }
    return {};
}

bool CAudioSYS::FindLastestMatchEvent(const std::string& strLogName, DWORD dwEventID)
{
    const std::string strBaseTime = CAudioTIME::GetStrTime(AUDIO_LOG_TIME_FORMAT);
    AUDIOLOG_DEBUG("Need Check event BaseTime occurse at " + strBaseTime);
    const std::unique_ptr<void, CEventLogCloser> oEventLog(OpenEventLogA(nullptr, strLogName.c_str()));
    if (oEventLog == nullptr)
    {
        AUDIOLOG_ERROR(AudioLastError(), "Open " + strLogName + " EventLog failed!");
        return false;
    }
    return FindNewestTime(oEventLog.get(), dwEventID) == strBaseTime;
}
