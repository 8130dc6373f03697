// The calling thread's user in the forms of the security service.
#pragma once

#include <windows.h>

typedef enum
{
    NameUnknown = 0,
    NameSamCompatible = 2,
} EXTENDED_NAME_FORMAT;

#define GetUserNameEx GetUserNameExW

extern "C"
{
    // NameSamCompatible, host\user, only; others fail with ERROR_NONE_MAPPED. *nSize counts characters: on the way in
    // the room, on the way out the name without its zero, or with it for ERROR_MORE_DATA.
    BOOLEAN GetUserNameExW(EXTENDED_NAME_FORMAT NameFormat, LPWSTR lpNameBuffer, PULONG nSize);
}
