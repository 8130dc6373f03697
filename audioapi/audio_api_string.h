// Text helpers with fixed rules: trimming, splitting, numbers, code pages. The tuning file and the log's names rest on
// them.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Operations without state, from any thread; each allocates its result, so none belongs on the processing thread.
// White space is exactly "\r\t\n ". Mode 1 takes the delimiter's last occurrence, any other its first.
class CAudioSTR
{
public:
    static std::string Trim(const std::string& strText);

    // The trimmed pieces between delimiters; empty pieces are dropped.
    static std::vector<std::string> Split(const std::string& strText, const std::string& strDelimiter);
    // Both outs are emptied; when the delimiter occurs they take what stands before and behind it, trimmed.
    static void SplitPair(const std::string& strText, std::string& strLeft, std::string& strRight,
                          const std::string& strDelimiter, INT32 iMode = 0);
    // What stands before or behind the delimiter, trimmed; the whole text, trimmed, when it doesn't occur.
    static std::string LeftOf(const std::string& strText, const std::string& strDelimiter, INT32 iMode = 0);
    static std::string RightOf(const std::string& strText, const std::string& strDelimiter, INT32 iMode = 0);
    // The trimmed text without the delimiters at its start and end.
    static std::string TrimDelimiter(const std::string& strText, const std::string& strDelimiter);
    // The value of the entry strKey in a text of "key:value" entries; empty when the first place of strKey is no such
    // entry.
    static std::string GetKeyValue(const std::string& strText, const std::string& strKey,
                                   const std::string& strDelimiter);
    // The greater of two versions, compared number by number; the second when they are equal.
    static std::string GetMaxVersion(const std::string& strA, const std::string& strB, const std::string& strSeparator);
    static std::string ReplaceFirst(const std::string& strText, const std::string& strNew, const std::string& strOld);

    // Letters of every alphabet in the wide form, whatever the program's locale; of ASCII alone in the narrow one.
    static std::string ToUpper(const std::string& strText);
    static std::wstring ToUpper(const std::wstring& strText);
    static std::string ToLower(const std::string& strText);
    static std::wstring ToLower(const std::wstring& strText);

    // As a stream reads a number: leading white space, sign, digits; the rest is ignored. 0 when there is none, the
    // nearest limit when it is beyond the type.
    static INT32 ToInt(const std::string& strText);
    static INT32 ToInt(const std::wstring& strText);
    static float ToFloat(const std::string& strText);
    // As C reads one, hexadecimal too, whatever the program's locale. Infinity, or 0, when it is beyond the type.
    static double ToDouble(const std::string& strText);

    static std::string ToString(INT64 iValue);
    // Empty, and logged, when the code page can't take the text.
    static std::string ToString(const std::wstring& strText, UINT iCodePage);
    static std::wstring ToWString(const std::string& strText, UINT iCodePage);
    // As a stream prints it: up to six significant digits.
    static std::string FloatToString(float fValue);
    // "[" + upper-case hexadecimal + "]"; empty for 0.
    static std::string ToHexTag(INT64 iValue);
    // Two upper-case digits a byte; empty for a null pointer. iLen in bytes.
    static std::string ToHexString(const BYTE* pData, size_t iLen);
    // The registry form, with braces; empty on failure.
    static std::string GuidToString(const GUID& stGuid);
    // The path without "." and ".." parts; the input itself when the platform refuses it.
    static std::string FormatPathString(const std::string& strPath);
};
