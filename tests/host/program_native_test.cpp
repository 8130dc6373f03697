// The program as a person runs it, on a machine of its own, with the module and the default tuning file.
#include "host/audio/audio_file.h"
#include "host/registry/registry_text.h"
#include "platform/control/machine_native.h"
#include "tests/support/machine_test.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace
{

struct ProgramRun
{
    int iExit = -1;
    std::string strOut; // both outputs
};

// A program that goes on while the test does.
class RunningProgram
{
public:
    explicit RunningProgram(const std::string& strCommand)
        : m_pOut(popen(("echo $$; exec env " + strCommand + " 2>&1").c_str(), "r")), m_iProcess(std::stoi(Line()))
    {
    }

    // The next line of its outputs; empty behind the last.
    std::string Line() const
    {
        char cLine[512] = {};
        return std::fgets(cLine, sizeof(cLine), m_pOut) != nullptr ? cLine : "";
    }

    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;
    ~RunningProgram()
    {
        if (m_pOut == nullptr)
            return;
        Kill(SIGKILL); // a check failed
        End();
    }

    void Kill(int iSignal) const { kill(m_iProcess, iSignal); }

    // Takes what it still tells, for a closed pipe would kill it; gives the status that waiting for it gives.
    int End()
    {
        while (!Line().empty())
        {
        }
        return pclose(std::exchange(m_pOut, nullptr));
    }

private:
    FILE* m_pOut;
    const pid_t m_iProcess;
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
        return HostFile(Path("report.json"));
    }

    // Noise without a zero, which no period repeats. It's loud, or as quiet as leaves nothing to protect.
    static std::vector<float> WriteInput(size_t iDataLen, float f32Peak = 0.5f)
    {
        std::vector<float> vecData(iDataLen);
        uint32_t u32State = 7;
        for (float& f32Value : vecData)
        {
            u32State = u32State * 1664525u + 1013904223u;
            f32Value = 0.001f + f32Peak * static_cast<float>(u32State >> 8) / 16777216.0f;
        }
        std::ofstream(Path("in.f32"), std::ios::binary)
            .write(reinterpret_cast<const char*>(vecData.data()),
                   static_cast<std::streamsize>(iDataLen * sizeof(float)));
        return vecData;
    }

    static std::vector<float> ReadOutput()
    {
        const std::string strBytes = HostFile(Path("out.f32"));
        std::vector<float> vecData(strBytes.size() / sizeof(float));
        std::memcpy(vecData.data(), strBytes.data(), strBytes.size());
        return vecData;
    }

    // The dump of what went in, with samples; empty without.
    static std::string FindDump()
    {
        for (const auto& oEntry : fs::directory_iterator(Path("c/programdata/ZVAudio/KelvaneAPO")))
            if (oEntry.path().filename().string().rfind("KelvaneAPO_PostDataIn_P", 0) == 0 && oEntry.file_size() > 0)
                return oEntry.path().string();
        return "";
    }

    static void ExpectParts(const std::string& strText, std::initializer_list<const char*> vecParts)
    {
        for (const char* pPart : vecParts)
            EXPECT_NE(strText.find(pPart), std::string::npos) << pPart << " in\n" << strText;
    }

    // Fields of each row of a trace.
    static std::vector<std::vector<std::string>> ReadRows(const std::string& strPath)
    {
        std::istringstream oText(HostFile(strPath));
        std::string strLine;
        std::getline(oText, strLine);
        EXPECT_EQ(strLine, "seconds,level_in_db,level_out_db,gain_reduction_db,coil_unprotected_c,coil_c,magnet_c,"
                           "displacement_unprotected_mm,displacement_mm,set,path");
        std::vector<std::vector<std::string>> vecRows;
        while (std::getline(oText, strLine))
        {
            std::istringstream oLine(strLine);
            auto& vecFields = vecRows.emplace_back();
            for (std::string strField; std::getline(oLine, strField, ',');)
                vecFields.push_back(strField);
        }
        return vecRows;
    }

    // Both limits of each channel, which the input would have broken.
    static void ExpectHeld(const Json& oSpeakers, const char* pSet, size_t uChannels)
    {
        EXPECT_EQ(oSpeakers["set"], pSet);
        ASSERT_EQ(oSpeakers["channels"].size(), uChannels);
        for (const Json& oChannel : oSpeakers["channels"])
            for (const char* pLimit : {"coil_c", "displacement_mm"})
            {
                EXPECT_GT(oChannel["unprotected"][pLimit], oChannel["limits"][pLimit]) << oSpeakers;
                EXPECT_LE(oChannel["protected"][pLimit], oChannel["limits"][pLimit]) << oSpeakers;
            }
        EXPECT_LT(oSpeakers["level_lost_above_500_hz_db"], oSpeakers["constant_gain_loss_db"]) << oSpeakers;
    }

    // Builds a tuning file of a machine's source, changed.
    void BuildTuning(const char* pSource, std::initializer_list<std::pair<const char*, const char*>> vecChanges,
                     const char* pOutput) const
    {
        std::string strSource = HostFile(Path(pSource));
        for (const auto& [pFrom, pTo] : vecChanges)
            strSource.replace(strSource.find(pFrom), strlen(pFrom), pTo);
        std::ofstream(Path("source.toml")) << strSource;
        EXPECT_EQ(Run("tuning build " + Path("source.toml") + " " + Path(pOutput)).strOut, "");
    }

    std::string m_strProgram;
};

} // namespace

TEST_F(HostProgram, BothVariantsGiveTheirStreamAndTellTheirPath)
{
    // 20 periods of 480 frames and a part of one. The library's delay is all that it does to them.
    const std::vector<float> vecIn = WriteInput(2 * (20 * 480 + 100), 0.02f);
    const auto fDelayed = [&vecIn](size_t iFrames)
    {
        std::vector<float> vecDelayed(2 * iFrames);
        vecDelayed.insert(vecDelayed.end(), vecIn.begin(), vecIn.end() - static_cast<std::ptrdiff_t>(2 * iFrames));
        return vecDelayed;
    };
    ExpectParts(
        Play("--variant omfx"),
        {"\"periods\": 21", "\"processed\": 21", "\"bypassed_at_end\": false", "\"lead_in_periods\": 0",
         // The codec driver reports the jack. The folder's watch ends with the module: no error, if it had begun.
         "\"errors\": 0", "\"warnings\": 1", "\"stop_lines\": ", "\"Realtek InternalSpeakerOutput exist!"});
    const std::vector<float> vecInline = ReadOutput();
    const auto itSound = std::find_if(vecInline.begin(), vecInline.end(), [](float f32) { return f32 != 0; });
    const size_t iDelay = static_cast<size_t>(itSound - vecInline.begin()) / 2;
    EXPECT_TRUE(iDelay > 0 && iDelay <= 312) << iDelay << " frames"; // 6.5 ms
    EXPECT_EQ(vecInline, fDelayed(iDelay));

    const std::vector<float> vecDelayed = fDelayed(3 * 480 + iDelay);
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
    Play("--rate 44100 --period 441");
    EXPECT_EQ(ReadOutput(), vecFirst);
    WriteInput(2 * 480 * 30);
    const auto tBegin = std::chrono::steady_clock::now();
    ExpectParts(Play("--realtime"), {"\"periods\": 30", "\"realtime\": true"});
    EXPECT_GE(std::chrono::steady_clock::now() - tBegin, std::chrono::milliseconds(290)) << "it didn't wait";
}

// The sensors follow the simulated magnet, and the tuning file of the debug folder, with sets by heat, comes before the
// default one: the set changes because the speaker got hot, and comes back because it cooled. A magnet of a tenth of
// the default one's heat follows in time.
TEST_F(HostProgram, TheReportTellsWhatHeatDid)
{
    WriteInput(220 * 16000, 0.95f);
    fs::resize_file(Path("in.f32"), 460 * 16000 * sizeof(float));
    fs::rename(Path("heat.xml"), Path("machine.xml"));
    fs::create_directories(Path("d/.ZVAudioParams"));
    fs::create_directories(Path("d/.LOGAudioKelvaneVoice"));
    BuildTuning("tuning/laptop_pair.toml",
                {{"sets_by_heat = 0", "sets_by_heat = 1"},
                 {"library_sensor = 1", "library_sensor = 3"},
                 {"magnet_heat_j_per_k = 4.0", "magnet_heat_j_per_k = 0.4"}},
                "d/.ZVAudioParams/audio_kelvane_params_1.xml");
    const Json oReport = Json::parse(
        Play("--variant omfx --rate 16000 --channels 1 --period 8000 --every 10 'Volume\\Speaker\\VolumeNum=52,50' "
             "--set 'Debug\\DebugMode=1' --set 'Debug\\DebugLevel=2' --ambient 36.5 --trace " +
             Path("trace.csv")));
    EXPECT_EQ(oReport["periods"], 920);
    const Json& oSets = oReport["parameter_sets"];
    ASSERT_EQ(oSets.size(), 3U) << oSets;
    for (const auto& [iSet, pSet, iSince] : {std::tuple{0, "30040", -1}, {1, "40040", 100}, {2, "30040", 320}})
    {
        EXPECT_EQ(oSets[static_cast<size_t>(iSet)][1], pSet);
        EXPECT_GE(oSets[static_cast<size_t>(iSet)][0], iSince) << "ten means of ten seconds";
    }
    const Json& oController = oReport["controller"];
    EXPECT_EQ(oController["taken_back"], Json::array({460.5}));
    EXPECT_EQ(oController["other"], Json::array());
    for (const char* pSensor : {"1", "2", "3"})
        EXPECT_EQ(oController["queries"][pSensor].size(), 46U) << pSensor;
    EXPECT_EQ(oReport["library_temperatures"][45], Json::array({459.5, 36.5}));
    Json oEvents;
    for (const Json& oEvent : oReport["devices"]["KELVANE_DEVICE0"])
        oEvents.push_back(oEvent[1]);
    EXPECT_EQ(oEvents, Json::array({"open", "active", "active", "deactivated", "cancel", "close"}));
    std::set<std::string> oRecords; // a run over midnight has two files of each
    for (const auto& oEntry : fs::directory_iterator(Path("d/.LOGAudioKelvaneVoice")))
        oRecords.insert(oEntry.path().filename().string().substr(0, 18));
    EXPECT_EQ(oRecords.size(), 3U);
    ExpectHeld(oReport["speakers"], "30040", 1);

    // A row per 10 ms: it begins cool, is hot at the sound's end, and ends cool.
    const auto vecRows = ReadRows(Path("trace.csv"));
    ASSERT_EQ(vecRows.size(), 46000U);
    EXPECT_FALSE(fs::exists(Path("trace.csv.part")));
    EXPECT_EQ(vecRows[45999][0], "459.99");
    for (const auto& [uRow, pSet, pPath] : {std::tuple{size_t{0}, "30040", "processed"},
                                            {21900U, "40040", "processed"},
                                            {45999U, "30040", "quiet input"}})
    {
        EXPECT_EQ(vecRows[uRow][9], pSet);
        EXPECT_EQ(vecRows[uRow][10], pPath);
    }
    EXPECT_NEAR(std::stod(vecRows[0][6]), 36.5, 0.1);
    EXPECT_GT(std::stod(vecRows[21900][6]), 45);
    EXPECT_LT(std::stod(vecRows[45999][6]), 40);
    double f64Hottest = 0;
    for (const auto& vecRow : vecRows)
        f64Hottest = std::max(f64Hottest, std::stod(vecRow[5]));
    EXPECT_NEAR(f64Hottest, oReport["speakers"]["channels"][0]["protected"]["coil_c"], 0.1);
}

// On the machine as it is. The input of each row is the one that its output came from, behind lead-in and delay.
TEST_F(HostProgram, SimulatedSpeakersTellWhatWasHeld)
{
    fs::copy_file(KELVANE_PROGRAMME, Path("in.flac"));
    const std::string strPlay = "play " + Path("in.flac") + " --speaker --ambient 36.5 --report " + Path("report.json");
    const ProgramRun oRun = Run(strPlay);
    ExpectParts(oRun.strOut, {"\n  hottest coil     ", "\n  displacement     ", "\n  level lost       "});
    const Json oSpeakers = Json::parse(HostFile(Path("report.json")))["speakers"];
    ExpectHeld(oSpeakers, "30040", 2);
    EXPECT_GE(oSpeakers["channels"][0]["unprotected"]["displacement_mm"], 2.2 * 0.4);
    EXPECT_LE(oSpeakers["level_lost_above_500_hz_db"], oSpeakers["constant_gain_loss_db"].get<double>() - 6);

    WriteInput(2 * 48000, 0.02f);
    Play("--trace " + Path("trace.csv"));
    const auto vecRows = ReadRows(Path("trace.csv"));
    ASSERT_EQ(vecRows.size(), 100U);
    for (size_t i = 10; i < vecRows.size(); ++i)
        EXPECT_NEAR(std::stod(vecRows[i][3]), 0, 0.1) << i;

    // A log that tells nothing: the tuning file has to be named.
    const std::string strSpeaker = "play " + Path("in.f32") + " --speaker --set 'Debug\\DebugLevel=4'";
    const std::string strDefault = Path("c/windows/system32/ZVAudioDriver/audio_kelvane_params_default.xml");
    ExpectParts(Run(strSpeaker).strOut, {"name it with --tuning"});
    ExpectParts(Run(strSpeaker + " --tuning " + Path("machine.xml")).strOut, {"no tuning file"});
    ExpectParts(Run(strSpeaker + " --tuning " + strDefault).strOut, {"of set 30000 in"});
}

// Two kinds of speakers, each channel with its own limits; the order of four channels puts a small one on the second.
TEST_F(HostProgram, EachChannelIsJudgedByItsOwnSpeaker)
{
    WriteInput(4 * 96000, 1.6f);
    BuildTuning("tuning/four_amplifiers.toml", {{"four_channel_order = 0", "four_channel_order = 2"}},
                "c/windows/system32/ZVAudioDriver/audio_kelvane_params_default.xml");
    const Json oSpeakers = Json::parse(Play("--channels 4 --trace " + Path("trace.csv")))["speakers"];
    ExpectHeld(oSpeakers, "30040", 4);
    EXPECT_EQ(oSpeakers["channels"][1]["limits"]["displacement_mm"], 0.3);
    ExpectParts(HostFile(Path("trace.csv")), {",channel_4_coil_c,", "\n1.99,"});
    ExpectParts(Run("play " + Path("in.f32") + " --channels 4 --speaker --set 'Bypass\\KelvaneStatus=1'").strOut,
                {"  hottest coil     channel 1: ", "limit 105.0 C, not held\n                   channel 2: ",
                 "limit 0.300 mm (", " times), not held\n"});
}

TEST_F(HostProgram, WhatCantBeDoneIsToldAndFails)
{
    WriteInput(2 * 480);
    std::ofstream(Path("empty.wav"));
    std::ofstream(Path("odd.pcm")) << "ten bytes!";
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
        {"play " + Path("words.wav"), 1, "words.wav: not readable as audio"},
        {"play " + machine::Folder(), 1, "not a file"},
        {strIn + Path("no/folder/out.wav"), 1, "out.wav: not writable: No such file"},
        {strIn + Path("in.f32"), 1, "is the input too"},
        {strIn + "--report " + Path("no/report.json"), 1, "report could not be written"},
        {strIn + "--set KelvaneStatus=1", 1, "KEY\\VALUE is expected"},
        {strIn + "--every 1 'A\\B=1,4294967296'", 1, "4294967296"},
        {strIn + "--every 0 'A\\B=1'", 1, "0.01 s"},
        {strIn + "--every 1 'A\\B=1' --realtime", 2, "--realtime"},
        {strIn + "--variant other", 2, "other"},
        {"", 2, "subcommand"},
        {"dump2wav " + Path("in.f32") + " " + Path("out.wav"), 1, "not a sample dump"},
        {"dump2wav " + Path("odd.pcm") + " " + Path("out.wav"), 1, "no whole number of frames"},
        {"reg get 'No\\Value'", 1, "no such value"},
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

// The rest of the registry counts, and the stream goes on.
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
    RunningProgram oWatch(m_strProgram + "reg watch Volume");
    oWatch.Line(); // it watches
    EXPECT_EQ(Run("reg set 'Volume\\Speaker\\VolumeNum=31'").iExit, 0);
    EXPECT_EQ(oWatch.Line(), "~ Speaker\\VolumeNum = 31 (0x0000001F), was 50 (0x00000032)\n");
    SetRegistryValue("Volume\\New\\Text=loud");
    EXPECT_EQ(oWatch.Line(), "+ New\\\n");
    oWatch.Kill(SIGINT);
    EXPECT_EQ(oWatch.End(), 0);
    ExpectParts(Run("reg list ZVAudio").strOut,
                {"SOFTWARE\\ZVAudio\n", "  Volume\\New\\Text = \"loud\"\n", "  Volume\\Speaker\\VolumeDB = \"-10.5\""});
}

// The event log's file takes nothing until somebody reads it: the module's event worker hangs from the load on.
TEST_F(HostProgram, AHungModuleKeepsNeitherTheOutputNorTheProgram)
{
    WriteInput(2 * 4800);
    fs::remove(Path("eventlog.txt"));
    ASSERT_EQ(mkfifo(Path("eventlog.txt").c_str(), 0600), 0);
    const std::string strPlay = m_strProgram + "play " + Path("in.f32") + " " + Path("out.wav");
    RunningProgram oRealtime(strPlay + " --realtime --repeat 600 --set 'Dump\\DumpLevel=1'");
    ASSERT_TRUE(WaitFor([] { return !FindDump().empty(); })) << "no period was played";
    oRealtime.Kill(SIGTERM);
    EXPECT_EQ(oRealtime.Line(), "apohost: stopping; once more ends it at once\n");
    // Whole, while the module's way down waits for its worker: its length stands in its head.
    const auto fLength = []
    {
        std::ifstream oFile(Path("out.wav"), std::ios::binary);
        uint32_t aHead[2] = {};
        oFile.read(reinterpret_cast<char*>(aHead), sizeof(aHead));
        return aHead[1] + sizeof(aHead);
    };
    EXPECT_TRUE(WaitFor([&] { return fLength() > 3840 && fLength() == fs::file_size(Path("out.wav")); }));
    oRealtime.Kill(SIGINT);
    const int iStatus = oRealtime.End();
    EXPECT_TRUE(WIFSIGNALED(iStatus) && WTERMSIG(iStatus) == SIGINT) << iStatus;

    fs::remove(Path("out.wav"));
    RunningProgram oOffline(strPlay);
    ExpectParts(oOffline.Line(), {"did not come to rest within 10 s"});
    const std::fstream oReader(Path("eventlog.txt"), std::ios::in | std::ios::out);
    EXPECT_EQ(WEXITSTATUS(oOffline.End()), 1);
    EXPECT_FALSE(fs::exists(Path("out.wav"))) << "nothing was played";
}

TEST_F(HostProgram, ADumpOfTheInputSoundsLikeTheInput)
{
    const std::vector<float> vecInput = WriteInput(20 * 960);
    Play("--set 'Dump\\DumpLevel=1'");
    const ProgramRun oRun = Run("dump2wav '" + FindDump() + "' " + Path("out.wav"));
    ASSERT_EQ(oRun.iExit, 0) << oRun.strOut;
    CAudioReader oReader(Path("out.wav"), {48000, 2});
    std::vector<float> vecDumped(vecInput.size() + 2);
    vecDumped.resize(2 * oReader.Read(vecDumped.data(), vecDumped.size() / 2));
    EXPECT_EQ(vecDumped, vecInput);
}
