// Where a path of the machine lies for a library that opens files itself.
#pragma once

#include <string>

// Natively the file's place on this host; on Windows the argument. Any thread.
std::string HostPath(const std::string& strPath);
