// The checked forms of the C library that have no file in them.
#include <windows.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

namespace
{
errno_t FailCopy(errno_t iError)
{
    errno = iError;
    return iError;
}
} // namespace

errno_t memmove_s(void* pDest, size_t sizeDest, const void* pSrc, size_t sizeCount)
{
    if (sizeCount == 0)
        return 0;
    if (pDest == nullptr || pSrc == nullptr)
        return FailCopy(EINVAL);
    if (sizeDest < sizeCount)
        return FailCopy(ERANGE);
    std::memmove(pDest, pSrc, sizeCount);
    return 0;
}

errno_t memcpy_s(void* pDest, size_t sizeDest, const void* pSrc, size_t sizeCount)
{
    const errno_t iError = memmove_s(pDest, sizeDest, pSrc, sizeCount);
    if (iError != 0 && pDest != nullptr)
        std::memset(pDest, 0, sizeDest);
    return iError;
}

int sscanf_s(const char* pBuffer, const char* pFormat, ...)
{
    std::string strFormat = pFormat;
    for (size_t iPos = 0; (iPos = strFormat.find("%I64", iPos)) != std::string::npos;)
        strFormat.replace(iPos + 1, 3, "ll");
    va_list pArguments;
    va_start(pArguments, pFormat);
    const int iRead = std::vsscanf(pBuffer, strFormat.c_str(), pArguments);
    va_end(pArguments);
    return iRead;
}
