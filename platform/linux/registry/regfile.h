// The registry's text form: that of the platform's export files.
#pragma once

#include "registry/registry_tree.h"

#include <string>
#include <vector>

struct RegistryFileError
{
    int iLine = 0; // from 1
    std::string strReason;
};

// Reads a whole file, in UTF-8 or with a mark in UTF-16. Lines with errors are reported, and kept as comments, so
// that writing the tree loses nothing.
CRegistryTree ParseRegistryFile(const std::string& strText, std::vector<RegistryFileError>& vecErrors);

// UTF-8, keys and values in order of their names.
std::string FormatRegistryFile(const CRegistryTree& oTree);
