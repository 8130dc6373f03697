// The form of eventlog.txt.
#include "eventlog/eventlog_text.h"

#include "platform/control/machine_native.h"

#include <cstring>
#include <fstream>

namespace
{
struct CEventType
{
    WORD wType;
    const char* pWord;
};
constexpr CEventType g_aEventTypes[] = {
    {EVENTLOG_ERROR_TYPE, "error"}, {EVENTLOG_WARNING_TYPE, "warning"}, {EVENTLOG_INFORMATION_TYPE, "information"}};

constexpr char LETTERS[] = "\\\t\n\r";
constexpr char NAMES[] = "\\tnr";
} // namespace

std::string EventLogFile()
{
    return machine::Folder() + "/eventlog.txt";
}

const char* EventTypeWord(WORD wType)
{
    for (const CEventType& stType : g_aEventTypes)
        if (stType.wType == wType)
            return stType.pWord;
    return nullptr;
}

WORD EventTypeOf(const std::string& strWord)
{
    for (const CEventType& stType : g_aEventTypes)
        if (strWord == stType.pWord)
            return stType.wType;
    return 0;
}

std::string EscapeEventField(const char* pText)
{
    std::string strText;
    for (; *pText != 0; ++pText)
    {
        const char* const pLetter = std::strchr(LETTERS, *pText);
        if (pLetter != nullptr)
            strText += '\\';
        strText += pLetter != nullptr ? NAMES[pLetter - LETTERS] : *pText;
    }
    return strText;
}

std::string UnescapeEventField(const std::string& strField)
{
    std::string strText;
    for (size_t i = 0; i < strField.size(); ++i)
    {
        const bool bNamed = strField[i] == '\\' && i + 1 < strField.size();
        const char* const pName = bNamed ? std::strchr(NAMES, strField[++i]) : nullptr;
        strText += pName != nullptr ? LETTERS[pName - NAMES] : strField[i];
    }
    return strText;
}

std::vector<std::string> machine::ReportedEvents()
{
    std::vector<std::string> vecRecords;
    std::ifstream oFile(EventLogFile());
    for (std::string strLine; std::getline(oFile, strLine);)
        vecRecords.push_back(strLine.substr(strLine.find('\t') + 1)); // behind the time
    return vecRecords;
}
