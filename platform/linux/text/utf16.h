// Bytes of UTF-8 as those of UTF-16, low byte first, and back.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Bytes that are no UTF-8 survive the way there and back.
std::vector<BYTE> Utf16FromUtf8(const std::vector<BYTE>& vecText);
std::string Utf8FromUtf16(const std::vector<BYTE>& vecText);
