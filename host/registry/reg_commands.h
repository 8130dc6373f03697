// The commands of `apohost reg`: read, write, list and watch the machine's registry.
#pragma once

#include <map>
#include <string>

// Each prints to stdout and throws CHostError for a key or value that isn't there.
void RegGet(const std::string& strPlace);
void RegSet(const std::string& strAssignment);
void RegList(const std::string& strKey);
// Until an interrupt comes.
void RegWatch(const std::string& strKey);

// Every key and value below a key, as they read: "Sub", "Sub\Value" -> text; a key's text is empty.
using RegistryTree = std::map<std::string, std::string>;

// One line per difference: "+ ", "- ", "~ ".
std::string FormatChanges(const RegistryTree& oBefore, const RegistryTree& oAfter);
