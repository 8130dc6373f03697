// Questions to the system about files and this module's place in it.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Operations without state, from any thread. A folder is given with its closing backslash. A pattern's first "*" parts
// it into two texts that a file's name must contain, wherever, in their letter case.
class CAudioSYS
{
public:
    // The full path of the newest fitting file, by the later of creation and last write; empty if there is none.
    static std::string GetFuzzyMatchFile(const std::string& strDir, const std::string& strPattern);
    // Appends every fitting file to oFileList, in the folder's order.
    static void GetMatchFileList(const std::string& strDir, const std::string& strPattern,
                                 std::vector<WIN32_FIND_DATAA>& oFileList);

    // The module's file name without folder and without what follows its first dot; empty on failure.
    static std::string GetModuleBaseName(HMODULE hModule);
    // The folder of the module's logs and dumps, without a closing backslash.
    static std::string GetDiagnosticsPath(const std::string& strModuleName);
};
