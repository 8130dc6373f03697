// Attributes, brace lists, versions.
#include "apo/kelvane/tuning/apo_kelvane_tuning_text.h"

#include "audioapi/audio_api_string.h"

#include <tinyxml2.h>

#include <algorithm>

std::string AttributeText(const tinyxml2::XMLElement* pXmlElement, const char* pName)
{
    const char* pText = pXmlElement->Attribute(pName);
    return pText != nullptr ? pText : "";
}

std::vector<std::string> SplitBraceList(const std::string& strText)
{
    return CAudioSTR::Split(CAudioSTR::RightOf(CAudioSTR::LeftOf(strText, "}", 1), "{", 1), ",");
}

std::vector<INT32> BraceIntegers(const std::string& strText)
{
    std::vector<INT32> vecValues;
    for (const std::string& strToken : SplitBraceList(strText))
        vecValues.push_back(CAudioSTR::ToInt(strToken));
    return vecValues;
}

bool ListsVersion(const std::string& strVersions, const std::string& strVersion)
{
    const std::vector<std::string> vecVersions = CAudioSTR::Split(strVersions, ",");
    return std::find(vecVersions.begin(), vecVersions.end(), strVersion) != vecVersions.end();
}

std::string NewerVersion(const std::string& strA, const std::string& strB)
{
    return CAudioSTR::GetMaxVersion(strA, strB, ".");
}
