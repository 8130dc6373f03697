// Sample arrays and parameter files: channel arrays, block lengths, silence, the conversions between stream rates.
#pragma once

#include <windows.h>

#include <audioapotypes.h>

#include <memory>
#include <string>

inline constexpr INT32 AUDIO_MAX_RESAMPLE_CHANNEL = 8;        // entries of a conversion's channel tables
inline constexpr FLOAT32 AUDIO_NEAR_ZERO_ENERGY = 1.5259e-5F; // mean magnitude below which a frame counts as silent

// Operations without state, from any thread. Lengths named DataLen count floats, those named FrameLen or Framelen
// sample frames per channel.
class CAudioDATA
{
public:
    // Gives each of the iChannelCount slots a zeroed array of iFrameLen floats of its own, deleting what it held.
    // 0; AUDIO_NO_OBJECT for a null array, AUDIO_BAD_SIZE for a count below 1, AUDIO_NO_MEMORY without memory (earlier
    // slots stay filled).
    static INT32 AllocatePointerArray(FLOAT32** pInStruct, const INT32& iChannelCount, const INT32& iFrameLen);
    static INT32 AllocatePointerArrayConst(const FLOAT32** pInStruct, const INT32& iChannelCount,
                                           const INT32& iFrameLen);
    // Deletes the slots' arrays and nulls the slots.
    static void ReleasePointerArray(FLOAT32** pInStruct, const INT32& iChannelCount);
    static void ReleasePointerArray(const FLOAT32** pInStruct, const INT32& iChannelCount);

    // Whether the mean magnitude of iLen floats is below AUDIO_NEAR_ZERO_ENERGY; true for no data. Allocates nothing.
    static bool IsNearZeroEnergy(const FLOAT32* pData, INT32 iLen);
    // A length in floats rounded down to whole 10 ms blocks (20 ms at 22050 Hz). Allocates nothing.
    static INT32 AlignProcessDataLen(INT32 iDataLen, INT32 iChannel, INT32 iSampleRate);
    // The length that iFrames sample frames have at the other rate, rounded down; 0 when iFromRate is 0 or the length
    // is beyond 32 bits. Allocates nothing.
    static INT32 CalcReSampleLen(INT32 iFrames, INT32 iFromRate, INT32 iToRate);

    // A random value from 0 to 255; 0 when the platform has none.
    static UINT32 GenerateRandom();

    // Reads a file that must hold exactly iParaLength elements; null on any failure, which is logged. A length below 1
    // is logged and leaves the pointer as it was.
    // Elements are BYTE or FLOAT32.
    template <class T>
    static void ReadBinFileParam(const std::string& strPath, const INT32& iParaLength, std::unique_ptr<T[]>& pPara);

    // The conversions. Each turns one block of iFramelen sample frames, interleaved, of 1 to 8 channels into a new
    // interleaved buffer of iChannel * CalcReSampleLen(iFramelen, from, to) floats; null, and logged, for bad
    // arguments. Blocks are converted one by one: no history, no filter. Single precision.
    static std::unique_ptr<FLOAT32[]> ReSampleFrom16KTo48K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom22KTo44K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom32KTo48K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom44KTo48K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom96KTo48K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom48KTo16K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom44KTo22K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom48KTo32K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom48KTo44K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);
    static std::unique_ptr<FLOAT32[]> ReSampleFrom48KTo96K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                           const INT32& iFramelen);

    // Fill output channel iChannelIndex, iDstLen frames, from input channel iChannelIndex, iSrcLen frames.
    static void FillReSampleData44KTo48K(const INT32& iSrcLen, const INT32& iDstLen, const INT32& iChannelIndex,
                                         const FLOAT32* const* ppInputData, FLOAT32* const* ppOutputData);
    static void FillReSampleData48KTo44K(const INT32& iSrcLen, const INT32& iDstLen, const INT32& iChannelIndex,
                                         const FLOAT32* const* ppInputData, FLOAT32* const* ppOutputData);
};
