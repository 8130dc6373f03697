// Names and ranges in one list.
#include "host/tuning/source_names.h"

#include "host/tuning/parameter_names.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace
{

constexpr size_t NEAR = 3; // letters that may be wrong, missing or too many

struct NamedRange
{
    std::string strName;
    SourceRange oRange;
};

const std::vector<NamedRange>& NamedRanges()
{
    static const std::vector<NamedRange> vecAll = []
    {
        std::vector<NamedRange> vecRanges = {{"ids", SENSOR_ID},
                                             {"hot_above_c", CELSIUS},
                                             {"cool_below_c", CELSIUS},
                                             {"div_mode", SWITCH},
                                             {"up_to_percent", PERCENT}};
        for (const ControlRow& oRow : CONTROL_ROWS)
            vecRanges.push_back({oRow.pName, oRow.oRange});
        for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
            vecRanges.push_back({SourceName(oInfo), RangeOf(oInfo)});
        return vecRanges;
    }();
    return vecAll;
}

// Letters to change, to leave out or to put in on the way from one to the other (Levenshtein's distance).
size_t Distance(const std::string& strFrom, const std::string& strTo)
{
    std::vector<size_t> vecRow(strTo.size() + 1);
    std::iota(vecRow.begin(), vecRow.end(), 0U);
    for (size_t i = 0; i < strFrom.size(); ++i)
    {
        size_t uDiagonal = vecRow[0]++;
        for (size_t j = 0; j < strTo.size(); ++j)
        {
            const size_t uChange = uDiagonal + (strFrom[i] != strTo[j] ? 1 : 0);
            uDiagonal = vecRow[j + 1];
            vecRow[j + 1] = std::min({uChange, vecRow[j] + 1, vecRow[j + 1] + 1});
        }
    }
    return vecRow.back();
}

} // namespace

SourceRange RangeOf(const KelvaneParameterInfo& oInfo)
{
    return {oInfo.f64Lowest, oInfo.f64Highest, !oInfo.bDouble};
}

std::string Allowed(const SourceRange& oRange)
{
    return "allowed is " + FormatNumber(oRange.f64Lowest) + " to " + FormatNumber(oRange.f64Highest) +
           (oRange.bWhole ? ", whole numbers" : "");
}

std::string AllowedFor(const std::string& strName)
{
    for (const NamedRange& oRange : NamedRanges())
        if (oRange.strName == strName)
            return "; " + Allowed(oRange.oRange);
    return "";
}

// A name that lacks its unit is near too.
std::string NearestTo(const std::string& strName)
{
    const NamedRange* pNearest = nullptr;
    size_t uLeast = NEAR + 1;
    for (const NamedRange& oRange : NamedRanges())
    {
        const bool bNoUnit = oRange.strName.rfind(strName + "_", 0) == 0;
        const size_t uDistance = bNoUnit ? 1 : Distance(strName, oRange.strName);
        if (uDistance < uLeast)
        {
            uLeast = uDistance;
            pNearest = &oRange;
        }
    }
    return pNearest != nullptr ? "; is " + pNearest->strName + " meant? There " + Allowed(pNearest->oRange) : "";
}
