// Sample arrays and parameter files: channel arrays, block lengths, silence, random bytes.
#include "audioapi/audio_api_data.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <wincrypt.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <new>

namespace
{
struct ParamEvent
{
    const char* pNumber;
    const char* pText;
};

// What differs between the two forms of ReadBinFileParam.
template <class T> struct ParamFile;
template <> struct ParamFile<FLOAT32>
{
    static constexpr char SIZE_TEXT[] =
        "bfFileSize / static_cast<long>(sizeof(float)) != static_cast<long>(bfParamSize)";
    static constexpr ParamEvent EVENTS[] = {{AUDIO_EVENT_READ_VQE_PARAM, "ReadVQEBinFileParam Fail!"},
                                            {AUDIO_EVENT_READ_ZVVA_PARAM, "ReadZvVABinFileParam Fail!"}};
};
template <> struct ParamFile<BYTE>
{
    static constexpr char SIZE_TEXT[] =
        "bfFileSize / static_cast<long>(sizeof(unsigned char)) != static_cast<long>(bfParamSize)";
    static constexpr ParamEvent EVENTS[] = {{AUDIO_EVENT_READ_REC_PARAM, "ReadRECBinFileParam Fail!"}};
};

struct FileCloser
{
    void operator()(FILE* pFile) const { std::fclose(pFile); }
};

// Whether the file holds iParaLength elements, no more and no fewer; they are read into pPara.
template <class T> bool ReadWholeFile(const std::string& strPath, INT32 iParaLength, T* pPara)
{
    FILE* pFileHandle = nullptr;
    if (AUDIO_CHECK(fopen_s(&pFileHandle, strPath.c_str(), "rb")) != 0 || AUDIO_MISSING(pFileHandle, AUDIO_NO_HANDLE))
        return false;
    const std::unique_ptr<FILE, FileCloser> pCloser(pFileHandle);
    std::fseek(pFileHandle, 0, SEEK_END);
    const long bfFileSize = std::ftell(pFileHandle);
    std::fseek(pFileHandle, 0, SEEK_SET);
    const size_t bfParamSize = std::fread(pPara, sizeof(T), static_cast<size_t>(iParaLength), pFileHandle);
    const bool bWrongSize =
        bfFileSize / static_cast<long>(sizeof(T)) != iParaLength || bfParamSize != static_cast<size_t>(iParaLength);
    if (bWrongSize)
        AudioLogFailure(AUDIO_LOG_SITE, AUDIO_BAD_DATA, ParamFile<T>::SIZE_TEXT);
    return !bWrongSize;
}

template <class T> INT32 AllocateArrays(T** pInStruct, INT32 iChannelCount, INT32 iFrameLen)
{
    if (AUDIO_MISSING(pInStruct, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    if (AUDIO_FAIL_IF((iChannelCount <= 0 || iFrameLen <= 0), AUDIO_BAD_SIZE))
        return AUDIO_BAD_SIZE;
    for (INT32 i = 0; i < iChannelCount; ++i)
    {
        delete[] pInStruct[i];
        pInStruct[i] = new (std::nothrow) FLOAT32[static_cast<size_t>(iFrameLen)]();
        if (AUDIO_MISSING(pInStruct[i], AUDIO_NO_MEMORY))
            return AUDIO_NO_MEMORY;
    }
    return 0;
}

template <class T> void ReleaseArrays(T** pInStruct, INT32 iChannelCount)
{
    if (pInStruct == nullptr)
        return;
    for (INT32 i = 0; i < iChannelCount; ++i)
    {
        delete[] pInStruct[i];
        pInStruct[i] = nullptr;
    }
}
} // namespace

INT32 CAudioDATA::AllocatePointerArray(FLOAT32** pInStruct, const INT32& iChannelCount, const INT32& iFrameLen)
{
    return AllocateArrays(pInStruct, iChannelCount, iFrameLen);
}

INT32 CAudioDATA::AllocatePointerArrayConst(const FLOAT32** pInStruct, const INT32& iChannelCount,
                                            const INT32& iFrameLen)
{
    return AllocateArrays(pInStruct, iChannelCount, iFrameLen);
}

void CAudioDATA::ReleasePointerArray(FLOAT32** pInStruct, const INT32& iChannelCount)
{
    ReleaseArrays(pInStruct, iChannelCount);
}

void CAudioDATA::ReleasePointerArray(const FLOAT32** pInStruct, const INT32& iChannelCount)
{
    ReleaseArrays(pInStruct, iChannelCount);
}

bool CAudioDATA::IsNearZeroEnergy(const FLOAT32* pData, INT32 iLen)
{
    if (pData == nullptr || iLen < 1)
        return true;
    double dSum = 0.0;
    for (INT32 i = 0; i < iLen; ++i)
        dSum += std::fabs(static_cast<double>(pData[i]));
    return static_cast<double>(AUDIO_NEAR_ZERO_ENERGY) > dSum / iLen;
}

INT32 CAudioDATA::AlignProcessDataLen(INT32 iDataLen, INT32 iChannel, INT32 iSampleRate)
{
    const INT64 iChannelCount = iChannel;
    const INT64 iBlockDataLen = iSampleRate == 22050 ? iChannelCount * 441 : iChannelCount * iSampleRate / 100;
    return iBlockDataLen > 0 ? iDataLen - static_cast<INT32>(iDataLen % iBlockDataLen) : 0;
}

INT32 CAudioDATA::CalcReSampleLen(INT32 iFrames, INT32 iFromRate, INT32 iToRate)
{
    if (iFromRate == 0)
        return 0;
    const INT64 iLen = static_cast<INT64>(iFrames) * iToRate / iFromRate;
    return iLen <= std::numeric_limits<INT32>::max() ? static_cast<INT32>(iLen) : 0;
}

UINT32 CAudioDATA::GenerateRandom()
{
    HCRYPTPROV hProvider = 0;
    if (!CryptAcquireContextW(&hProvider, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT | CRYPT_SILENT))
    {
        AUDIOLOG_ERROR(AudioLastError(), "CryptAcquireContext(&hProvider, nullptr, nullptr, PROV_RSA_FULL, "
                                         "CRYPT_VERIFYCONTEXT | CRYPT_SILENT)");
        return 0;
    }
    BYTE pbBuffer[1] = {};
    const DWORD dwResult = AUDIO_CHECK_WIN(CryptGenRandom(hProvider, static_cast<DWORD>(sizeof(UCHAR)), pbBuffer));
    CryptReleaseContext(hProvider, 0);
    return dwResult == 0 ? pbBuffer[0] : 0;
}

template <class T>
void CAudioDATA::ReadBinFileParam(const std::string& strPath, const INT32& iParaLength, std::unique_ptr<T[]>& pPara)
{
    if (AUDIO_FAIL_IF(iParaLength <= 0, AUDIO_BAD_DATA))
        return;
    pPara.reset(new (std::nothrow) T[static_cast<size_t>(iParaLength)]);
    if (pPara != nullptr && ReadWholeFile(CAudioSTR::FormatPathString(strPath), iParaLength, pPara.get()))
        return;
    pPara.reset();
    AUDIOLOG_ERROR(AUDIO_BAD_DATA, "Read file param failed! Path:" + strPath);
    for (const ParamEvent& oEvent : ParamFile<T>::EVENTS)
        AUDIOLOG_EVENT_INFO(std::string(oEvent.pNumber) + oEvent.pText);
}
template void CAudioDATA::ReadBinFileParam(const std::string&, const INT32&, std::unique_ptr<BYTE[]>&);
template void CAudioDATA::ReadBinFileParam(const std::string&, const INT32&, std::unique_ptr<FLOAT32[]>&);
