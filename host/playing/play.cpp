// Plays a file through the module: files, registry values and machine around the periodic loop.
#include "host/playing/play.h"

#include "host/audio/audio_file.h"
#include "host/host_error.h"
#include "host/machine/host_machine.h"
#include "host/machine/interrupt.h"
#include "host/machine/rest.h"
#include "host/playing/period_loop.h"
#include "host/playing/progress.h"
#include "host/registry/registry_text.h"
#include "host/report/diagnosis.h"
#include "host/speaker/speaker_run.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>

namespace
{

constexpr int64_t BLOCK_FLOATS = 1 << 20; // offline, at most

void CompleteOptions(PlayResult& oResult, CAudioReader& oReader)
{
    PlayOptions& oOptions = oResult.oOptions;
    oOptions.iRate = oReader.Format().iRate;
    oOptions.iChannels = oReader.Format().iChannels;
    if (oOptions.iPeriodFrames == 0)
        oOptions.iPeriodFrames = std::max(1, oOptions.iRate / 100);
    if (oOptions.f64RepeatSeconds > 0)
        oReader.Repeat(std::max<int64_t>(1, std::llround(oOptions.f64RepeatSeconds * oOptions.iRate)));
    if (!oOptions.bInlineVariant && !host::CanSettle())
        oOptions.bRealtime = true; // its workers need the time
    oResult.i64InputFrames = oReader.FrameCount();
}

int64_t CountPeriods(const PlayResult& oResult)
{
    return (oResult.i64InputFrames + oResult.oOptions.iPeriodFrames - 1) / oResult.oOptions.iPeriodFrames;
}

// In real time all periods are one block, so that no file is touched while it plays; else about a second.
size_t BlockPeriods(const PlayResult& oResult)
{
    const PlayOptions& oOptions = oResult.oOptions;
    if (oOptions.bRealtime)
        return static_cast<size_t>(CountPeriods(oResult));
    const int64_t i64PeriodLen = static_cast<int64_t>(oOptions.iPeriodFrames) * oOptions.iChannels;
    const int64_t i64Second = std::max(1, oOptions.iRate / oOptions.iPeriodFrames);
    return static_cast<size_t>(std::clamp<int64_t>(BLOCK_FLOATS / i64PeriodLen, 1, i64Second));
}

// Offline nothing takes time but the audio: every run finds the devices in the same state.
class COfflineClock
{
public:
    explicit COfflineClock(bool bRealtime) : m_bFrozen(!bRealtime)
    {
        if (m_bFrozen)
            host::FreezeClock();
    }
    COfflineClock(const COfflineClock&) = delete;
    COfflineClock& operator=(const COfflineClock&) = delete;
    ~COfflineClock()
    {
        if (m_bFrozen)
            host::RunClock();
    }

private:
    const bool m_bFrozen;
};

void PrintMachineErrors()
{
    for (const std::string& strError : host::MachineErrors())
        std::fprintf(stderr, "apohost: warning: %s\n", strError.c_str());
}

// Blocks from file to file; the last period is padded with zeros, and as many frames are written as were read.
void RunBlocks(PlayResult& oResult, CApoStream& oStream, CAudioReader& oReader, std::optional<CAudioWriter>& oWriter,
               std::optional<CSpeakerRun>& oSpeakers)
{
    const size_t iPeriodFrames = static_cast<size_t>(oResult.oOptions.iPeriodFrames);
    const size_t iBlockPeriods = BlockPeriods(oResult);
    std::vector<float> vecBlock(iBlockPeriods * oStream.DataLen());
    CProgress oProgress(CountPeriods(oResult), static_cast<double>(iPeriodFrames) / oResult.oOptions.iRate);
    CPeriodLoop oLoop(oResult, oStream, oProgress, CountPeriods(oResult), oSpeakers ? &oSpeakers->Watch() : nullptr);
    while (!oResult.bStopped)
    {
        const size_t iFrames = oReader.Read(vecBlock.data(), iBlockPeriods * iPeriodFrames);
        if (iFrames == 0)
            break;
        const size_t iLen = iFrames * static_cast<size_t>(oResult.oOptions.iChannels);
        std::fill(vecBlock.begin() + static_cast<std::ptrdiff_t>(iLen), vecBlock.end(), 0.0f);
        const size_t iDone = oLoop.Run(vecBlock.data(), (iFrames + iPeriodFrames - 1) / iPeriodFrames);
        if (oWriter)
            oWriter->Write(vecBlock.data(), std::min(iFrames, iDone * iPeriodFrames));
        if (oSpeakers)
            oSpeakers->EndBlock();
    }
    oLoop.Finish();
}

void CheckNotInput(const PlayOptions& oOptions)
{
    std::error_code oError;
    if (std::filesystem::equivalent(oOptions.strInput, oOptions.strOutput, oError))
        throw CHostError(oOptions.strOutput + ": is the input too; it would be lost");
}

void TellUnsettled(const PlayResult& oResult)
{
    std::fprintf(
        stderr, "apohost: the module's threads did not come to rest within %d s, %.2f s into the audio; the run ends\n",
        REST_LIMIT_S,
        static_cast<double>(oResult.i64Periods) * oResult.oOptions.iPeriodFrames / oResult.oOptions.iRate);
}

// Whether the stream was over before it began; it leaves the output file as it was.
bool IsOverBefore(PlayResult& oResult, const CApoStream& oStream)
{
    oResult.bSettled = oResult.oOptions.bRealtime || oStream.HasRested();
    oResult.bStopped = IsInterrupted() || !oResult.bSettled;
    if (!oResult.bStopped)
        return false;
    if (!oResult.bSettled)
        TellUnsettled(oResult);
    oResult.oOptions.strOutput.clear();
    oResult.oStreamTime.Start();
    oResult.oStreamTime.End();
    return true;
}

// The stream's whole life. What was played is in the file before the module goes down, for that may take its time.
// oSpeakers: the simulated ones beside it, if they are asked for.
void PlayStream(PlayResult& oResult, CAudioReader& oReader, std::filesystem::file_time_type tBegin,
                std::optional<CSpeakerRun>& oSpeakers)
{
    const PlayOptions& oOptions = oResult.oOptions;
    const CComApartment oApartment;
    StreamSetup oSetup{oOptions.bInlineVariant, oOptions.iRate, oOptions.iChannels, oOptions.iPeriodFrames,
                       oOptions.bInPlace};
    if (!oOptions.bRealtime)
        oSetup.iRestLimitS = REST_LIMIT_S;
    CApoStream oStream(oSetup);
    if (IsOverBefore(oResult, oStream))
        return;
    if (oOptions.bSpeaker || !oOptions.strTrace.empty())
        oSpeakers.emplace(oResult, static_cast<int64_t>(BlockPeriods(oResult)) * oOptions.iPeriodFrames, tBegin);
    std::optional<CAudioWriter> oWriter;
    if (!oOptions.strOutput.empty())
    {
        CheckNotInput(oOptions);
        oWriter.emplace(oOptions.strOutput, oReader.Format(), oReader.FrameCount());
    }
    RunBlocks(oResult, oStream, oReader, oWriter, oSpeakers);
    if (!oResult.bSettled)
        TellUnsettled(oResult);
    if (oWriter)
        oWriter->Close();
    if (oResult.bBypassAtEnd)
        oResult.vecReasons = FindBypassReasons(oOptions.iRate);
    oResult.oStreamTime.End();
    if (oSpeakers)
        oSpeakers->Finish();
}

} // namespace

PlayResult Play(const PlayOptions& oOptions)
{
    PlayResult oResult;
    oResult.oOptions = oOptions;
    CAudioReader oReader(oOptions.strInput, {oOptions.iRate, oOptions.iChannels});
    CompleteOptions(oResult, oReader);
    for (const std::string& strSet : oOptions.vecSets)
        SetRegistryValue(strSet);
    const COfflineClock oClock(oResult.oOptions.bRealtime);
    PrintMachineErrors();
    CatchInterrupts(true);
    const auto tBegin = std::filesystem::file_time_type::clock::now() - std::chrono::seconds(1);
    std::optional<CSpeakerRun> oSpeakers;
    PlayStream(oResult, oReader, tBegin, oSpeakers);
    oResult.oTraffic = ReadTraffic(oResult.oStreamTime);
    oResult.oLog = ReadModuleLog(tBegin, oResult.oStreamTime);
    if (oSpeakers)
        oSpeakers->WriteTrace();
    return oResult;
}
