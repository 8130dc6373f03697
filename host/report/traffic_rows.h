// The report's rows on the devices and on what the protection library was given.
#pragma once

#include "host/report/play_result.h"

struct ReportRow
{
    std::string strLabel; // empty: goes on with the row before
    std::string strText;
};

// None for what there was nothing of.
std::vector<ReportRow> TrafficRows(const PlayResult& oResult);
