// The texts of a tuning file: attributes, brace lists, versions. Needs nothing of the module but its string helpers, so
// that tools read a file as the module does.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace tinyxml2
{
class XMLElement;
}

// Empty if there is none.
std::string AttributeText(const tinyxml2::XMLElement* pXmlElement, const char* pName);

// The tokens between the last "{" and the last "}", trimmed, empty ones dropped.
std::vector<std::string> SplitBraceList(const std::string& strText);
// Its tokens as integers; 0 for one without leading digits.
std::vector<INT32> BraceIntegers(const std::string& strText);

// Whether the version is one of a list's, separated by commas; letter case counts, an empty one is none.
bool ListsVersion(const std::string& strVersions, const std::string& strVersion);
// The later of two dotted versions, number by number; of equal ones the second.
std::string NewerVersion(const std::string& strA, const std::string& strB);
