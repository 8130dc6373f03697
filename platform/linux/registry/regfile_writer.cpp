// Writes the registry's text form.
#include "registry/regfile.h"

#include "text/utf16.h"

#include <algorithm>
#include <cstdio>

namespace
{
constexpr size_t c_iMaxLineLen = 78;

std::string Quoted(const std::string& strText)
{
    std::string strResult = "\"";
    for (const char c : strText)
    {
        if (c == '"' || c == '\\')
            strResult += '\\';
        strResult += c;
    }
    return strResult + '"';
}

// Text that one line can hold: closed by its only zero, no control characters.
bool IsPlainText(const RegistryValue& oValue)
{
    const auto bControl = [](BYTE c) { return c < 0x20 || c == 0x7F; };
    return oValue.dwType == REG_SZ && !oValue.vecData.empty() && oValue.vecData.back() == 0 &&
           std::none_of(oValue.vecData.begin(), oValue.vecData.end() - 1, bControl);
}

std::string HexList(std::string strLine, const std::vector<BYTE>& vecData)
{
    std::string strResult;
    for (size_t i = 0; i < vecData.size(); i++)
    {
        char cByte[4];
        snprintf(cByte, sizeof(cByte), i + 1 < vecData.size() ? "%02x," : "%02x", vecData[i]);
        strLine += cByte;
        if (strLine.size() < c_iMaxLineLen - 3 || i + 1 == vecData.size())
            continue;
        strResult += strLine + "\\\n";
        strLine = "  ";
    }
    return strResult + strLine;
}

std::string ValueLine(const RegistryValue& oValue)
{
    const std::string strName = (oValue.strName.empty() ? "@" : Quoted(oValue.strName)) + "=";
    const std::vector<BYTE>& vecData = oValue.vecData;
    char cText[24];
    if (IsPlainText(oValue))
        return strName + Quoted({vecData.begin(), vecData.end() - 1});
    if (oValue.dwType == REG_DWORD && vecData.size() == 4)
    {
        const DWORD dwValue = static_cast<DWORD>(vecData[0]) | static_cast<DWORD>(vecData[1]) << 8 |
                              static_cast<DWORD>(vecData[2]) << 16 | static_cast<DWORD>(vecData[3]) << 24;
        snprintf(cText, sizeof(cText), "dword:%08x", dwValue);
        return strName + cText;
    }
    snprintf(cText, sizeof(cText), oValue.dwType == REG_BINARY ? "hex:" : "hex(%x):", oValue.dwType);
    return HexList(strName + cText, IsTextType(oValue.dwType) ? Utf16FromUtf8(vecData) : vecData);
}
} // namespace

std::string FormatRegistryFile(const CRegistryTree& oTree)
{
    std::string strText = "Windows Registry Editor Version 5.00\n";
    if (!oTree.m_strHeadComment.empty())
        strText += "\n" + oTree.m_strHeadComment;
    for (const auto& [strPath, oKey] : oTree.Keys())
    {
        // A key above another one, or one that always exists, is implied.
        const bool bImplied = oTree.IsBuiltIn(strPath) || oTree.HasSubkeys(strPath);
        if (bImplied && oKey.mapValues.empty() && oKey.strComment.empty())
            continue;
        strText += "\n" + oKey.strComment + "[" + oKey.strPath + "]\n";
        for (const auto& oNamed : oKey.mapValues)
            strText += oNamed.second.strComment + ValueLine(oNamed.second) + "\n";
    }
    if (!oTree.m_strTailComment.empty())
        strText += "\n" + oTree.m_strTailComment;
    return strText;
}
