// The report of a run: a table for a person, the same as JSON for a program.
#pragma once

#include "host/report/play_result.h"

#include <string>

std::string FormatTable(const PlayResult& oResult);
std::string FormatJson(const PlayResult& oResult);

// Throws CHostError if the file can't be written whole.
void WriteReport(const std::string& strPath, const PlayResult& oResult);
