// One element of machine.xml: attributes read with their ranges, errors told with file and line.
#pragma once

#include <tinyxml2.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

// Where errors go, in the form "file:line: reason".
struct CXmlErrors
{
    std::string strFile;
    std::vector<std::string> vecErrors;

    void Add(int iLine, const std::string& strReason);
};

class CElementReader
{
public:
    CElementReader(const tinyxml2::XMLElement& oElement, CXmlErrors& oErrors) : m_oElement(oElement), m_oErrors(oErrors)
    {
    }

    // Empty if the attribute is missing, or wrong and so told.
    std::optional<std::string> Text(const char* pName);
    std::optional<long long> Whole(const char* pName, long long iLowest, long long iHighest); // decimal or 0x...
    std::optional<double> Number(const char* pName, double f64Lowest, double f64Highest);
    // The choice's place in the list.
    std::optional<size_t> Choice(const char* pName, const std::vector<std::string>& vecChoices);

    bool Has(const char* pName) const { return m_oElement.Attribute(pName) != nullptr; }
    void Require(const char* pName);
    void Fail(const std::string& strReason);
    // Tells of attributes that nothing asked for. False if anything was wrong with the element.
    bool Finish();

private:
    void FailAttribute(const char* pName, const std::string& strWanted);

    const tinyxml2::XMLElement& m_oElement;
    CXmlErrors& m_oErrors;
    std::set<std::string> m_setAsked;
    bool m_bSound = true;
};
