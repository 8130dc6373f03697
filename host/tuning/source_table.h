// One table of a tuning source: asks for what has to be in it, and tells what is wrong, with file and line.
#pragma once

#include "host/tuning/source_names.h"

#include <toml++/toml.h>

#include <set>
#include <string>
#include <vector>

// What was found wrong, in order: "FILE:LINE: NAME: REASON".
struct SourceFaults
{
    std::string strPath;
    std::vector<std::string> vecTexts;

    // Nothing, if that was told already.
    void Add(const toml::source_region& oWhere, const std::string& strText);
};

class CSourceTable
{
public:
    // strName is how the source writes it: "[speaker]". Without a table, that is a fault, and everything counts as
    // missing without being told again.
    CSourceTable(const toml::table* pTable, const std::string& strName, SourceFaults& oFaults);

    bool Has(const std::string& strKey) const;
    // The first of the range's numbers after a fault.
    double Number(const std::string& strKey, const SourceRange& oRange);
    // A list, or one number whatever the count, as a list of one. Empty after a fault.
    std::vector<double> Numbers(const std::string& strKey, const SourceRange& oRange, size_t uLeast, size_t uMost);
    // One number is a list of one here too.
    std::vector<int> Integers(const std::string& strKey, const SourceRange& oRange, size_t uLeast, size_t uMost);
    std::string Text(const std::string& strKey);
    const toml::table* Table(const std::string& strKey);
    // Null if there isn't one for each of uCount.
    const toml::array* Tables(const std::string& strKey, size_t uCount);

    void Fail(const std::string& strText) { m_oFaults.Add(m_oWhere, strText); }
    // Names that nobody asked for are faults.
    void Finish();

private:
    const toml::node* Find(const std::string& strKey, const std::string& strAllowed);
    bool CheckCount(const toml::node& oNode, const std::string& strKey, size_t uCount, size_t uLeast, size_t uMost);
    bool Check(const toml::node& oNode, const std::string& strKey, const SourceRange& oRange, double& f64Value);

    const toml::table* m_pTable;
    std::string m_strName;
    toml::source_region m_oWhere;
    SourceFaults& m_oFaults;
    std::set<std::string> m_setAsked;
};
