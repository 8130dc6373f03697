// Text of registry values between UTF-8, in which the layer keeps it, and the two wide forms.
#include "registry/registry_text.h"

namespace
{
constexpr UINT32 c_u32Replacement = 0xFFFD;
// A byte b that is no UTF-8 travels as the lone surrogate 0xDC00 + b.
constexpr UINT32 c_u32StrayByte = 0xDC00;

bool IsContinuation(const std::vector<BYTE>& vecText, size_t i)
{
    return i < vecText.size() && (vecText[i] & 0xC0) == 0x80;
}

// Decodes the character at iPos and moves behind it.
UINT32 TakeUtf8(const std::vector<BYTE>& vecText, size_t& iPos)
{
    const BYTE cLead = vecText[iPos++];
    if (cLead < 0x80)
        return cLead;
    const size_t iMore = cLead >= 0xC2 && cLead < 0xE0   ? 1U
                         : cLead >= 0xE0 && cLead < 0xF0 ? 2U
                         : cLead >= 0xF0 && cLead < 0xF5 ? 3U
                                                         : 0U;
    UINT32 u32Char = cLead & (0x3FU >> iMore);
    bool bValid = iMore > 0;
    for (size_t i = 0; i < iMore && bValid; i++)
    {
        bValid = IsContinuation(vecText, iPos + i);
        if (bValid)
            u32Char = u32Char << 6 | (vecText[iPos + i] & 0x3FU);
    }
    const UINT32 u32Least[] = {0, 0x80, 0x800, 0x10000};
    bValid = bValid && u32Char >= u32Least[iMore] && u32Char <= 0x10FFFF && (u32Char < 0xD800 || u32Char > 0xDFFF);
    if (!bValid)
        return c_u32StrayByte + cLead;
    iPos += iMore;
    return u32Char;
}

template <typename Text> void AppendUtf8(Text& oText, UINT32 u32Char)
{
    const auto Put = [&oText](UINT32 u32Byte) { oText.push_back(static_cast<typename Text::value_type>(u32Byte)); };
    if (u32Char >= c_u32StrayByte + 0x80 && u32Char <= c_u32StrayByte + 0xFF)
        return Put(u32Char - c_u32StrayByte);
    if (u32Char > 0x10FFFF || (u32Char >= 0xD800 && u32Char <= 0xDFFF))
        u32Char = c_u32Replacement;
    if (u32Char < 0x80)
        return Put(u32Char);
    if (u32Char < 0x800)
        Put(0xC0 | u32Char >> 6);
    else
    {
        if (u32Char < 0x10000)
            Put(0xE0 | u32Char >> 12);
        else
        {
            Put(0xF0 | u32Char >> 18);
            Put(0x80 | (u32Char >> 12 & 0x3F));
        }
        Put(0x80 | (u32Char >> 6 & 0x3F));
    }
    Put(0x80 | (u32Char & 0x3F));
}
} // namespace

bool IsTextType(DWORD dwType)
{
    return dwType == REG_SZ || dwType == REG_EXPAND_SZ || dwType == REG_MULTI_SZ;
}

std::vector<BYTE> Utf16FromUtf8(const std::vector<BYTE>& vecText)
{
    std::vector<BYTE> vecResult;
    const auto Put = [&vecResult](UINT32 u32Unit)
    {
        vecResult.push_back(static_cast<BYTE>(u32Unit));
        vecResult.push_back(static_cast<BYTE>(u32Unit >> 8));
    };
    for (size_t iPos = 0; iPos < vecText.size();)
    {
        const UINT32 u32Char = TakeUtf8(vecText, iPos);
        if (u32Char < 0x10000)
            Put(u32Char);
        else
        {
            Put(0xD7C0 + (u32Char >> 10));
            Put(0xDC00 | (u32Char & 0x3FF));
        }
    }
    return vecResult;
}

std::vector<BYTE> Utf8FromUtf16(const std::vector<BYTE>& vecText)
{
    std::vector<BYTE> vecResult;
    const auto Unit = [&vecText](size_t i) { return vecText[i] | static_cast<UINT32>(vecText[i + 1]) << 8; };
    for (size_t i = 0; i + 1 < vecText.size(); i += 2)
    {
        UINT32 u32Char = Unit(i);
        const UINT32 u32Next = i + 3 < vecText.size() ? Unit(i + 2) : 0;
        if (u32Char >= 0xD800 && u32Char < 0xDC00 && u32Next >= 0xDC00 && u32Next < 0xE000)
        {
            u32Char = ((u32Char - 0xD7C0) << 10) + (u32Next - 0xDC00);
            i += 2;
        }
        AppendUtf8(vecResult, u32Char);
    }
    return vecResult;
}

std::string Utf8FromWide(const WCHAR* pText, size_t iLen)
{
    std::string strResult;
    for (size_t i = 0; i < iLen; i++)
        AppendUtf8(strResult, static_cast<UINT32>(pText[i]));
    return strResult;
}
