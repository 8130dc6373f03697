// The form of eventlog.txt: a record is one line, its fields parted by tabs: local time, source, type, number, texts.
#pragma once

#include <windows.h>

#include <string>

// The file behind the event log.
std::string EventLogFile();

// Null for a type that has no word.
const char* EventTypeWord(WORD wType);
// 0 for a word that stands for no type.
WORD EventTypeOf(const std::string& strWord);

// Tabs and line ends of a text, spelt so that it stays one field, and back.
std::string EscapeEventField(const char* pText);
std::string UnescapeEventField(const std::string& strField);
