// Text of this host, UTF-8, as the platform's wide text and back.
#pragma once

#include <windows.h>

#include <string>

std::wstring WideOf(const std::string& strText);
// To its zero; of null the empty text.
std::string NarrowOf(LPCWSTR pText);
// So many characters, zeros among them.
std::string NarrowOf(const WCHAR* pText, size_t iLength);

// Gives a text with its zero to a caller's buffer of *pRoom characters. True, and *pRoom the length; false, and *pRoom
// the room needed, when it is too small. Sets no error.
bool GiveText(const std::wstring& strText, LPWSTR pBuffer, DWORD* pRoom);
