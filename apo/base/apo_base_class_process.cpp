// The periodic call of a processing object: bypass, silence or full processing, decided afresh on every period.
// Its operations sit together in a code section of their own.
#include "apo/base/apo_base_class.h"

#include "apo/base/apo_base_connections.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_dump.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_rates.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <iterator>

namespace
{
FLOAT32* Samples(const APO_CONNECTION_PROPERTY* pConnection)
{
    return reinterpret_cast<FLOAT32*>(pConnection->pBuffer);
}

void SetOutput(APO_CONNECTION_PROPERTY* pOutput, UINT32 u32ValidFrameCount, APO_BUFFER_FLAGS u32BufferFlags)
{
    pOutput->u32ValidFrameCount = u32ValidFrameCount;
    pOutput->u32BufferFlags = u32BufferFlags;
}

// Sets the output at the end of its scope, also when memory ran out on the way there.
class COutputAtEnd
{
public:
    COutputAtEnd(APO_CONNECTION_PROPERTY* pOutput, UINT32 u32ValidFrameCount, APO_BUFFER_FLAGS u32BufferFlags)
        : m_pOutput(pOutput), m_u32ValidFrameCount(u32ValidFrameCount), m_u32BufferFlags(u32BufferFlags)
    {
    }
    ~COutputAtEnd() { SetOutput(m_pOutput, m_u32ValidFrameCount, m_u32BufferFlags); }
    COutputAtEnd(const COutputAtEnd&) = delete;
    COutputAtEnd& operator=(const COutputAtEnd&) = delete;

private:
    APO_CONNECTION_PROPERTY* m_pOutput;
    UINT32 m_u32ValidFrameCount;
    APO_BUFFER_FLAGS m_u32BufferFlags;
};

// Records one side of a period, when samples are dumped.
void DumpFrames(const APO_CONNECTION_PROPERTY* pConnection, int iChannelCount, UINT32 u32FrameCount,
                const std::string& strName)
{
    if (CAudioDump::Instance()->IsOn())
        CAudioDump::Instance()->RecordItemByName(
            Samples(pConnection),
            static_cast<INT32>(static_cast<UINT32>(iChannelCount) * u32FrameCount * sizeof(FLOAT32)), strName);
}
} // namespace

// What one call may do on a running stream, log and dump off: at 48 kHz take heap blocks only for the frames that it
// pushes and give back those that it pops, at other rates a small constant number more per block; wait for the two
// queue locks only; build no text for a level that is off. It opens no file and reads no registry, but for the line
// and the signal of a worker that is a second late. The inline variant runs the periodic jobs too: each 5 s of audio it
// asks the controller, and waits for a silent one once, within its bound; in debug mode it writes the record files.
// Every frame count from 1 up is taken. A failure costs the period, never the stream.
RT_CODE STDMETHODIMP_(void) CBaseAPO::APOProcess(UINT32 u32NumInputConnections,
                                                 APO_CONNECTION_PROPERTY** ppInputConnections,
                                                 UINT32 u32NumOutputConnections,
                                                 APO_CONNECTION_PROPERTY** ppOutputConnections)
try
{
    if (CheckConnections(AUDIO_LOG_SITE, ppInputConnections, ppOutputConnections) != 0 ||
        AUDIO_MISSING(m_pEngine, AUDIO_NO_OBJECT))
        return;
    m_pEngine->BeginPeriod(static_cast<int>(ppInputConnections[0]->u32ValidFrameCount));
    const int iChannelCount = static_cast<int>(GetSamplesPerFrame());
    m_pEngine->SetInChannelCount(iChannelCount);
    m_pEngine->SetOutChannelCount(iChannelCount);
    m_bNeedUpdataPara = IsNeedUpdataPara();
    AUDIO_CHECK(
        ChooseAPOProcess(u32NumInputConnections, ppInputConnections, u32NumOutputConnections, ppOutputConnections));
    m_pEngine->EndPeriod();
}
catch (...)
{
    // Out of memory for a line or a frame: the period is lost, and the platform has no ear for it.
}

RT_CODE int CBaseAPO::ChooseAPOProcess(UINT32 u32NumInputConnections, APO_CONNECTION_PROPERTY** ppInputConnections,
                                       UINT32 u32NumOutputConnections, APO_CONNECTION_PROPERTY** ppOutputConnections)
{
    const APO_BUFFER_FLAGS u32BufferFlags = ppInputConnections[0]->u32BufferFlags;
    if (u32BufferFlags != BUFFER_VALID && u32BufferFlags != BUFFER_SILENT)
    {
        AUDIOLOG_WARN("Buffer Flags is invalid");
        return 0;
    }
    if (IsNeedByPass() == 1)
        return AUDIO_CHECK(ProcessByPassMode(u32NumInputConnections, ppInputConnections, u32NumOutputConnections,
                                             ppOutputConnections));
    if (u32BufferFlags == BUFFER_SILENT || IsNeedSilent() == 1)
        return AUDIO_CHECK(ProcessSilentMode(u32NumInputConnections, ppInputConnections, u32NumOutputConnections,
                                             ppOutputConnections));
    return AUDIO_CHECK(
        ProcessAudioBuffer(u32NumInputConnections, ppInputConnections, u32NumOutputConnections, ppOutputConnections));
}

RT_CODE int CBaseAPO::ProcessAudioBuffer(UINT32, APO_CONNECTION_PROPERTY** ppInputConnections, UINT32,
                                         APO_CONNECTION_PROPERTY** ppOutputConnections)
{
    if (CheckConnections(AUDIO_LOG_SITE, ppInputConnections, ppOutputConnections) != 0)
        return AUDIO_BAD_DATA;
    if (AUDIO_MISSING(m_pEngine, AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    const UINT32 u32FrameCount = ppInputConnections[0]->u32ValidFrameCount;
    const COutputAtEnd oOutput(ppOutputConnections[0], u32FrameCount, ppInputConnections[0]->u32BufferFlags);
    if (m_bNeedUpdataPara == 1)
    {
        const int iRefresh = AUDIO_CHECK(m_pEngine->RefreshAlgorithmParams());
        if (iRefresh != 0)
            return iRefresh;
    }
    DumpFrames(ppInputConnections[0], m_pEngine->GetInChannelCount(), u32FrameCount, m_strDumpInName);
    const int iResult = ExchangeFrames(ppInputConnections, ppOutputConnections);
    DumpFrames(ppOutputConnections[0], m_pEngine->GetOutChannelCount(), u32FrameCount, m_strDumpOutName);
    return iResult;
}

// One system frame into the engine and one out of it; a frame that doesn't go in doesn't keep the next from coming out.
RT_CODE int CBaseAPO::ExchangeFrames(APO_CONNECTION_PROPERTY** ppInputConnections,
                                     APO_CONNECTION_PROPERTY** ppOutputConnections)
{
    FLOAT32* const pf32InputFrames = Samples(ppInputConnections[0]);
    FLOAT32* const pf32OutputFrames = Samples(ppOutputConnections[0]);
    AUDIO_CHECK(m_pEngine->InputDataToQueue(pf32InputFrames, m_pEngine->GetInChannelCount(),
                                            ppInputConnections[0]->u32ValidFrameCount));
    return AUDIO_CHECK(m_pEngine->OutputDataFromQueue(pf32OutputFrames, m_pEngine->GetOutChannelCount(),
                                                      ppInputConnections[0]->u32ValidFrameCount));
}

// Hands the input through; the engine's queues stay as they are.
RT_CODE int CBaseAPO::ProcessByPassMode(UINT32, APO_CONNECTION_PROPERTY** ppInputConnections,
                                        UINT32 u32NumOutputConnections, APO_CONNECTION_PROPERTY** ppOutputConnections)
{
    if (CheckConnections(AUDIO_LOG_SITE, ppInputConnections, ppOutputConnections) != 0)
        return AUDIO_BAD_DATA;
    if (AUDIO_MISSING(m_pEngine, AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    if (m_pEngine->IsRareLineDue())
        AUDIOLOG_DEBUG(std::string(m_pEngine->GetAPOTypeTag()) + " Audio has been Bypass!");
    const FLOAT32* const pf32InputFrames = Samples(ppInputConnections[0]);
    FLOAT32* const pf32OutputFrames = Samples(ppOutputConnections[0]);
    if (u32NumOutputConnections != 0 && pf32OutputFrames != pf32InputFrames)
    {
        const int iError = AUDIO_CHECK(
            memmove_s(pf32OutputFrames,
                      sizeof(FLOAT32) * (ppInputConnections[0]->u32ValidFrameCount * m_pEngine->GetInChannelCount()),
                      pf32InputFrames,
                      sizeof(FLOAT32) * (ppInputConnections[0]->u32ValidFrameCount * m_pEngine->GetInChannelCount())));
        if (iError != 0)
            return iError;
    }
    SetOutput(ppOutputConnections[0], ppInputConnections[0]->u32ValidFrameCount, ppInputConnections[0]->u32BufferFlags);
    return 0;
}

// Silences the input, and keeps the engine's stream moving with it while a worker runs.
RT_CODE int CBaseAPO::ProcessSilentMode(UINT32, APO_CONNECTION_PROPERTY** ppInputConnections, UINT32,
                                        APO_CONNECTION_PROPERTY** ppOutputConnections)
{
    if (CheckConnections(AUDIO_LOG_SITE, ppInputConnections, ppOutputConnections) != 0)
        return AUDIO_BAD_DATA;
    if (AUDIO_MISSING(m_pEngine, AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    if (m_pEngine->IsRareLineDue())
        AUDIOLOG_DEBUG(std::string(m_pEngine->GetAPOTypeTag()) + " Audio has been Silent!");
    const UINT32 u32ValidFrameCount = ppInputConnections[0]->u32ValidFrameCount;
    if (FLOAT32* const pf32InputFrames = Samples(ppInputConnections[0]))
        std::fill_n(pf32InputFrames, static_cast<size_t>(m_pEngine->GetInChannelCount()) * u32ValidFrameCount, 0.0F);
    if (!m_pEngine->IsThreadRunning())
    {
        SetOutput(ppOutputConnections[0], u32ValidFrameCount, ppInputConnections[0]->u32BufferFlags);
        return 0;
    }
    const COutputAtEnd oOutput(ppOutputConnections[0], u32ValidFrameCount, BUFFER_VALID);
    return ExchangeFrames(ppInputConnections, ppOutputConnections);
}

RT_CODE bool CBaseAPO::IsSupportedRate() const
{
    const int iSampleRate = static_cast<int>(m_pInFormat.fFramesPerSecond);
    const int* const pEnd = std::end(AUDIO_SUPPORTED_RATES);
    return std::find(std::begin(AUDIO_SUPPORTED_RATES), pEnd, iSampleRate) != pEnd;
}

RT_CODE int CBaseAPO::IsNeedByPass()
{
    return m_oAudioModeGUID == AUDIO_SIGNALPROCESSINGMODE_RAW || !IsSupportedRate() ||
           (m_pEngine != nullptr && m_pEngine->GetBypassStatus() == 1);
}

RT_CODE int CBaseAPO::IsNeedSilent()
{
    return m_pEngine != nullptr ? m_pEngine->GetSilentStatus() : 0;
}

RT_CODE int CBaseAPO::IsNeedUpdataPara()
{
    if (m_pEngine == nullptr)
    {
        AUDIOLOG_ERROR(AUDIO_NO_OBJECT, "m_pEngine is nullptr!");
        return 0;
    }
    const int iRenderMode = GetRenderMode();
    const int iAudioMode = m_pEngine->GetAudioMode();
    if (iRenderMode == iAudioMode || iAudioMode != 0)
        return 0;
    m_pEngine->SetAudioMode(iRenderMode);
    AUDIOLOG_DEBUG("Need Updata Para Mode " + std::to_string(iAudioMode) + " change to " + std::to_string(iRenderMode));
    return 1;
}
