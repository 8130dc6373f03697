// Reads the registry's text form.
#include "registry/regfile.h"

#include "text/utf16.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace
{
// Marks a kept line, which must not take effect where a later writing puts it.
const char c_strNotRead[] = "; not read: ";
const char c_strHeader[] = "Windows Registry Editor Version 5.00";

// Why a line can't be taken.
struct LineError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

std::string Trim(const std::string& strText)
{
    const size_t iStart = strText.find_first_not_of(" \t\r");
    return iStart == std::string::npos ? "" : strText.substr(iStart, strText.find_last_not_of(" \t\r") - iStart + 1);
}

bool StartsWith(const std::string& strText, const char* pStart)
{
    return strText.rfind(pStart, 0) == 0;
}

// A hexadecimal number of 1 to iMaxLen digits.
DWORD HexNumber(const std::string& strText, size_t iMaxLen, const char* pWhat)
{
    if (strText.empty() || strText.size() > iMaxLen ||
        strText.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        throw LineError("\"" + strText + "\" is no " + pWhat);
    return static_cast<DWORD>(strtoul(strText.c_str(), nullptr, 16));
}

// Takes quoted text at iPos, which it moves behind the closing quote.
std::string TakeQuoted(const std::string& strLine, size_t& iPos)
{
    std::string strText;
    for (iPos++; iPos < strLine.size(); iPos++)
    {
        if (strLine[iPos] == '"')
        {
            iPos++;
            return strText;
        }
        if (strLine[iPos] == '\\' && iPos + 1 < strLine.size())
            iPos++;
        strText += strLine[iPos];
    }
    throw LineError("the closing quote is missing");
}

std::vector<BYTE> HexBytes(const std::string& strList)
{
    std::vector<BYTE> vecBytes;
    for (size_t iStart = 0; iStart < strList.size();)
    {
        const size_t iEnd = std::min(strList.find(',', iStart), strList.size());
        const std::string strByte = Trim(strList.substr(iStart, iEnd - iStart));
        if (!strByte.empty() || iEnd < strList.size())
            vecBytes.push_back(static_cast<BYTE>(HexNumber(strByte, 2, "byte in hexadecimal")));
        iStart = iEnd + 1;
    }
    return vecBytes;
}

// What stands behind the = sign, but for the deletion mark.
void ParseData(const std::string& strData, RegistryValue& oValue)
{
    if (StartsWith(strData, "\""))
    {
        size_t iPos = 0;
        const std::string strText = TakeQuoted(strData, iPos);
        if (iPos != strData.size())
            throw LineError("something stands behind the closing quote");
        oValue.dwType = REG_SZ;
        oValue.vecData.assign(strText.begin(), strText.end());
        oValue.vecData.push_back(0);
        return;
    }
    const size_t iColon = strData.find(':');
    const std::string strKind = FoldName(strData.substr(0, iColon));
    const std::string strRest = iColon == std::string::npos ? "" : Trim(strData.substr(iColon + 1));
    if (iColon != std::string::npos && strKind == "dword")
    {
        const DWORD dwValue = HexNumber(strRest, 8, "number of up to 8 hexadecimal digits");
        oValue.dwType = REG_DWORD;
        for (int iShift = 0; iShift < 32; iShift += 8)
            oValue.vecData.push_back(static_cast<BYTE>(dwValue >> iShift));
        return;
    }
    if (iColon != std::string::npos && strKind == "hex")
        oValue.dwType = REG_BINARY;
    else if (iColon != std::string::npos && StartsWith(strKind, "hex(") && strKind.back() == ')')
        oValue.dwType = HexNumber(strKind.substr(4, strKind.size() - 5), 8, "type in hexadecimal");
    else
        throw LineError("the data is neither quoted text nor dword: nor hex:");
    oValue.vecData = HexBytes(strRest);
    if (!IsTextType(oValue.dwType))
        return;
    if (oValue.vecData.size() % 2 != 0)
        throw LineError("text in UTF-16 has an odd number of bytes");
    const std::string strText = Utf8FromUtf16(oValue.vecData);
    oValue.vecData.assign(strText.begin(), strText.end());
}

class CRegFileReader
{
public:
    explicit CRegFileReader(std::vector<RegistryFileError>& vecErrors) : m_vecErrors(vecErrors) {}

    CRegistryTree Read(const std::string& strText)
    {
        SplitLines(strText);
        if (m_vecLines.empty())
            return std::move(m_oTree);
        if (Trim(m_vecLines[0]) == c_strHeader)
            m_iLine = 1;
        else
            m_vecErrors.push_back({1, std::string("the first line is not \"") + c_strHeader + "\""});
        while (m_iLine < m_vecLines.size())
            TakeLine();
        m_oTree.m_strTailComment = m_strComment;
        return std::move(m_oTree);
    }

private:
    void SplitLines(const std::string& strText)
    {
        for (size_t iStart = 0; iStart < strText.size();)
        {
            const size_t iEnd = std::min(strText.find('\n', iStart), strText.size());
            m_vecLines.push_back(strText.substr(iStart, iEnd - iStart));
            iStart = iEnd + 1;
        }
    }

    // The next line, with those that continue it.
    void TakeLine()
    {
        const size_t iFirst = m_iLine;
        std::string strLine = Trim(m_vecLines[m_iLine++]);
        if (strLine.empty() && !m_bKeySeen && !m_strComment.empty())
            m_oTree.m_strHeadComment += std::exchange(m_strComment, "");
        if (strLine.empty())
            return;
        const bool bBytes = strLine[0] != ';' && strLine.find("=hex") != std::string::npos;
        while (bBytes && strLine.back() == '\\' && m_iLine < m_vecLines.size())
        {
            strLine.pop_back();
            strLine += Trim(m_vecLines[m_iLine++]);
        }
        bool bTaken = false;
        try
        {
            bTaken = strLine[0] != ';' && (strLine[0] == '[' ? TakeKey(strLine) : TakeValue(strLine));
        }
        catch (const LineError& oError)
        {
            m_vecErrors.push_back({static_cast<int>(iFirst) + 1, oError.what()});
        }
        for (size_t i = iFirst; i < m_iLine && !bTaken; i++)
            m_strComment += (strLine[0] == ';' ? "" : c_strNotRead) + Trim(m_vecLines[i]) + '\n';
    }

    bool TakeKey(const std::string& strLine)
    {
        m_bKeySeen = true;
        m_strKey.clear();
        m_bBadKey = true;
        if (strLine.back() != ']')
            throw LineError("the key's closing ] is missing");
        const bool bDelete = strLine[1] == '-';
        const size_t iStart = bDelete ? 2 : 1;
        const std::string strPath = CanonicalPath(strLine.substr(iStart, strLine.size() - iStart - 1));
        if (strPath.empty())
            throw LineError("the key's root is unknown");
        if (const char* const pFault = PathFault(strPath))
            throw LineError(pFault);
        m_bBadKey = false;
        if (bDelete)
        {
            m_strComment += m_oTree.Remove(strPath);
            return true;
        }
        m_strKey = strPath;
        m_oTree.Create(strPath).strComment += std::exchange(m_strComment, "");
        return true;
    }

    bool TakeValue(const std::string& strLine)
    {
        if (strLine[0] != '"' && strLine[0] != '@')
            throw LineError("this is no key, no value and no comment");
        if (m_bBadKey)
            return false; // the key's line has been reported
        if (m_strKey.empty())
            throw LineError("a value stands under no key");
        size_t iPos = 1;
        RegistryValue oValue;
        if (strLine[0] == '"')
        {
            iPos = 0;
            oValue.strName = TakeQuoted(strLine, iPos);
        }
        iPos = std::min(strLine.find_first_not_of(" \t", iPos), strLine.size());
        if (iPos == strLine.size() || strLine[iPos] != '=')
            throw LineError("a = is missing behind the value's name");
        const std::string strData = Trim(strLine.substr(iPos + 1));
        auto& mapValues = m_oTree.Create(m_strKey).mapValues;
        if (strData == "-")
        {
            const auto it = mapValues.find(FoldName(oValue.strName));
            if (it != mapValues.end())
            {
                m_strComment += it->second.strComment;
                mapValues.erase(it);
            }
            return true;
        }
        ParseData(strData, oValue);
        RegistryValue& oKept = mapValues[FoldName(oValue.strName)];
        oValue.strComment = oKept.strComment + std::exchange(m_strComment, "");
        oKept = std::move(oValue);
        return true;
    }

    std::vector<RegistryFileError>& m_vecErrors;
    CRegistryTree m_oTree;
    std::vector<std::string> m_vecLines;
    size_t m_iLine = 0;       // index of the next line
    std::string m_strKey;     // key of the values that follow, or empty
    bool m_bBadKey = false;   // the values that follow belong to a key that couldn't be read
    bool m_bKeySeen = false;  // any key's line came yet
    std::string m_strComment; // lines kept for the next key or value
};
} // namespace

CRegistryTree ParseRegistryFile(const std::string& strText, std::vector<RegistryFileError>& vecErrors)
{
    CRegFileReader oReader(vecErrors);
    if (StartsWith(strText, "\xEF\xBB\xBF"))
        return oReader.Read(strText.substr(3));
    if (!StartsWith(strText, "\xFF\xFE"))
        return oReader.Read(strText);
    return oReader.Read(Utf8FromUtf16({strText.begin() + 2, strText.end()}));
}
