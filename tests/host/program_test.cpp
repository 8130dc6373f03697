// The program as a person runs it, on a machine of its own, with the module and the default tuning file.
#include "host/audio_file.h"
#include "host/registry_text.h"
#include "platform/linux/machine.h"
#include "tests/support/machine_test.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

namespace fs = std::filesystem;

namespace
{

struct ProgramRun
{
    int iExit = -1;
    std::string strOut; // both outputs
};

class HostProgram : public MachineTest
{
protected:
    void SetUp() override
    {
        MachineTest::SetUp();
        const fs::path oBin = fs::read_symlink("/proc/self/exe").parent_path();
        const auto eOptions = fs::copy_options::recursive | fs::copy_options::overwrite_existing;
        fs::copy(KELVANE_MACHINE_SOURCE, machine::Folder(), eOptions);
        fs::copy_file(oBin / "Kelvane_x64.dll", Path("c/windows/system32/ZVAudioDriver/Kelvane_x64.dll"));
        m_strProgram = "KELVANE_MACHINE='" + machine::Folder() + "' '" + (oBin / "apohost").string() + "' ";
        ASSERT_EQ(Run("register").strOut, "");
    }

    static std::string Path(const std::string& strName) { return machine::Folder() + "/" + strName; }

    ProgramRun Run(const std::string& strArguments) const
    {
        ProgramRun oRun;
        FILE* pOut = popen((m_strProgram + strArguments + " 2>&1").c_str(), "r");
        for (int iChar = 0; (iChar = std::fgetc(pOut)) != EOF;)
            oRun.strOut += static_cast<char>(iChar);
        oRun.iExit = WEXITSTATUS(pclose(pOut));
        return oRun;
    }

    // Plays in.f32 to out.f32 and gives the JSON report; a failure when the program fails.
    std::string Play(const std::string& strOptions) const
    {
        const ProgramRun oRun = Run("play " + Path("in.f32") + " " + Path("out.f32") + " --report " +
                                    Path("report.json") + " " + strOptions);
        EXPECT_EQ(oRun.iExit, 0) << oRun.strOut;
        std::ostringstream oReport;
        oReport << std::ifstream(Path("report.json")).rdbuf();
        return oReport.str();
    }

    // Loud noise without a zero, which no period repeats.
    static std::vector<float> WriteInput(size_t iDataLen)
    {
        std::vector<float> vecData(iDataLen);
        uint32_t u32State = 7;
        for (float& f32Value : vecData)
        {
            u32State = u32State * 1664525u + 1013904223u;
            f32Value = 0.001f + static_cast<float>(u32State >> 8) / 33554432.0f;
        }
        std::ofstream(Path("in.f32"), std::ios::binary)
            .write(reinterpret_cast<const char*>(vecData.data()),
                   static_cast<std::streamsize>(iDataLen * sizeof(float)));
        return vecData;
    }

    static std::vector<float> ReadOutput()
    {
        std::vector<float> vecData(fs::file_size(Path("out.f32")) / sizeof(float));
        std::ifstream(Path("out.f32"), std::ios::binary)
            .read(reinterpret_cast<char*>(vecData.data()),
                  static_cast<std::streamsize>(vecData.size() * sizeof(float)));
        return vecData;
    }

    static void ExpectParts(const std::string& strText, std::initializer_list<const char*> vecParts)
    {
        for (const char* pPart : vecParts)
            EXPECT_NE(strText.find(pPart), std::string::npos) << pPart << " in\n" << strText;
    }

    std::string m_strProgram;
};

} // namespace

TEST_F(HostProgram, BothVariantsGiveTheirStreamAndTellTheirPath)
{
    // 20 periods of 480 frames and a part of one.
    const std::vector<float> vecIn = WriteInput(2 * (20 * 480 + 100));
    ExpectParts(Play("--variant omfx"), {"\"periods\": 21", "\"same_as_input\": 21", "\"bypassed_at_end\": false",
                                         "\"lead_in_periods\": 0", "\"errors\": 0"});
    EXPECT_EQ(ReadOutput(), vecIn);

    const size_t iLeadIn = 3 * 960;
    std::vector<float> vecDelayed(vecIn.size());
    std::copy(vecIn.begin(), vecIn.end() - static_cast<std::ptrdiff_t>(iLeadIn),
              vecDelayed.begin() + static_cast<std::ptrdiff_t>(iLeadIn));
    ExpectParts(Play("--variant efx"), {"\"processed\": 21", "\"underflow\": 0", "\"lead_in_periods\": 3"});
    EXPECT_EQ(ReadOutput(), vecDelayed);
    ExpectParts(Play("--variant efx --in-place"), {"\"processed\": 21", "\"silent\": 0", "\"lead_in_periods\": 3"});
    EXPECT_EQ(ReadOutput(), vecDelayed);
}

TEST_F(HostProgram, ABypassIsToldWithItsReason)
{
    const std::vector<float> vecIn = WriteInput(2 * 4800);
    ExpectParts(Play("--rate 11025"),
                {"\"bypassed_at_end\": true", "\"same_as_input\": 44", "doesn't process 11025 Hz"});
    EXPECT_EQ(ReadOutput(), vecIn);
    fs::remove(Path("c/windows/system32/ZVAudioDriver/Kelvane_x64.dll"));
    ExpectParts(Play("--in-place --set 'Test\\Value=5'"),
                {"\"same_as_input\": 10", "protection library isn't loaded", "GetLoadDLLStatus"});
    EXPECT_EQ(ReadOutput(), vecIn);
    EXPECT_EQ(Run("reg get 'Test\\Value'").strOut, "5 (0x00000005)\n");
}

TEST_F(HostProgram, EveryRunGivesTheSameSamplesAndRealTimeKeepsTheClock)
{
    WriteInput(2 * 44100);
    Play("--rate 44100 --period 441");
    const std::vector<float> vecFirst = ReadOutput();
    for (int i = 0; i < 3; ++i)
    {
        Play("--rate 44100 --period 441");
        EXPECT_EQ(ReadOutput(), vecFirst);
    }
    WriteInput(2 * 480 * 30);
    const auto tBegin = std::chrono::steady_clock::now();
    ExpectParts(Play("--realtime"), {"\"periods\": 30", "\"realtime\": true"});
    EXPECT_GE(std::chrono::steady_clock::now() - tBegin, std::chrono::milliseconds(290));
}

TEST_F(HostProgram, WhatCantBeDoneIsToldAndFails)
{
    WriteInput(2 * 480);
    std::ofstream(Path("empty.wav"));
    std::ofstream(Path("words.wav")) << "these are words, and no audio";
    const std::string strIn = "play " + Path("in.f32") + " ";
    struct Case
    {
        std::string strArguments;
        int iExit;
        const char* pText;
    };
    const Case CASES[] = {
        {"play " + Path("absent.wav"), 1, "absent.wav: No such file"},
        {"play " + Path("empty.wav"), 1, "empty.wav: the file is empty"},
        {"play " + Path("words.wav"), 1, "words.wav: not readable as audio"},
        {"play " + machine::Folder(), 1, "not a file"},
        {strIn + Path("no/folder/out.wav"), 1, "out.wav: not writable: No such file"},
        {strIn + Path("in.f32"), 1, "is the input too"},
        {strIn + "--report " + Path("no/report.json"), 1, "report could not be written"},
        {strIn + "--set KelvaneStatus=1", 1, "KEY\\VALUE is expected"},
        {strIn + "--variant other", 2, "other"},
        {strIn + "--channels 0", 2, "--channels"},
        {"play", 2, "IN"},
        {"", 2, "subcommand"},
        {"reg get 'No\\Value'", 1, "no such value"},
        {"reg list No", 1, "no such key"},
        {"register --module " + Path("empty.wav"), 1, "can't be loaded"},
    };
    for (const Case& oCase : CASES)
    {
        const ProgramRun oRun = Run(oCase.strArguments);
        EXPECT_EQ(oRun.iExit, oCase.iExit) << oCase.strArguments;
        ExpectParts(oRun.strOut, {oCase.pText});
    }
    EXPECT_EQ(Run("unregister").iExit, 0);
    ExpectParts(Run(strIn).strOut, {"not registered", "apohost register"});
}

TEST_F(HostProgram, AFaultInTheRegistryFileIsToldWithItsLine)
{
    WriteInput(2 * 480);
    std::ofstream(Path("registry.reg"), std::ios::app)
        << "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Broken]\n\"Value\"=dword:xyz\n";
    const ProgramRun oRun = Run("play " + Path("in.f32"));
    EXPECT_EQ(oRun.iExit, 0);
    ExpectParts(oRun.strOut, {"registry.reg:", "at the end"});
}

TEST_F(HostProgram, AWatchTellsWhatAnotherProgramSets)
{
    FILE* pOut = popen(("echo $$; exec env " + m_strProgram + "reg watch Volume").c_str(), "r");
    char cLine[256] = {};
    ASSERT_NE(std::fgets(cLine, sizeof(cLine), pOut), nullptr);
    const pid_t iProgram = std::atoi(cLine);
    ASSERT_NE(std::fgets(cLine, sizeof(cLine), pOut), nullptr);
    EXPECT_EQ(Run("reg set 'Volume\\Speaker\\VolumeNum=31'").iExit, 0);
    ASSERT_NE(std::fgets(cLine, sizeof(cLine), pOut), nullptr);
    EXPECT_STREQ(cLine, "~ Speaker\\VolumeNum = 31 (0x0000001F), was 50 (0x00000032)\n");
    SetRegistryValue("Volume\\New\\Text=loud");
    ASSERT_NE(std::fgets(cLine, sizeof(cLine), pOut), nullptr);
    EXPECT_STREQ(cLine, "+ New\\\n");
    kill(iProgram, SIGINT);
    EXPECT_EQ(pclose(pOut), 0);
    ExpectParts(Run("reg list Volume").strOut,
                {"ZVAudio\\Volume\n", "  New\\Text = \"loud\"\n", "  Speaker\\VolumeDB = \"-10.5\""});
}
