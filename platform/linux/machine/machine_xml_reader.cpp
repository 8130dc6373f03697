// Reading of one element's attributes.
#include "machine/machine_xml_reader.h"

#include <cmath>
#include <cstdlib>

namespace
{
std::string Shown(double f64Number)
{
    std::string strText = std::to_string(f64Number);
    strText.erase(strText.find_last_not_of('0') + 1);
    if (strText.back() == '.')
        strText.pop_back();
    return strText;
}
} // namespace

void CXmlErrors::Add(int iLine, const std::string& strReason)
{
    vecErrors.push_back(strFile + (iLine > 0 ? ":" + std::to_string(iLine) : "") + ": " + strReason);
}

void CElementReader::Fail(const std::string& strReason)
{
    m_bSound = false;
    m_oErrors.Add(m_oElement.GetLineNum(), "<" + std::string(m_oElement.Name()) + "> " + strReason);
}

void CElementReader::FailAttribute(const char* pName, const std::string& strWanted)
{
    Fail(std::string(pName) + "=\"" + m_oElement.Attribute(pName) + "\" is not " + strWanted);
}

std::optional<std::string> CElementReader::Text(const char* pName)
{
    m_setAsked.insert(pName);
    const char* const pText = m_oElement.Attribute(pName);
    if (pText == nullptr)
        return std::nullopt;
    if (pText[0] != 0)
        return pText;
    FailAttribute(pName, "a name");
    return std::nullopt;
}

std::optional<long long> CElementReader::Whole(const char* pName, long long iLowest, long long iHighest)
{
    m_setAsked.insert(pName);
    const char* const pText = m_oElement.Attribute(pName);
    if (pText == nullptr)
        return std::nullopt;
    char* pEnd = nullptr;
    const bool bHexadecimal = pText[0] == '0' && (pText[1] == 'x' || pText[1] == 'X');
    const long long iValue = std::strtoll(pText, &pEnd, bHexadecimal ? 16 : 10);
    if (pEnd != pText && *pEnd == 0 && iValue >= iLowest && iValue <= iHighest)
        return iValue;
    FailAttribute(pName, "a whole number from " + std::to_string(iLowest) + " to " + std::to_string(iHighest));
    return std::nullopt;
}

std::optional<double> CElementReader::Number(const char* pName, double f64Lowest, double f64Highest)
{
    m_setAsked.insert(pName);
    const char* const pText = m_oElement.Attribute(pName);
    if (pText == nullptr)
        return std::nullopt;
    double f64Value = 0;
    char cRest = 0;
    if (std::sscanf(pText, "%lf%c", &f64Value, &cRest) == 1 && f64Value >= f64Lowest && f64Value <= f64Highest)
        return f64Value;
    FailAttribute(pName, "a number from " + Shown(f64Lowest) + " to " + Shown(f64Highest));
    return std::nullopt;
}

std::optional<size_t> CElementReader::Choice(const char* pName, const std::vector<std::string>& vecChoices)
{
    m_setAsked.insert(pName);
    const char* const pText = m_oElement.Attribute(pName);
    if (pText == nullptr)
        return std::nullopt;
    std::string strChoices;
    for (size_t i = 0; i < vecChoices.size(); i++)
    {
        if (vecChoices[i] == pText)
            return i;
        strChoices += (i > 0 ? ", " : "") + vecChoices[i];
    }
    FailAttribute(pName, "one of: " + strChoices);
    return std::nullopt;
}

void CElementReader::Require(const char* pName)
{
    if (!Has(pName))
        Fail("lacks " + std::string(pName));
}

bool CElementReader::Finish()
{
    for (const tinyxml2::XMLAttribute* p = m_oElement.FirstAttribute(); p != nullptr; p = p->Next())
        if (m_setAsked.count(p->Name()) == 0)
            Fail("has an unknown attribute: " + std::string(p->Name()));
    return m_bSound;
}
