// The host's pieces: what a person types, audio files, and how a period is judged.
#include "host/audio/audio_file.h"
#include "host/host_error.h"
#include "host/registry/reg_commands.h"
#include "host/registry/registry_text.h"
#include "host/report/period_evidence.h"
#include "host/report/play_result.h"
#include "host/report/report.h"
#include "platform/control/machine_native.h"
#include "tests/support/machine_test.h"

#include <cmath>
#include <cstring>
#include <filesystem>

namespace
{

using HostPieces = MachineTest;

void ExpectFailure(const std::function<void()>& fCall, const std::string& strText)
{
    std::string strFailure;
    try
    {
        fCall();
    }
    catch (const CHostError& oError)
    {
        strFailure = oError.what();
    }
    EXPECT_TRUE(!strFailure.empty() && strFailure.find(strText) != std::string::npos) << strText << ": " << strFailure;
}

std::string File(const char* pName)
{
    return machine::Folder() + "/" + pName;
}

std::vector<float> Noise(size_t iDataLen)
{
    std::vector<float> vecNoise(iDataLen);
    uint32_t u32State = 12345;
    for (float& f32Value : vecNoise)
    {
        u32State = u32State * 1664525u + 1013904223u;
        f32Value = static_cast<float>(static_cast<int32_t>(u32State) / 2147483648.0);
    }
    return vecNoise;
}

} // namespace

TEST_F(HostPieces, KeysMayLeaveOutTheRootAndDataKeepsTheValuesType)
{
    const char* const aPlaces[][3] = {
        {"Bypass\\KelvaneStatus", "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Bypass", "KelvaneStatus"},
        {"hklm\\A\\B\\c", "HKEY_LOCAL_MACHINE\\A\\B", "c"},
        {"HKEY_CURRENT_USER\\A\\@", "HKEY_CURRENT_USER\\A", ""}};
    for (const auto& [pText, pKey, pValue] : aPlaces)
    {
        const RegistryPlace oPlace = ParseRegistryValue(pText);
        EXPECT_EQ(FormatRegistryKey(oPlace), pKey);
        EXPECT_EQ(oPlace.strValue, pValue);
    }

    const auto Set = [](const std::string& strData) -> std::string
    {
        SetRegistryValue("Test\\Value=" + strData);
        RegistryData oData;
        EXPECT_TRUE(ReadRegistryValue(ParseRegistryValue("Test\\Value"), oData));
        return FormatRegistryData(oData);
    };
    EXPECT_EQ(Set("4294967295"), "4294967295 (0xFFFFFFFF)");
    EXPECT_EQ(Set("0x1f"), "31 (0x0000001F)");
    ExpectFailure([&] { Set("left"); }, "holds a number");
    EXPECT_EQ(Set("text:a=b"), "\"a=b\"");
    EXPECT_EQ(Set("7"), "\"7\"") << "text stays text";
    EXPECT_EQ(Set(""), "\"\"");
    for (const char* pBad :
         {"Test\\New=4294967296", "Test\\New=99999999999999999999999", "Test\\New", "New=1", "\\New=1"})
        ExpectFailure([&] { SetRegistryValue(pBad); }, "");
    EXPECT_EQ(ReadRegistryNumber("Test\\New", 9), 9u) << "a refused value was written";
}

TEST_F(HostPieces, AudioFilesKeepTheirSamples)
{
    const std::vector<float> vecNoise = Noise(3 * 1001);
    for (const char* pName : {"a.wav", "a.F32", "a.flac"})
    {
        CAudioWriter oWriter(File(pName), {44100, 3}, 1001);
        oWriter.Write(vecNoise.data(), 1001);
        oWriter.Close();
        CAudioReader oReader(File(pName), {44100, 3});
        ASSERT_EQ(oReader.FrameCount(), 1001) << pName;
        std::vector<float> vecRead(3 * 2000);
        ASSERT_EQ(oReader.Read(vecRead.data(), 2000), 1001u);
        for (size_t i = 0; i < vecNoise.size(); ++i)
            ASSERT_NEAR(vecRead[i], vecNoise[i], strcmp(pName, "a.flac") == 0 ? 0x1p-22f : 0) << pName << " at " << i;
        EXPECT_EQ(oReader.Read(vecRead.data(), 1), 0u);
    }
    CAudioReader oRepeated(File("a.wav"), {44100, 3});
    oRepeated.Repeat(2500);
    std::vector<float> vecRead(3 * 2000);
    ASSERT_EQ(oRepeated.Read(vecRead.data(), 900), 900u);
    ASSERT_EQ(oRepeated.Read(vecRead.data(), 2000), 1600u);
    for (size_t i = 0; i < 3 * 1600; ++i)
        ASSERT_EQ(vecRead[i], vecNoise[(i + 3 * 900) % vecNoise.size()]) << i;
    EXPECT_EQ(oRepeated.Read(vecRead.data(), 1), 0u);
    ExpectFailure([] { const CAudioReader oReader(File("a.wav"), {48000, 0}); }, "44100 Hz, --rate asks for 48000");
    ExpectFailure([] { const CAudioReader oReader(File("a.F32"), {0, 8}); }, "no whole number of frames");
    ExpectFailure([] { const CAudioWriter oWriter(File("b.flac"), {44100, 9}, 1); }, "9 channel(s)");
    ExpectFailure([] { const CAudioWriter oWriter(File("b.mp3"), {44100, 2}, 1); }, "ending");
    const auto fFillDisk = [&]
    {
        std::filesystem::create_symlink("/dev/full", File("full.f32"));
        CAudioWriter oWriter(File("full.f32"), {44100, 3}, 1001);
        oWriter.Write(vecNoise.data(), 1001);
        oWriter.Close();
    };
    ExpectFailure(fFillDisk, "No space left");
}

TEST_F(HostPieces, ACallIsJudgedByTheBuffersItLeaves)
{
    const std::vector<float> vecSound = {0.5f, -0.25f, 0, 1};
    const std::vector<float> vecOther = {0.5f, -0.25f, 0, 0.9f};
    const std::vector<float> vecZero(4);
    std::vector<float> vecUntouched(4);
    FillSentinel(vecUntouched.data(), vecUntouched.size());
    struct Case
    {
        const char* pName;
        const std::vector<float>& vecSource;
        const std::vector<float>& vecInput;
        const std::vector<float>& vecOutput;
        bool bWritten;
        PeriodPath ePath;
    };
    const Case CASES[] = {
        {"another output", vecSound, vecSound, vecOther, true, PeriodPath::Processed},
        {"lead-in", vecSound, vecSound, vecZero, true, PeriodPath::Processed},
        {"a delayed stream's end", vecZero, vecZero, vecSound, true, PeriodPath::Processed},
        {"unchanged", vecSound, vecSound, vecSound, true, PeriodPath::Same},
        {"silent path without a worker", vecSound, vecZero, vecUntouched, true, PeriodPath::Silent},
        {"silent path with a worker", vecSound, vecZero, vecOther, true, PeriodPath::Silent},
        {"nothing ready", vecSound, vecSound, vecUntouched, true, PeriodPath::Underflow},
        {"nothing but zeros", vecZero, vecZero, vecZero, true, PeriodPath::Quiet},
        {"no answer", vecSound, vecSound, vecUntouched, false, PeriodPath::Refused},
    };
    for (const Case& oCase : CASES)
        EXPECT_EQ(
            JudgePeriod({oCase.vecSource.data(), oCase.vecInput.data(), oCase.vecOutput.data(), 4, oCase.bWritten}),
            oCase.ePath)
            << oCase.pName;
    EXPECT_EQ(JudgePeriod({vecSound.data(), vecOther.data(), vecOther.data(), 4, true}), PeriodPath::Processed)
        << "in place";
}

TEST_F(HostPieces, TheReportsNumbersAreRight)
{
    PlayResult oResult;
    oResult.oOptions.strInput = "a \"b\"\n.wav";
    oResult.oOptions.iRate = 48000;
    oResult.oOptions.iPeriodFrames = 480;
    for (int i = 0; i < 9; ++i)
        oResult.oLeadIn.Add(i >= 2, i >= 5);
    const float f32Level[] = {0.5f, -1.0f, NAN, 0.5f, 0};
    oResult.oInputLevel.Add(f32Level, 5);
    std::vector<uint32_t> vecTimes;
    for (uint32_t i = 1; i <= 101; ++i)
        vecTimes.push_back((102 - i) * 1000);
    oResult.oTimes = SummarizeTimes(vecTimes);
    EXPECT_EQ(oResult.oTimes.f64Median, 51);
    EXPECT_EQ(oResult.oTimes.f64Percentile99, 100);
    EXPECT_EQ(oResult.oTimes.f64Worst, 101);
    const std::string strJson = FormatJson(oResult);
    for (const char* pPart : {"\"a \\\"b\\\"\\n.wav\"", "\"lead_in_periods\": 3", "\"peak\": 1.0,",
                              "\"rms\": 0.612372435", "\"not_finite\": 1", "\"percentile_99\": 100"})
        EXPECT_NE(strJson.find(pPart), std::string::npos) << pPart << "\n" << strJson;
    const std::string strTable = FormatTable(oResult);
    for (const char* pPart : {"peak 0.00 dBFS, RMS -4.26 dBFS, 1 samples", "3 periods (30.00 ms)"})
        EXPECT_NE(strTable.find(pPart), std::string::npos) << pPart << "\n" << strTable;
}
