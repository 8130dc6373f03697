// The texts of a tuning file: attributes and brace lists.
#pragma once

#include "audioapi/audio_api_string.h"

#include <tinyxml2.h>

#include <string>
#include <vector>

// Empty if there is none.
inline std::string AttributeText(const tinyxml2::XMLElement* pXmlElement, const char* pName)
{
    const char* pText = pXmlElement->Attribute(pName);
    return pText != nullptr ? pText : "";
}

// The tokens between the last "{" and the last "}", trimmed, empty ones dropped.
inline std::vector<std::string> SplitBraceList(const std::string& strText)
{
    return CAudioSTR::Split(CAudioSTR::RightOf(CAudioSTR::LeftOf(strText, "}", 1), "{", 1), ",");
}
