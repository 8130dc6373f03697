// Automation values: arrays that know their bounds, and variants.
#pragma once

#include <unknwn.h>
#include <wtypes.h>

typedef struct tagSAFEARRAYBOUND
{
    ULONG cElements;
    LONG lLbound;
} SAFEARRAYBOUND;

typedef struct tagSAFEARRAY
{
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];
} SAFEARRAY;

typedef struct tagVARIANT
{
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union
    {
        BSTR bstrVal;
        SAFEARRAY* parray;
        PVOID pvRecord[2]; // gives the record its published size
    };
} VARIANT, VARIANTARG;
