// Values of a tuning source, and their faults.
#include "host/tuning/source_table.h"

#include "host/tuning/parameter_names.h"

#include <algorithm>
#include <cmath>

void SourceFaults::Add(const toml::source_region& oWhere, const std::string& strText)
{
    const std::string strFault = strPath + ":" + std::to_string(oWhere.begin.line) + ": " + strText;
    if (std::find(vecTexts.begin(), vecTexts.end(), strFault) == vecTexts.end())
        vecTexts.push_back(strFault);
}

CSourceTable::CSourceTable(const toml::table* pTable, const std::string& strName, SourceFaults& oFaults)
    : m_pTable(pTable), m_strName(strName), m_oFaults(oFaults)
{
    if (m_pTable != nullptr)
        m_oWhere = m_pTable->source();
    else
        m_oFaults.vecTexts.push_back(m_oFaults.strPath + ": " + strName + " is missing");
}

bool CSourceTable::Has(const std::string& strKey) const
{
    return m_pTable != nullptr && m_pTable->contains(strKey);
}

const toml::node* CSourceTable::Find(const std::string& strKey, const std::string& strAllowed)
{
    m_setAsked.insert(strKey);
    const toml::node* pNode = m_pTable != nullptr ? m_pTable->get(strKey) : nullptr;
    if (pNode == nullptr && m_pTable != nullptr)
        Fail(strKey + ": missing in " + m_strName + "; " + strAllowed);
    return pNode;
}

bool CSourceTable::Check(const toml::node& oNode, const std::string& strKey, const SourceRange& oRange,
                         double& f64Value)
{
    const auto f64Found = oNode.is_number() ? oNode.value<double>() : std::nullopt;
    if (!f64Found)
        m_oFaults.Add(oNode.source(), strKey + ": no number; " + Allowed(oRange));
    else if (!(*f64Found >= oRange.f64Lowest && *f64Found <= oRange.f64Highest) ||
             (oRange.bWhole && *f64Found != std::floor(*f64Found)))
        m_oFaults.Add(oNode.source(), strKey + ": is " + FormatNumber(*f64Found) + "; " + Allowed(oRange));
    else
    {
        f64Value = *f64Found;
        return true;
    }
    return false;
}

double CSourceTable::Number(const std::string& strKey, const SourceRange& oRange)
{
    double f64Value = oRange.f64Lowest;
    if (const toml::node* pNode = Find(strKey, Allowed(oRange)))
        Check(*pNode, strKey, oRange, f64Value);
    return f64Value;
}

bool CSourceTable::CheckCount(const toml::node& oNode, const std::string& strKey, size_t uCount, size_t uLeast,
                              size_t uMost)
{
    if (uCount >= uLeast && uCount <= uMost)
        return true;
    m_oFaults.Add(oNode.source(), strKey + ": has " + std::to_string(uCount) + " values; allowed is " +
                                      std::to_string(uLeast) + (uMost != uLeast ? " to " + std::to_string(uMost) : "") +
                                      " of them");
    return false;
}

std::vector<double> CSourceTable::Numbers(const std::string& strKey, const SourceRange& oRange, size_t uLeast,
                                          size_t uMost)
{
    const toml::node* pNode = Find(strKey, Allowed(oRange));
    if (pNode == nullptr)
        return {};
    double f64Value = 0;
    const toml::array* pList = pNode->as_array();
    if (pList == nullptr)
        return Check(*pNode, strKey, oRange, f64Value) ? std::vector<double>{f64Value} : std::vector<double>{};
    if (!CheckCount(*pNode, strKey, pList->size(), uLeast, uMost))
        return {};
    std::vector<double> vecValues;
    for (const toml::node& oNode : *pList)
    {
        if (!Check(oNode, strKey, oRange, f64Value))
            return {};
        vecValues.push_back(f64Value);
    }
    return vecValues;
}

std::vector<int> CSourceTable::Integers(const std::string& strKey, const SourceRange& oRange, size_t uLeast,
                                        size_t uMost)
{
    std::vector<int> vecNumbers;
    for (const double f64Value : Numbers(strKey, oRange, uLeast, uMost))
        vecNumbers.push_back(static_cast<int>(f64Value));
    if (vecNumbers.size() == 1 && !CheckCount(*m_pTable->get(strKey), strKey, 1, uLeast, uMost))
        vecNumbers.clear();
    return vecNumbers;
}

// Goes into the file's attributes as it is.
std::string CSourceTable::Text(const std::string& strKey)
{
    const toml::node* pNode = Find(strKey, "a text is wanted");
    std::string strText = pNode != nullptr ? pNode->value_or(std::string()) : "";
    if (pNode != nullptr && (strText.empty() || strText.find_first_of("<>&\"',") != std::string::npos))
        m_oFaults.Add(pNode->source(), strKey + ": a text without < > & \" ' , is wanted");
    return strText;
}

const toml::table* CSourceTable::Table(const std::string& strKey)
{
    m_setAsked.insert(strKey);
    return m_pTable != nullptr ? (*m_pTable)[strKey].as_table() : nullptr;
}

const toml::array* CSourceTable::Tables(const std::string& strKey, size_t uCount)
{
    m_setAsked.insert(strKey);
    const toml::array* pTables = m_pTable != nullptr ? (*m_pTable)[strKey].as_array() : nullptr;
    if (pTables != nullptr && pTables->size() == uCount && pTables->is_array_of_tables())
        return pTables;
    Fail("[[" + strKey + "]]: " + std::to_string(uCount) + " of them are wanted");
    return nullptr;
}

void CSourceTable::Finish()
{
    if (m_pTable == nullptr)
        return;
    for (const auto& [oKey, oNode] : *m_pTable)
        if (m_setAsked.count(std::string(oKey.str())) == 0)
            m_oFaults.Add(oNode.source(), std::string(oKey.str()) + ": " + m_strName + " has nothing of that name" +
                                              NearestTo(std::string(oKey.str())));
}
