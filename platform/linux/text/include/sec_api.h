// The checked forms of the C library that the platform's headers offer under <stdio.h> and <string.h>.
#pragma once

#include <cstddef>
#include <cstdio>

typedef int errno_t;

extern "C"
{
    // 0; 22 for a null pointer with a count; 34 for a count over the destination's size.
    errno_t memmove_s(void* pDest, size_t sizeDest, const void* pSrc, size_t sizeCount);
    // As memmove_s; a failure with a valid destination zeroes it.
    errno_t memcpy_s(void* pDest, size_t sizeDest, const void* pSrc, size_t sizeCount);

    // Opens the mapped path; 't' in the mode has no meaning here. 0 or an errno value, and *ppFile null.
    errno_t fopen_s(FILE** ppFile, const char* pFileName, const char* pMode);

    // Numbers only. %I64 reads 64 bits.
    int sscanf_s(const char* pBuffer, const char* pFormat, ...);
}
