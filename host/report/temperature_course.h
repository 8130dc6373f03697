// A series of temperatures in a few words: where it stood still, alternated between two neighbours, rose and fell.
#pragma once

#include "host/machine/stream_time.h"

// Values in tenths of a degree.
enum class CourseKind
{
    Steady,
    Alternating, // between iFirst and iLast, a tenth apart
    Rising,
    Falling,
};
constexpr const char* COURSE_KIND_NAMES[] = {"steady", "alternating", "rising", "falling"};

struct CoursePart
{
    CourseKind eKind = CourseKind::Steady;
    double f64From = 0; // seconds
    double f64To = 0;
    int iFirst = 0;
    int iLast = 0;
    size_t iCount = 0; // values
};

// In order of time; every value is in one part.
std::vector<CoursePart> FoldCourse(const std::vector<TimedNumber>& vecValues);

// "66.0/66.1 alternating", "rising 25.0 to 58.6", "34.0".
std::string FormatCoursePart(const CoursePart& oPart);
