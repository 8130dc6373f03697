// Tuning files: built from their sources, shown, and refused with the place of each fault.
#include "host/host_error.h"
#include "host/tuning/tuning_commands.h"
#include "host/tuning/tuning_show.h"
#include "host/tuning/tuning_source.h"
#include "platform/hostpath.h"
#include "protection/kelvane_parameters.h"
#include "tests/support/machine_test.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace
{

const std::string MACHINE = KELVANE_MACHINE_SOURCE;
const char* const BUILT = "C:\\windows\\temp\\built.xml";
const std::string LAPTOP = MACHINE + "/tuning/laptop_pair.toml";

class HostTuning : public MachineTest
{
protected:
    static std::string Write(const char* pName, const std::string& strText)
    {
        const std::string strPath = HostPath("C:\\windows\\temp\\" + std::string(pName));
        std::filesystem::create_directories(std::filesystem::path(strPath).parent_path());
        std::ofstream(strPath, std::ios::binary) << strText;
        return strPath;
    }

    // Everything that is wrong with a source; empty if nothing is.
    static std::string Faults(const std::string& strSource)
    {
        try
        {
            TuningBuild(Write("source.toml", strSource), HostPath(BUILT));
        }
        catch (const CHostError& oError)
        {
            EXPECT_FALSE(std::filesystem::exists(HostPath(BUILT))) << "a faulty source was built";
            return oError.what();
        }
        return "";
    }
};

} // namespace

TEST_F(HostTuning, TheMachinesFileIsWhatItsSourceGives)
{
    const std::string strXml = MACHINE + "/c/windows/system32/ZVAudioDriver/audio_kelvane_params_default.xml";
    EXPECT_EQ(HostFile(strXml), FormatTuning(ReadTuningSource(LAPTOP), "laptop_pair.toml"));
}

TEST_F(HostTuning, WhatIsBuiltIsReadBackInNamesAndUnits)
{
    TuningFile oBuilt = ReadTuningSource(MACHINE + "/tuning/four_amplifiers.toml");
    // A word and a double that the table doesn't name, and numbers of each length.
    reinterpret_cast<int16_t*>(&oBuilt.vecSets[11].oParam)[6071] = -5;
    oBuilt.vecSets[11].oParam.sLSMTvcCoef0[200] = 1e-9;
    oBuilt.vecSets[11].oParam.sLSMTvcCoef0[0] = 1.0 / 3;
    const TuningFile oRead = ReadTuning(Write("tuning.xml", FormatTuning(oBuilt, "x.toml")));
    ASSERT_EQ(oRead.vecSets.size(), 12U);
    for (size_t i = 0; i < 12; ++i)
    {
        EXPECT_EQ(memcmp(&oRead.vecSets[i].oParam, &oBuilt.vecSets[i].oParam, sizeof(KelvaneStruParam)), 0) << i;
        EXPECT_EQ(oRead.vecSets[i].u64Control, oBuilt.vecSets[i].u64Control) << i;
    }
    EXPECT_EQ(oRead.vecVolume, (std::vector<int>{0, 20, 40, 60, 80, 100}));
    // The band's own, what heat changes over it, and what neither touches.
    const KelvaneStruParam& oHeated = FindSet(oRead, "40080")->oParam;
    EXPECT_EQ(GetParameter(oHeated, KelvaneParameter::DRIVE, 3), 100);
    EXPECT_EQ(GetParameter(oHeated, KelvaneParameter::COIL_LIMIT, 1), 90);
    EXPECT_EQ(GetParameter(FindSet(oRead, "30080")->oParam, KelvaneParameter::COIL_LIMIT, 1), 105);
    EXPECT_EQ(GetParameter(FindSet(oRead, "30080")->oParam, KelvaneParameter::DRIVE, 3), 120);
    const std::string strShown = FormatSets(oRead);
    for (const char* pLine : {"control words 0x0 0x2 ", "  resonance_hz = [450, 450, 1000, 1000]\n",
                              "set 50001, as 30000 but for\n  ceiling_full_percent = 50\n", "  word 6071 = -5\n",
                              "  double 200 = 1e-09\n", "  div_mode = 1\n"})
        EXPECT_NE(strShown.find(pLine), std::string::npos) << pLine << strShown;
}

TEST_F(HostTuning, AFaultySourceIsRefusedWithEveryPlace)
{
    const std::string strSource = HostFile(LAPTOP);
    struct Case
    {
        const char* pFrom; // of the source, at its first place
        const char* pTo;
        const char* pFault; // behind file and line
        int iLinesBehind = 0;
    };
    const Case CASES[] = {
        {"resonance_hz = 800", "resonance_hz = 80", "resonance_hz: is 80; allowed is 100 to 2000"},
        {"resonance_hz = 800", "resonance_hz = nan", "resonance_hz: is nan; allowed"},
        {"resonance_hz = 800", "resonance_hz = \"800\"", "resonance_hz: no number; allowed is 100 to 2000"},
        {"resonance_hz = 800", "resonance_hz = [800]", "resonance_hz: has 1 values; allowed is 2"},
        {"resonance_hz = 800", "resonance_hz = [800, 1]", "resonance_hz: is 1; allowed"},
        {"resonance_hz = 800", "resonence_hz = 800",
         "resonence_hz: [speaker] has nothing of that name; is resonance_hz meant? There allowed is 100 to 2000"},
        {"resonance_hz = 800", "", "resonance_hz: missing in [speaker]; allowed is 100 to 2000", -4},
        {"mechanical_q = 4.0", "resonance_hz = 900",
         "resonance_hz: Error while parsing key-value pair: cannot "
         "redefine existing integer 'resonance_hz'; allowed is 100 to 2000"},
        {"mechanical_q = 4.0", "mechanical_q = four",
         "mechanical_q: Error while parsing boolean: expected 'false', "
         "saw 'fo'; allowed is 0.5 to 20"},
        {"heat_stage = 1", "heat_stage = 0.5", "heat_stage: is 0.5; allowed is 0 to 1, whole numbers"},
        {"amplifiers = 1", "amplifiers = 3", "amplifiers: is 3; allowed is 1 to 2"},
        {"hot_above_c = [45, 45]", "hot_above_c = 45", "hot_above_c: has 1 values; allowed is 2"},
        {"up_to_percent = 40", "up_to_percent = 20", "up_to_percent: is 20; allowed is 21 to 97, whole numbers"},
        {"ids = [1, 2]", "ids = [1, 256]", "ids: is 256; allowed is 0 to 255"},
        {"drive_percent = 110", "drive_percent = 500", "drive_percent: is 500; allowed is 0 to 400, whole numbers"},
        {"drive_percent = 110", "coil_limit = 5",
         "coil_limit: [[volume_band]] has nothing of that name; is coil_limit_c meant"},
        {"ceiling_full_percent = 70", "ceiling_full = 70", "ceiling_full: [heated] has nothing of that name"},
        {"data_version = \"1.0.2\"", "data_version = \"<\"", "data_version: a text without"},
        // In range each, no speaker together: told once, where the number stands.
        {"full_scale_v = 6.0", "full_scale_v = 40.0", "full_scale_v: set 30000: a full-scale square"},
        {"coil_limit_c = 90", "coil_limit_c = 70", "coil_limit_c: set 40000: "},
    };
    ASSERT_EQ(Faults(strSource), "");
    ASSERT_TRUE(std::filesystem::remove(HostPath(BUILT)));
    for (const Case& oCase : CASES)
    {
        const size_t iAt = strSource.find(oCase.pFrom);
        ASSERT_NE(iAt, std::string::npos) << oCase.pFrom;
        const auto iLine =
            std::count(strSource.begin(), strSource.begin() + static_cast<std::ptrdiff_t>(iAt), '\n') + 1;
        const std::string strFaults = Faults(std::string(strSource).replace(iAt, strlen(oCase.pFrom), oCase.pTo));
        const std::string strPlace = "source.toml:" + std::to_string(iLine + oCase.iLinesBehind) + ": ";
        const size_t iFault = strFaults.find(strPlace);
        EXPECT_TRUE(iFault != std::string::npos && strFaults.find(oCase.pFault, iFault) != std::string::npos)
            << oCase.pTo << ": " << strPlace << oCase.pFault << " in\n"
            << strFaults;
        EXPECT_LT(std::count(strFaults.begin(), strFaults.end(), '\n'), 2) << strFaults;
    }
    EXPECT_NE(Faults("[file]\n").find("[speaker] is missing"), std::string::npos);
    EXPECT_NE(Faults("").find("[speaker] is missing"), std::string::npos);
    const std::string strOwn = Write("own.toml", strSource);
    EXPECT_THROW(TuningBuild(strOwn, strOwn), CHostError) << "written over";
    EXPECT_EQ(HostFile(strOwn), strSource);
    EXPECT_NE(Faults(strSource + "[[sound_mode]]\n").find("[[sound_mode]]: 2 of them are wanted"), std::string::npos);
}
