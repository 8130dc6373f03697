// Bytes of UTF-8 as those of UTF-16, low byte first, and back.
#include "text/utf16.h"

#include "text/utf8.h"

std::vector<BYTE> Utf16FromUtf8(const std::vector<BYTE>& vecText)
{
    std::vector<BYTE> vecResult;
    const auto Put = [&vecResult](char32_t iUnit)
    {
        vecResult.push_back(static_cast<BYTE>(iUnit));
        vecResult.push_back(static_cast<BYTE>(iUnit >> 8));
    };
    std::string_view strLeft(reinterpret_cast<const char*>(vecText.data()), vecText.size());
    while (!strLeft.empty())
    {
        char32_t iCode = 0;
        TakeUtf8(strLeft, iCode);
        if (iCode < 0x10000)
            Put(iCode);
        else
        {
            Put(0xD7C0 + (iCode >> 10));
            Put(0xDC00 | (iCode & 0x3FF));
        }
    }
    return vecResult;
}

std::string Utf8FromUtf16(const std::vector<BYTE>& vecText)
{
    std::string strResult;
    const auto Unit = [&vecText](size_t i) { return vecText[i] | static_cast<char32_t>(vecText[i + 1]) << 8; };
    for (size_t i = 0; i + 1 < vecText.size(); i += 2)
    {
        char32_t iCode = Unit(i);
        const char32_t iNext = i + 3 < vecText.size() ? Unit(i + 2) : 0;
        if (iCode >= 0xD800 && iCode < 0xDC00 && iNext >= 0xDC00 && iNext < 0xE000)
        {
            iCode = ((iCode - 0xD7C0) << 10) + (iNext - 0xDC00);
            i += 2;
        }
        AppendUtf8(strResult, iCode);
    }
    return strResult;
}
