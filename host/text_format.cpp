// Text by a printf format.
#include "host/text_format.h"

#include <cstdarg>
#include <cstdio>

std::string Print(const char* pFormat, ...)
{
    char strText[512];
    va_list pArguments;
    va_start(pArguments, pFormat);
    std::vsnprintf(strText, sizeof(strText), pFormat, pArguments);
    va_end(pArguments);
    return strText;
}

std::string Count(size_t iCount, const char* pOne, const char* pMany)
{
    return Print("%zu %s", iCount, iCount == 1 ? pOne : pMany);
}
