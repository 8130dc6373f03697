// Text helpers: numbers and bytes as text, and back.
#include "audioapi/audio_api_string.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <limits>
#include <locale>
#include <sstream>

namespace
{
INT32 ClampToInt(long long iValue)
{
    constexpr long long iLow = std::numeric_limits<INT32>::min();
    constexpr long long iHigh = std::numeric_limits<INT32>::max();
    return static_cast<INT32>(std::clamp(iValue, iLow, iHigh));
}
} // namespace

INT32 CAudioSTR::ToInt(const std::string& strText)
{
    return ClampToInt(std::strtoll(strText.c_str(), nullptr, 10));
}

INT32 CAudioSTR::ToInt(const std::wstring& strText)
{
    return ClampToInt(std::wcstoll(strText.c_str(), nullptr, 10));
}

float CAudioSTR::ToFloat(const std::string& strText)
{
    std::istringstream oStream(strText);
    oStream.imbue(std::locale::classic());
    float fValue = 0.0F;
    oStream >> fValue;
    return fValue;
}

double CAudioSTR::ToDouble(const std::string& strText)
{
    const std::string strNumber = Trim(strText);
    const char* const pEnd = strNumber.c_str() + strNumber.size();
    const char* pNumber = strNumber.c_str();
    const bool bNegative = *pNumber == '-';
    if (bNegative || *pNumber == '+')
        ++pNumber;
    const bool bHex = pNumber[0] == '0' && (pNumber[1] == 'x' || pNumber[1] == 'X');
    if (*pNumber == '-') // a second sign
        return 0;
    double f64Value = 0;
    const auto [pRest, eError] = std::from_chars(bHex ? pNumber + 2 : pNumber, pEnd, f64Value,
                                                 bHex ? std::chars_format::hex : std::chars_format::general);
    if (eError == std::errc::result_out_of_range)
        f64Value = std::find(pNumber, pRest, '-') == pRest ? std::numeric_limits<double>::infinity() : 0;
    return bNegative ? -f64Value : f64Value;
}

std::string CAudioSTR::ToString(INT64 iValue)
{
    return std::to_string(iValue);
}

std::string CAudioSTR::FloatToString(float fValue)
{
    std::ostringstream oStream;
    oStream.imbue(std::locale::classic());
    oStream << fValue;
    return oStream.str();
}

std::string CAudioSTR::ToHexTag(INT64 iValue)
{
    if (iValue == 0)
        return {};
    char strTag[32];
    std::snprintf(strTag, sizeof(strTag), "[%" PRIX64 "]", static_cast<uint64_t>(iValue));
    return strTag;
}

std::string CAudioSTR::ToHexString(const BYTE* pData, size_t iLen)
{
    static constexpr char HEX_DIGIT[] = "0123456789ABCDEF";
    std::string strResult;
    if (pData == nullptr)
        return strResult;
    strResult.reserve(iLen * 2);
    for (size_t i = 0; i < iLen; ++i)
    {
        strResult += HEX_DIGIT[pData[i] >> 4];
        strResult += HEX_DIGIT[pData[i] & 15];
    }
    return strResult;
}
