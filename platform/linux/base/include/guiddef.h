// The GUID record and what is declared with it, under the platform's names.
#pragma once

#include <cstring>

typedef struct _GUID
{
    unsigned int Data1;
    unsigned short Data2;
    unsigned short Data3;
    unsigned char Data4[8];
} GUID;

typedef GUID IID;
typedef GUID CLSID;
typedef GUID* LPGUID;

#define REFGUID const GUID&
#define REFIID const IID&
#define REFCLSID const IID&

inline int IsEqualGUID(REFGUID rguid1, REFGUID rguid2)
{
    return std::memcmp(&rguid1, &rguid2, sizeof(GUID)) == 0;
}
#define IsEqualIID(riid1, riid2) IsEqualGUID(riid1, riid2)

inline bool operator==(REFGUID guidOne, REFGUID guidOther)
{
    return IsEqualGUID(guidOne, guidOther) != 0;
}
inline bool operator!=(REFGUID guidOne, REFGUID guidOther)
{
    return IsEqualGUID(guidOne, guidOther) == 0;
}
