// Text of registry values: UTF-8, in which the layer keeps it, and UTF-16, as export files spell it in bytes.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Whether the type holds text: REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ.
bool IsTextType(DWORD dwType);

// Low byte first. Bytes that are no UTF-8 survive the way there and back.
std::vector<BYTE> Utf16FromUtf8(const std::vector<BYTE>& vecText);
std::string Utf8FromUtf16(const std::vector<BYTE>& vecText);
