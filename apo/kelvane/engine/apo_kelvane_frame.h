// The frame record that crosses into the library: how an interleaved frame is taken apart into it and put together.
#pragma once

#include "apo/base/apo_base_engine.h"
#include "protection/kelvane_protection.h"

#include <windows.h>

// Owns the record and the samples behind it. Frames are of AUDIO_KELVANE_FRAME_LEN sample frames. One thread at a time:
// the one that runs the algorithm, or one that starts or ends the engine.
class CKelvaneFrame
{
public:
    CKelvaneFrame(const CBaseStream& oStream, const CBaseVariant& oVariant) : m_oStream(oStream), m_oVariant(oVariant)
    {
    }
    ~CKelvaneFrame() { ReleaseDataStruct(&m_pDataStruct); }
    CKelvaneFrame(const CKelvaneFrame&) = delete;
    CKelvaneFrame& operator=(const CKelvaneFrame&) = delete;

    // Makes the record, unless there is one. False, and a line, without it.
    bool Prepare(int iChannelCount);
    // As constructed.
    void Reset();
    KelvaneDataStruct* DataStruct() const { return m_pDataStruct; }

    // Takes an interleaved frame of the stream's input channels apart into psDataIn, and records it at dump level 3.
    void Split(const FLOAT32* pFrame);
    // Puts psDataOut together, interleaved, and records it at dump level 3. A frame that can't be played is silence.
    void Merge(int iChannelCount, FLOAT32* pOutBuf);

private:
    // A zeroed record with its arrays for the larger of the stream's and the given channel count, 8 at most; or null.
    KelvaneDataStruct* InitDataStruct(const int& iChannelCount);
    static void ReleaseDataStruct(KelvaneDataStruct** pDataStruct);
    void SplitChannel(const FLOAT32* pFrame, int n, int ch, int iTarget);
    void DumpInputDataItem(const KelvaneDataStruct* pDataStruct, int iDataLen);
    bool HasChannel(int iChannel);
    bool IsOutputFinite(int iChannelCount);
    void SwapOutputChannelData();
    void ExchangeChannels(int iFirst, int iSecond);

    const CBaseStream& m_oStream;
    const CBaseVariant& m_oVariant;
    KelvaneDataStruct* m_pDataStruct = nullptr;
    bool m_bChannelReported = false;   // the one WARN line about channels without an array
    bool m_bNotFiniteReported = false; // the one WARN line of an episode of unusable samples
};
