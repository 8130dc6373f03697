// The host's pieces: what a person types, audio files, and how a period is judged.
#include "host/audio_file.h"
#include "host/host_error.h"
#include "host/period_evidence.h"
#include "host/play_result.h"
#include "host/reg_commands.h"
#include "host/registry_text.h"
#include "host/report.h"
#include "platform/linux/machine.h"
#include "tests/support/machine_test.h"

#include <cmath>
#include <filesystem>
#include <fstream>

namespace
{

class HostPieces : public MachineTest
{
};

std::string FailureOf(const std::function<void()>& fCall)
{
    try
    {
        fCall();
    }
    catch (const CHostError& oError)
    {
        return oError.what();
    }
    return "";
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
    struct Case
    {
        const char* pText;
        const char* pKey;
        const char* pValue;
    };
    for (const Case& oCase :
         {Case{"Bypass\\KelvaneStatus", "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Bypass", "KelvaneStatus"},
          Case{"hklm\\A\\B\\c", "HKEY_LOCAL_MACHINE\\A\\B", "c"},
          Case{"HKEY_CURRENT_USER\\A\\@", "HKEY_CURRENT_USER\\A", ""}, Case{"HKCR\\A\\", "HKEY_CLASSES_ROOT\\A", ""}})
    {
        const RegistryPlace oPlace = ParseRegistryValue(oCase.pText);
        EXPECT_EQ(FormatRegistryKey(oPlace), oCase.pKey);
        EXPECT_EQ(oPlace.strValue, oCase.pValue);
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
    EXPECT_NE(FailureOf([&] { Set("left"); }).find("holds a number"), std::string::npos);
    EXPECT_EQ(Set("text:a=b"), "\"a=b\"");
    EXPECT_EQ(Set("7"), "\"7\"") << "text stays text";
    EXPECT_EQ(Set(""), "\"\"");
    for (const char* pBad :
         {"Test\\New=4294967296", "Test\\New=99999999999999999999999", "Test\\New", "New=1", "\\New=1"})
        EXPECT_NE(FailureOf([&] { SetRegistryValue(pBad); }), "") << pBad;
    EXPECT_EQ(ReadRegistryNumber("Test\\New", 9), 9u) << "a refused value was written";
}

TEST_F(HostPieces, ChangesOfAKeyAreTold)
{
    EXPECT_EQ(FormatChanges({{"A\\", ""}, {"A\\x", "1"}, {"A\\y", "2"}}, {{"A\\", ""}, {"A\\y", "3"}, {"A\\z", "4"}}),
              "- A\\x = 1\n~ A\\y = 3, was 2\n+ A\\z = 4\n");
}

TEST_F(HostPieces, AudioFilesKeepTheirSamples)
{
    const std::vector<float> vecNoise = Noise(3 * 1001);
    struct Case
    {
        const char* pName;
        float f32Tolerance;
    };
    for (const Case& oCase : {Case{"a.wav", 0}, Case{"a.F32", 0}, Case{"a.flac", 1.0f / (1 << 22)}})
    {
        CAudioWriter oWriter(File(oCase.pName), {44100, 3}, 1001);
        oWriter.Write(vecNoise.data(), 1001);
        oWriter.Close();
        CAudioReader oReader(File(oCase.pName), {44100, 3});
        ASSERT_EQ(oReader.FrameCount(), 1001) << oCase.pName;
        std::vector<float> vecRead(3 * 2000);
        ASSERT_EQ(oReader.Read(vecRead.data(), 2000), 1001u);
        for (size_t i = 0; i < vecNoise.size(); ++i)
            ASSERT_NEAR(vecRead[i], vecNoise[i], oCase.f32Tolerance) << oCase.pName << " at " << i;
        EXPECT_EQ(oReader.Read(vecRead.data(), 1), 0u);
    }
    EXPECT_NE(FailureOf(
                  [] {
                      CAudioReader(File("a.wav"), {48000, 0});
                  })
                  .find("44100 Hz, --rate asks for 48000"),
              std::string::npos);
    EXPECT_NE(FailureOf(
                  [] {
                      CAudioReader(File("a.F32"), {0, 8});
                  })
                  .find("no whole number of frames"),
              std::string::npos);
    EXPECT_NE(FailureOf([] { CAudioWriter(File("b.flac"), {44100, 9}, 1); }).find("9 channel(s)"), std::string::npos);
    EXPECT_NE(FailureOf([] { CAudioWriter(File("b.mp3"), {44100, 2}, 1); }).find("ending"), std::string::npos);
}

TEST_F(HostPieces, AFullDiskIsTold)
{
    std::filesystem::create_symlink("/dev/full", File("full.f32"));
    const std::vector<float> vecNoise = Noise(200000);
    EXPECT_NE(FailureOf(
                  [&]
                  {
                      CAudioWriter oWriter(File("full.f32"), {48000, 2}, 100000);
                      oWriter.Write(vecNoise.data(), 100000);
                      oWriter.Close();
                  })
                  .find("No space left"),
              std::string::npos);
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
    for (const char* pPart : {"\"a \\\"b\\\"\\u000a.wav\"", "\"lead_in_periods\": 3", "\"peak\": 1,",
                              "\"rms\": 0.612372436", "\"not_finite\": 1", "\"percentile_99\": 100"})
        EXPECT_NE(strJson.find(pPart), std::string::npos) << pPart << "\n" << strJson;
    const std::string strTable = FormatTable(oResult);
    for (const char* pPart : {"peak 0.00 dBFS, RMS -4.26 dBFS, 1 samples", "3 periods (30.00 ms)"})
        EXPECT_NE(strTable.find(pPart), std::string::npos) << pPart << "\n" << strTable;
}
