// apohost: plays audio through the module, registers it, looks after the machine's registry, converts sample dumps,
// builds and shows tuning files.
#include "host/audio/dump_to_wav.h"
#include "host/host_error.h"
#include "host/machine/host_machine.h"
#include "host/playing/play.h"
#include "host/registry/reg_commands.h"
#include "host/registry/registration.h"
#include "host/report/report.h"
#include "host/tuning/tuning_commands.h"

#include <CLI/CLI.hpp>

#include <cstdio>

namespace
{

constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;

// Whether the run is what it was to be; why not is told when it happens.
bool RunPlay(const PlayOptions& oOptions)
{
    const PlayResult oResult = Play(oOptions);
    std::printf("%s", FormatTable(oResult).c_str());
    if (!oOptions.strReport.empty())
        WriteReport(oOptions.strReport, oResult);
    return oResult.bSettled;
}

// What is played, and in which form.
void AddStream(CLI::App* pPlay, PlayOptions& oOptions)
{
    pPlay->add_option("IN", oOptions.strInput, "WAV, FLAC, OGG, or raw 32-bit floats (.f32)")->required();
    pPlay->add_option("OUT", oOptions.strOutput,
                      ".wav (32-bit float), .flac (24 bit) or .f32; nothing is written without");
    pPlay
        ->add_option_function<std::string>(
            "--variant", [&](const std::string& strVariant) { oOptions.bInlineVariant = strVariant == "omfx"; },
            "efx: processing on a worker (default); omfx: inside the call")
        ->check(CLI::IsMember({"efx", "omfx"}));
    pPlay->add_option("--period", oOptions.iPeriodFrames, "Frames per call; 10 ms without")
        ->check(CLI::Range(1, 1 << 20));
    pPlay->add_option("--rate", oOptions.iRate, "Hz of a .f32 file (48000); other files must match")
        ->check(CLI::Range(1, 1000000));
    pPlay->add_option("--channels", oOptions.iChannels, "Channels of a .f32 file (2); other files must match")
        ->check(CLI::Range(1, 1024));
    pPlay->add_flag("--in-place", oOptions.bInPlace, "Input and output in one buffer");
    pPlay->add_option("--repeat", oOptions.f64RepeatSeconds, "IN over and over, so many seconds in all")
        ->check(CLI::Range(0.01, 86400.0));
}

void AddPlay(CLI::App& oApp, PlayOptions& oOptions, int& iExit)
{
    CLI::App* pPlay = oApp.add_subcommand("play", "Play an audio file through the module");
    AddStream(pPlay, oOptions);
    CLI::Option* pRealtime = pPlay->add_flag("--realtime", oOptions.bRealtime, "Pace periods by the clock");
    pPlay->add_option("--set", oOptions.vecSets, "KEY\\VALUE=DATA, set in the registry before the start; repeatable")
        ->expected(1)
        ->take_all();
    pPlay
        ->add_option(
            "--every", oOptions.vecCycles,
            "SECONDS KEY\\VALUE=A,B,...: sets the value every so many seconds of audio, to one after the other; "
            "repeatable")
        ->expected(1)
        ->take_all()
        ->excludes(pRealtime);
    pPlay->add_flag("--speaker", oOptions.bSpeaker, "Simulate the speakers, without and behind the module");
    pPlay->add_option("--tuning", oOptions.strTuning,
                      "The tuning file that describes the speakers; the one that the module took without");
    pPlay->add_option("--ambient", oOptions.f64AmbientC, "Degrees Celsius around the speakers; 25 without")
        ->check(CLI::Range(-40.0, 100.0));
    pPlay->add_option("--trace", oOptions.strTrace, "CSV file: levels, speakers, set and path every 10 ms");
    pPlay->add_option("--report", oOptions.strReport, "Write the report as JSON too");
    pPlay->callback([&] { iExit = RunPlay(oOptions) ? 0 : EXIT_FAILED; });
}

void AddReg(CLI::App& oApp, std::string& strArgument)
{
    struct RegCommand
    {
        const char* pName;
        const char* pArgument;
        const char* pForm;
        const char* pText;
        void (*pRun)(const std::string&);
    };
    static constexpr RegCommand REG_COMMANDS[] = {
        {"get", "VALUE", "KEY\\VALUE", "Print a value", RegGet},
        {"set", "SETTING", "KEY\\VALUE=DATA; DATA is a number (7, 0x7) or text (Left, text:7)", "Set a value", RegSet},
        {"list", "KEY", "", "Print all keys and values below a key", RegList},
        {"watch", "KEY", "", "Print changes below a key until interrupted", RegWatch},
    };
    CLI::App* pReg = oApp.add_subcommand("reg", "Look after the machine's registry");
    pReg->require_subcommand(1);
    for (const RegCommand& oCommand : REG_COMMANDS)
    {
        CLI::App* pCommand = pReg->add_subcommand(oCommand.pName, oCommand.pText);
        pCommand->add_option(oCommand.pArgument, strArgument, oCommand.pForm)->required();
        pCommand->callback([&strArgument, pRun = oCommand.pRun] { pRun(strArgument); });
    }
    pReg->footer(
        "KEY begins with HKEY_LOCAL_MACHINE (HKLM) or another root, or is ZVAudio, which is HKLM\\SOFTWARE\\ZVAudio, "
        "or is below that.");
}

void AddRegistration(CLI::App& oApp, std::string& strModule)
{
    CLI::App* pRegister = oApp.add_subcommand("register", "Register the module on the machine");
    CLI::App* pUnregister = oApp.add_subcommand("unregister", "Take the registration back");
    for (CLI::App* pCommand : {pRegister, pUnregister})
        pCommand->add_option("--module", strModule, "The module; KelvaneAPO.dll next to the program without");
    pRegister->callback([&] { RegisterModule(strModule); });
    pUnregister->callback([&] { UnregisterModule(strModule); });
}

struct DumpOptions
{
    std::string strDump;
    AudioFormat oFormat{48000, 2};
    std::string strOutput;
};

void AddDumpToWav(CLI::App& oApp, DumpOptions& oOptions)
{
    CLI::App* pDump = oApp.add_subcommand("dump2wav", "Turn a sample dump of the module into an audio file");
    pDump->add_option("FILE", oOptions.strDump, "The dump (.pcm)")->required();
    pDump->add_option("OUT", oOptions.strOutput, ".wav (32-bit float), .flac (24 bit) or .f32")->required();
    pDump->add_option("--rate", oOptions.oFormat.iRate, "Hz of the dump; 48000 without")->check(CLI::Range(1, 1000000));
    pDump->add_option("--channels", oOptions.oFormat.iChannels, "Channels of the dump; 2 without")
        ->check(CLI::Range(1, 1024));
    pDump->callback([&] { DumpToWav(oOptions.strDump, oOptions.oFormat, oOptions.strOutput); });
}

struct TuningPaths
{
    std::string strInput;
    std::string strOutput;
};

void AddTuning(CLI::App& oApp, TuningPaths& oPaths)
{
    CLI::App* pTuning = oApp.add_subcommand("tuning", "Build a tuning file from its source, or show one");
    pTuning->require_subcommand(1);
    CLI::App* pBuild = pTuning->add_subcommand("build", "Build a tuning file");
    pBuild->add_option("SOURCE", oPaths.strInput, "The source (.toml)")->required();
    pBuild->add_option("OUT", oPaths.strOutput, "The tuning file (.xml)")->required();
    pBuild->callback([&] { TuningBuild(oPaths.strInput, oPaths.strOutput); });
    CLI::App* pShow = pTuning->add_subcommand("show", "Print a tuning file's sets in names and units");
    pShow->add_option("FILE", oPaths.strInput, "The tuning file (.xml)")->required();
    pShow->callback([&] { TuningShow(oPaths.strInput); });
}

} // namespace

int main(int iArgumentCount, char** ppArguments)
{
    CLI::App oApp("Plays audio through the speaker protection module, as the audio engine would.", "apohost");
    oApp.allow_windows_style_options(false); // a path may begin with a slash
    oApp.footer(host::MachineNote());
    oApp.set_version_flag("--version", "apohost " APOHOST_VERSION);
    oApp.require_subcommand(1);
    PlayOptions oOptions;
    std::string strArgument;
    std::string strModule;
    int iExit = 0;
    AddPlay(oApp, oOptions, iExit);
    AddReg(oApp, strArgument);
    AddRegistration(oApp, strModule);
    DumpOptions oDumpOptions;
    AddDumpToWav(oApp, oDumpOptions);
    TuningPaths oTuningPaths;
    AddTuning(oApp, oTuningPaths);
    try
    {
        oApp.parse(iArgumentCount, ppArguments);
        return std::fflush(stdout) == 0 ? iExit : EXIT_FAILED;
    }
    catch (const CLI::ParseError& oError)
    {
        return oApp.exit(oError) == 0 ? 0 : EXIT_USAGE;
    }
    catch (const std::exception& oError)
    {
        std::fprintf(stderr, "apohost: %s\n", oError.what());
        return EXIT_FAILED;
    }
}
