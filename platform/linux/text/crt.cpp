// The checked forms of the C library that have no file in them.
#include <windows.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string>

namespace
{
errno_t FailCopy(errno_t iError)
{
    errno = iError;
    return iError;
}

// The format with this library's length letters for I64 and I32. Empty if it asks for text, whose size can't be known.
std::string HostFormat(const char* pFormat)
{
    std::string strFormat;
    while (*pFormat != 0)
    {
        const char cLetter = *pFormat++;
        strFormat += cLetter;
        if (cLetter != '%')
            continue;
        while (std::strchr("*0123456789", *pFormat) != nullptr && *pFormat != 0)
            strFormat += *pFormat++;
        if (std::strncmp(pFormat, "I64", 3) == 0)
        {
            strFormat += "ll";
            pFormat += 3;
        }
        else if (std::strncmp(pFormat, "I32", 3) == 0)
        {
            pFormat += 3;
        }
        while (std::strchr("hlLw", *pFormat) != nullptr && *pFormat != 0)
            strFormat += *pFormat++;
        if (std::strchr("sScC[", *pFormat) != nullptr)
            return "";
        strFormat += *pFormat++;
    }
    return strFormat;
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
    const std::string strFormat = pBuffer == nullptr || pFormat == nullptr ? "" : HostFormat(pFormat);
    if (strFormat.empty())
    {
        errno = EINVAL;
        return -1;
    }
    va_list pArguments;
    va_start(pArguments, pFormat);
    const int iRead = std::vsscanf(pBuffer, strFormat.c_str(), pArguments);
    va_end(pArguments);
    return iRead;
}
