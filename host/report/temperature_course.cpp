// Folding a series of temperatures.
#include "host/report/temperature_course.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace
{

constexpr size_t SHORT_LEVEL = 3; // values; a longer level is a part of its own

// Neighbours that differ by a tenth at most are one level.
std::vector<CoursePart> FindLevels(const std::vector<TimedNumber>& vecValues)
{
    std::vector<CoursePart> vecLevels;
    for (const TimedNumber& oValue : vecValues)
    {
        const int iLow = vecLevels.empty() ? 0 : std::min(vecLevels.back().iFirst, oValue.iValue);
        const int iHigh = vecLevels.empty() ? 0 : std::max(vecLevels.back().iLast, oValue.iValue);
        if (vecLevels.empty() || iHigh - iLow > 1)
        {
            vecLevels.push_back(
                {CourseKind::Steady, oValue.f64Seconds, oValue.f64Seconds, oValue.iValue, oValue.iValue, 1});
            continue;
        }
        CoursePart& oLevel = vecLevels.back();
        oLevel.eKind = iLow == iHigh ? CourseKind::Steady : CourseKind::Alternating;
        oLevel.f64To = oValue.f64Seconds;
        oLevel.iFirst = iLow;
        oLevel.iLast = iHigh;
        ++oLevel.iCount;
    }
    return vecLevels;
}

CourseKind DirectionOf(const CoursePart& oFrom, const CoursePart& oTo)
{
    return oTo.iFirst > oFrom.iFirst ? CourseKind::Rising : CourseKind::Falling;
}

} // namespace

// Short levels that follow each other in one direction become one part.
std::vector<CoursePart> FoldCourse(const std::vector<TimedNumber>& vecValues)
{
    const std::vector<CoursePart> vecLevels = FindLevels(vecValues);
    std::vector<CoursePart> vecParts;
    for (size_t i = 0; i < vecLevels.size();)
    {
        CoursePart oPart = vecLevels[i];
        size_t iNext = i + 1;
        const auto Joins = [&]
        {
            return iNext < vecLevels.size() && vecLevels[i].iCount <= SHORT_LEVEL &&
                   vecLevels[iNext].iCount <= SHORT_LEVEL &&
                   DirectionOf(vecLevels[iNext - 1], vecLevels[iNext]) == DirectionOf(vecLevels[i], vecLevels[i + 1]);
        };
        for (; Joins(); ++iNext)
        {
            oPart.eKind = DirectionOf(vecLevels[i], vecLevels[iNext]);
            oPart.f64To = vecLevels[iNext].f64To;
            oPart.iCount += vecLevels[iNext].iCount;
            const bool bRising = oPart.eKind == CourseKind::Rising;
            oPart.iFirst = bRising ? vecLevels[i].iFirst : vecLevels[i].iLast;
            oPart.iLast = bRising ? vecLevels[iNext].iLast : vecLevels[iNext].iFirst;
        }
        vecParts.push_back(oPart);
        i = iNext;
    }
    return vecParts;
}

std::string FormatCoursePart(const CoursePart& oPart)
{
    char strText[80];
    const double f64First = oPart.iFirst / 10.0;
    const double f64Last = oPart.iLast / 10.0;
    if (oPart.eKind == CourseKind::Steady)
        std::snprintf(strText, sizeof(strText), "%.1f", f64First);
    else if (oPart.eKind == CourseKind::Alternating)
        std::snprintf(strText, sizeof(strText), "%.1f/%.1f alternating", f64First, f64Last);
    else
        std::snprintf(strText, sizeof(strText), "%s %.1f to %.1f", COURSE_KIND_NAMES[static_cast<size_t>(oPart.eKind)],
                      f64First, f64Last);
    return strText;
}
