// The lengths of a stream.
#include "apo/base/apo_base_stream.h"

#include <cmath>

int PerSampleFrameLen(int iSampleRate)
{
    return static_cast<int>(std::lround(static_cast<double>(iSampleRate) / 100.0));
}

int SystemDataLen(int iChannel, UINT32 ulFrameCount)
{
    constexpr INT64 iMaxDataLen = 1 << 27;
    const INT64 iDataLen = static_cast<INT64>(iChannel) * ulFrameCount;
    return iDataLen > 0 && iDataLen <= iMaxDataLen ? static_cast<int>(iDataLen) : 0;
}
