// Names and numbers of tuning sources.
#include "host/tuning/parameter_names.h"

#include <cctype>
#include <charconv>

namespace
{

std::string Small(char cLetter)
{
    return std::string(1, static_cast<char>(std::tolower(static_cast<unsigned char>(cLetter))));
}

// "1/K" is "per_k", "mm/V" is "mm_per_v".
std::string UnitName(const std::string& strUnit)
{
    std::string strName;
    for (size_t i = strUnit.rfind("1/", 0) == 0 ? 1 : 0; i < strUnit.size(); ++i)
    {
        if (strUnit[i] == '/')
            strName += strName.empty() ? "per_" : "_per_";
        else
            strName += strUnit[i] == '%' ? "percent" : Small(strUnit[i]);
    }
    return strName;
}

} // namespace

std::string SourceName(const KelvaneParameterInfo& oInfo)
{
    std::string strName;
    for (const char* pLetter = oInfo.pName; *pLetter != 0; ++pLetter)
        strName +=
            (std::isupper(static_cast<unsigned char>(*pLetter)) && !strName.empty() ? "_" : "") + Small(*pLetter);
    return strName + (*oInfo.pUnit != 0 ? "_" : "") + UnitName(oInfo.pUnit);
}

const KelvaneParameterInfo* FindParameter(const std::string& strSourceName)
{
    for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
        if (SourceName(oInfo) == strSourceName)
            return &oInfo;
    return nullptr;
}

std::string FormatNumber(double f64Value)
{
    char strNumber[32];
    const auto oEnd = std::to_chars(strNumber, strNumber + sizeof(strNumber), f64Value);
    return std::string(strNumber, oEnd.ptr);
}
