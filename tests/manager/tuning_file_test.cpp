// Which tuning file is taken, how its lists are read, and what broken files do.
#include "audioapi/audio_api_string.h"
#include "tests/manager/manager_test.h"
#include "tests/support/own_heap.h"

namespace
{
constexpr size_t LARGEST_BLOCK = 4 << 20; // while memory is short
std::atomic<bool> g_bMemoryShort{false};
} // namespace

static bool IsBlockRefused(size_t iSize)
{
    return g_bMemoryShort && iSize > LARGEST_BLOCK;
}

namespace
{
const std::string INSTALLED = AUDIO_DRIVER_DIR;
const std::string DEBUGGED = AUDIO_DEBUG_PARAMS_DIR;

class TuningFileTest : public ManagerTest
{
protected:
    // A file that names its versions and can be told by its one sensor. An empty version leaves the element out.
    static std::string File(const std::string& strPlatforms, const std::string& strVersion, int iMark,
                            const std::string& strRest = "<VENDOR/>")
    {
        return "<SENCE_CATEGORY><PLATFROM_VERSION VALUE=\"" + strPlatforms + "\"/>" +
               (strVersion.empty() ? "" : "<PARA_VERSION PARA=\"" + strVersion + "\"/>") +
               "<SENSOR_RANGE_COMMAND VALUE=\"{" + std::to_string(iMark) + "}\"/>" + strRest + "</SENCE_CATEGORY>";
    }

    static void RemoveTuning()
    {
        for (const std::string& strDir : {INSTALLED, DEBUGGED})
            for (const std::string& strName : ListFiles(strDir.substr(0, strDir.size() - 1)))
                DeleteFileA((strDir + strName).c_str());
    }
};

struct TuningFileRow
{
    const char* pWhat;
    const char* pAlgoVersion;
    INT32 iDebugMode;
    struct
    {
        std::string strPath;
        std::string strContent;
    } oFiles[3]; // from the oldest to the newest
    int iTaken;  // the mark of the file whose tables were read, 0 for none
};

TEST_F(TuningFileTest, TakesOneFileOfMany)
{
    const std::string strA = INSTALLED + "audio_kelvane_params_a.xml";
    const std::string strB = INSTALLED + "audio_kelvane_params_b.xml";
    const std::string strC = INSTALLED + "audio_kelvane_params_c.xml";
    const std::string strD = DEBUGGED + "audio_kelvane_params_d.xml";
    const std::string strE = DEBUGGED + "audio_kelvane_params_e.xml";
    const std::string strHuge = File("2.1", "9", 9) + std::string(16 << 20, ' ');
    const std::string strLarge = File("2.1", "9", 9) + std::string(LARGEST_BLOCK, ' ');
    const TuningFileRow oRows[] = {
        {"number by number", "2.1", 0, {{strA, File("2.1", "1.10", 1)}, {strB, File("2.1", "1.9", 2)}}, 1},
        {"list of versions", "2.1", 0, {{strA, File("2.0, 2.1 ,2.2", "1", 1)}, {strB, File("2.10", "9", 2)}}, 1},
        {"of equal data the last listed", "2.1", 0, {{strB, File("2.1", "1", 2)}, {strA, File("2.1", "1", 1)}}, 2},
        {"too large for the module", "2.1", 0, {{strA, File("2.1", "1", 1)}, {strB, strHuge}}, 1},
        {"too large, none made for it", "2.1", 0, {{strA, File("1", "1", 1)}, {strB, strHuge}}, 1},
        {"memory can't hold it", "2.1", 0, {{strB, strLarge}, {strA, File("1", "1", 1)}}, 1},
        {"letter case counts", "2.1a", 0, {{strA, File("2.1A", "1", 1)}, {strB, File("3", "1", 2)}}, 2},
        {"none made for it: newest", "2.1", 0, {{strA, File("1", "9", 1)}, {strB, File("1", "1", 2)}}, 2},
        {"no library: newest", "", 0, {{strB, File("", "9", 1)}, {strA, File("", "1", 2)}}, 2},
        {"no data version", "2.1", 0, {{strA, File("2.1", "", 1)}, {strB, File("1", "9", 2)}}, 1},
        {"broken one skipped", "2.1", 0, {{strA, File("2.1", "1", 1)}, {strB, "<SENCE_CATEGORY>"}, {strC, "<a/>"}}, 1},
        {"broken one is the newest", "2.1", 0, {{strA, File("1", "1", 1)}, {strB, "<SENCE_CATEGORY>"}}, 0},
        {"names contain the pattern",
         "2.1",
         0,
         {{INSTALLED + "xaudio_kelvane_params_1.xml.bak", File("1", "1", 1)},
          {INSTALLED + "Audio_kelvane_params_1.xml", File("2.1", "1", 2)},
          {INSTALLED + "other.xml", File("2.1", "1", 3)}},
         1},
        {"debug folder: newest",
         "2.1",
         1,
         {{strD, File("2.1", "9", 4)}, {strE, File("", "1", 5)}, {strA, File("2.1", "9", 1)}},
         5},
        {"debug mode 2 is none", "2.1", 2, {{strA, File("1", "1", 1)}, {strD, File("2.1", "9", 4)}}, 1},
        {"debug folder empty", "2.1", 1, {{strA, File("2.1", "1", 1)}, {strB, File("1", "1", 2)}}, 1},
        {"no file at all", "2.1", 1, {}, 0},
    };
    for (const TuningFileRow& oRow : oRows)
    {
        SCOPED_TRACE(oRow.pWhat);
        RemoveTuning();
        CKelvaneManager* pManager = Restart();
        for (const auto& oFile : oRow.oFiles)
            if (!oFile.strPath.empty())
            {
                PutFile(oFile.strPath, oFile.strContent);
                LetTimePass();
            }
        CManagerInside::AlgoVersion() = oRow.pAlgoVersion;
        CManagerInside::DebugMode() = oRow.iDebugMode;
        g_bMemoryShort = true;
        pManager->LoadConfigFile();
        g_bMemoryShort = false;
        const std::vector<INT32> oExpected = oRow.iTaken ? std::vector<INT32>{oRow.iTaken} : std::vector<INT32>{};
        EXPECT_EQ(CManagerInside::Tuning().m_vecSensorRangeCommand, oExpected);
        EXPECT_EQ(CountLog("No Parameter be Loaded in Map!"), oRow.iTaken ? 1u : 0u);
    }
}

struct ListRow
{
    const char* pText; // null leaves the element out
    std::vector<INT32> oVolumes;
    std::vector<INT32> oSensors;
    bool bVolumeWarned;
};

TEST_F(TuningFileTest, ReadsTheLists)
{
    const std::vector<INT32> oDefault = {0, 20, 40, 60, 80, 100};
    const ListRow oRows[] = {
        {"{5,20,40,60,80,99}", {5, 20, 40, 60, 80, 99}, {5, 20, 40, 60, 80, 99}, false},
        {"{0,10,40,60,80,100,101}", {0, 10, 40, 60, 80, 100}, {0, 10, 40, 60, 80, 100, 101}, false},
        {"{-1,20,40,60,80,100}", oDefault, {-1, 20, 40, 60, 80, 100}, true},
        {"{abc,20,40,60,80,7}", {0, 20, 40, 60, 80, 7}, {0, 20, 40, 60, 80, 7}, false},
        {" 90 , 80,\n70,,60,50,40x ", {90, 80, 70, 60, 50, 40}, {90, 80, 70, 60, 50, 40}, false},
        {"x{{1,2}}", oDefault, {1, 2}, true},
        {"{7}", oDefault, {7}, true},
        {"", oDefault, {}, true},
        {nullptr, oDefault, {}, true},
    };
    for (const ListRow& oRow : oRows)
    {
        SCOPED_TRACE(oRow.pText != nullptr ? oRow.pText : "no element");
        CKelvaneManager* pManager = Restart();
        const std::string strText = oRow.pText != nullptr ? oRow.pText : "";
        std::string strLists;
        if (oRow.pText != nullptr)
            strLists = "<SENSOR_RANGE_NORMAL VALUE=\"{40}\"/><SENSOR_RANGE_LOW VALUE=\"" + strText +
                       "\"/><VOLUME_RANGE VALUE=\"" + strText + "\"/>";
        PutFile(INSTALLED + "audio_kelvane_params_1.xml", File("", "", 3, strLists));
        pManager->LoadConfigFile();
        EXPECT_EQ(CManagerInside::Tuning().m_vecVolumeRange, oRow.oVolumes);
        EXPECT_EQ(CManagerInside::Tuning().m_vecSensorRangeLow, oRow.oSensors);
        EXPECT_EQ(CManagerInside::Tuning().m_vecSensorRangeCommand, std::vector<INT32>{3});
        EXPECT_EQ(CountLog("Config Volume Param Number is Invalid!"), oRow.bVolumeWarned ? 1u : 0u);
        EXPECT_EQ(CountLog("Config file not have Tag:VOLUME_RANGE"), oRow.pText == nullptr ? 1u : 0u);
        EXPECT_EQ(CountLog("Sensor lists differ in length"), oRow.oSensors.size() != 1 ? 1u : 0u);
        EXPECT_TRUE(HasLine("ERROR", 1465, "Failed to load tag VENDOR"));
        EXPECT_EQ(CountLog("Tag missing in xml file:" + INSTALLED + "audio_kelvane_params_1.xml"), 1u);
    }
    EXPECT_EQ(FindLog("not have Tag:VOLUME_RANGE").at(0).strFunction, "LoadVolumeConfig");
}

// Each of these is the only file there. None may do more than leave tables empty and a line that says so.
TEST_F(TuningFileTest, SurvivesBrokenFiles)
{
    const std::string strPath = INSTALLED + "audio_kelvane_params_1.xml";
    const std::string strWhole = File("1", "1", 1, "<VENDOR><NV ID=\"1\" VALUE=\"{0x1,0x2}\"/></VENDOR>");
    std::string strDeep = "<SENCE_CATEGORY>";
    for (int i = 0; i < 200000; ++i)
        strDeep += "<a>";
    const struct
    {
        const char* pWhat;
        std::string strContent;
        long long iCode; // -1: the parser's
    } oRows[] = {
        {"empty", "", -1},
        {"truncated", strWhole.substr(0, strWhole.size() / 2), -1},
        {"zeros", std::string(100000, '\0'), -1},
        {"deep", strDeep, -1},
        {"open attribute", "<SENCE_CATEGORY VALUE=\"" + std::string(1 << 20, 'x'), -1},
        {"another root", "<SENCE/>", 1465},
    };
    for (const auto& oRow : oRows)
    {
        SCOPED_TRACE(oRow.pWhat);
        CKelvaneManager* pManager = Restart();
        PutFile(strPath, oRow.strContent);
        pManager->LoadConfigFile();
        EXPECT_TRUE(
            HasLine("ERROR", oRow.iCode,
                    oRow.iCode == -1 ? "Failed to load xml file:" + strPath : "Failed to load tag SENCE_CATEGORY"));
        EXPECT_TRUE(CManagerInside::Tuning().m_mapAlgoParam.empty());
        EXPECT_TRUE(CManagerInside::Tuning().m_vecVolumeRange.empty());
    }

    CKelvaneManager* pManager = Restart();
    DeleteFileA(strPath.c_str());
    MakeFolder(strPath); // a folder is no file, whatever its name
    pManager->LoadConfigFile();
    EXPECT_TRUE(HasLine("ERROR", -1, "Failed to load xml file:"));
}
} // namespace
