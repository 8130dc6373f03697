// Names of this host as the platform's wide text.
#pragma once

#include <windows.h>

#include <string>

std::wstring WideOf(const std::string& strText);
// Cut at its first zero.
std::string NarrowOf(LPCWSTR pText);

// Gives a text with its zero to a caller's buffer of *pRoom characters. True, and *pRoom the length; false, and *pRoom
// the room needed, when it is too small. Sets no error.
bool GiveText(const std::wstring& strText, LPWSTR pBuffer, DWORD* pRoom);
