// Security ids as text.
#pragma once

#include <windows.h>

#define ConvertSidToStringSid ConvertSidToStringSidW

extern "C"
{
    // The caller frees the text with LocalFree.
    BOOL ConvertSidToStringSidW(PSID Sid, LPWSTR* StringSid);
}
