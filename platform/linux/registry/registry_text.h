// Text of registry values between UTF-8, in which the layer keeps it, and the two wide forms.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Whether the type holds text: REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ.
bool IsTextType(DWORD dwType);

// UTF-16, low byte first, as export files spell text in bytes. Bytes that are no UTF-8 survive the way there and back.
std::vector<BYTE> Utf16FromUtf8(const std::vector<BYTE>& vecText);
std::vector<BYTE> Utf8FromUtf16(const std::vector<BYTE>& vecText);

// The platform's wide characters. iLen counts characters; zeros among them are kept.
std::string Utf8FromWide(const WCHAR* pText, size_t iLen);
