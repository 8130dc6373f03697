// What the server module of the COM tests offers.
#pragma once

#include <objbase.h>

inline constexpr CLSID CLSID_TestServer = {
    0x8A0B6F32, 0x51D4, 0x4C0E, {0x9B, 0x1A, 0x2C, 0x3D, 0x4E, 0x5F, 0x60, 0x71}};
inline constexpr IID IID_ITestObject = {0x8A0B6F33, 0x51D4, 0x4C0E, {0x9B, 0x1A, 0x2C, 0x3D, 0x4E, 0x5F, 0x60, 0x71}};

struct ITestObject : public IUnknown
{
    // How many objects this load of the module has made, the called one included, when it was made.
    virtual ULONG STDMETHODCALLTYPE GetSerial() = 0;
};
