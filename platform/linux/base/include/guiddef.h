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
typedef GUID FMTID;
typedef GUID* LPGUID;
typedef const GUID* LPCGUID;
typedef IID* LPIID;
typedef CLSID* LPCLSID;

#define REFGUID const GUID&
#define REFIID const IID&
#define REFCLSID const IID&
#define REFFMTID const IID&

inline int IsEqualGUID(REFGUID rguid1, REFGUID rguid2)
{
    return std::memcmp(&rguid1, &rguid2, sizeof(GUID)) == 0;
}
#define IsEqualIID(riid1, riid2) IsEqualGUID(riid1, riid2)
#define IsEqualCLSID(rclsid1, rclsid2) IsEqualGUID(rclsid1, rclsid2)

inline bool operator==(REFGUID guidOne, REFGUID guidOther)
{
    return IsEqualGUID(guidOne, guidOther) != 0;
}
inline bool operator!=(REFGUID guidOne, REFGUID guidOther)
{
    return IsEqualGUID(guidOne, guidOther) == 0;
}

// A source that includes <initguid.h> first holds the constants itself; every other one refers to them.
#ifdef INITGUID
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)                                                   \
    extern "C" const GUID name;                                                                                        \
    extern "C" const GUID __attribute__((weak)) name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}
#else
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) extern "C" const GUID name
#endif

extern "C" const GUID GUID_NULL;
#define IID_NULL GUID_NULL
#define CLSID_NULL GUID_NULL
