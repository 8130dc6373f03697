// How a tuning file's brace list becomes a record, and which record a key gives.
#include "tests/manager/manager_test.h"

namespace
{
constexpr char CONTROL_TEXT[] = "sscanf_s(oVctPara[i].c_str(), \"0x%I64x\", &m_iAlgoCtrlParam[i])";
constexpr char SHORT_TEXT[] = "sscanf_s(oVctPara[i].c_str(), \"0x%hx\", &g_pShortData[iShortCount++])";
constexpr char EIGHT[] = "0x1,0x2,0x3,0x4,0x5,0x6,0x7,0x8";

class ParameterSetTest : public ManagerTest
{
protected:
    // A file of sets, each a key and the text of its list.
    static void LoadSets(const std::vector<std::pair<std::string, std::string>>& oSets)
    {
        std::string strXml = "<SENCE_CATEGORY><VENDOR>";
        for (const auto& [strKey, strValue] : oSets)
            strXml += "<NV ID=\"" + strKey + "\" VALUE=\"" + strValue + "\"/>";
        PutFile(std::string(AUDIO_DRIVER_DIR) + "audio_kelvane_params_1.xml",
                strXml + "<NV ID=\"none\"/><nv ID=\"small\" VALUE=\"{0x1}\"/></VENDOR></SENCE_CATEGORY>");
        CKelvaneManager::Instance()->LoadConfigFile();
    }
    static std::string Repeat(const std::string& strToken, int iCount)
    {
        std::string strText;
        for (int i = 0; i < iCount; ++i)
            strText += "," + strToken;
        return strText;
    }
    // Word iWord of the short region.
    static int Word(const KelvaneStruParam& stParam, size_t iWord)
    {
        INT16 sWords[KELVANE_SHORT_COUNT];
        memcpy(sWords, &stParam, sizeof(sWords));
        return sWords[iWord];
    }
};

struct ParseRow
{
    const char* pWhat;
    std::string strValue;
    std::vector<INT64> oControl; // the first control words
    std::vector<int> oWords;     // the first words
    std::vector<double> oDoubles;
    size_t iControlErrors, iShortErrors;
};

TEST_F(ParameterSetTest, ParsesTheThreeRuns)
{
    const std::string strEight = std::string("{") + EIGHT;
    const ParseRow oRows[] = {
        {"all runs",
         strEight + ",0x1234,0xffff,0x8000,0x7,0.50000,2,-3.5e2}",
         {1, 2, 3, 4, 5, 6, 7, 8},
         {0x1234, -1, -32768, 7, 0},
         {0.5, 2, -350, 0},
         0,
         0},
        {"fewer than eight", "{0x9,0xffffffffffffffff}", {9, -1, 0}, {0}, {0}, 0, 0},
        {"seven characters are a double", strEight + ",0x11,0x12345,0x6}", {1}, {0x11, 0}, {0x12345, 6, 0}, 0, 0},
        {"a short double is a bad word", strEight + ",0x1,0.5,0x2}", {1}, {1, 0, 2}, {0}, 0, 1},
        {"bad control words stay", "{0x1,two,3,0x4}", {1, 0, 0, 4}, {0}, {0}, 2, 0},
        {"white space, no braces", "\n 0x1 ,\t0x2\r\n,,0x3,0x4,0x5,0x6,0x7,0x8,\n0x9 ", {1, 2, 3}, {9, 0}, {0}, 0, 0},
        {"only commas", "{,,,}", {0}, {0}, {0}, 0, 0},
    };
    for (const ParseRow& oRow : oRows)
    {
        SCOPED_TRACE(oRow.pWhat);
        CKelvaneManager* pManager = Restart();
        LoadSets({{"30000", oRow.strValue}});
        const KelvaneStruParam* pParam = pManager->GetAlgorithmStruct("30000");
        ASSERT_NE(pParam, nullptr);
        for (size_t i = 0; i < oRow.oControl.size(); ++i)
            EXPECT_EQ(pManager->GetAlgoCtrlParam(i), oRow.oControl[i]) << i;
        for (size_t i = 0; i < oRow.oWords.size(); ++i)
            EXPECT_EQ(Word(*pParam, i), oRow.oWords[i]) << i;
        for (size_t i = 0; i < oRow.oDoubles.size(); ++i)
            EXPECT_EQ(pParam->sLSMTvcCoef0[i], oRow.oDoubles[i]) << i;
        EXPECT_EQ(CountLog(CONTROL_TEXT), oRow.iControlErrors);
        EXPECT_EQ(CountLog(SHORT_TEXT), oRow.iShortErrors);
        EXPECT_EQ(CountLog("ignored:"), 0u);
    }
}

TEST_F(ParameterSetTest, KeepsToTheRecordsCapacities)
{
    const struct
    {
        int iShorts;
        int iDoubles;
        int iIgnored;
    } oRows[] = {{6072, 201, 0}, {6073, 0, 1}, {6072, 202, 1}, {9000, 30000, 32727}};
    for (const auto& oRow : oRows)
    {
        SCOPED_TRACE(std::to_string(oRow.iShorts) + " " + std::to_string(oRow.iDoubles));
        CKelvaneManager* pManager = Restart();
        LoadSets({{"30000", EIGHT + Repeat("0x7f", oRow.iShorts) + Repeat("1.50000", oRow.iDoubles)}});
        const KelvaneStruParam* pParam = pManager->GetAlgorithmStruct("30000");
        ASSERT_NE(pParam, nullptr);
        EXPECT_EQ(Word(*pParam, KELVANE_SHORT_COUNT - 1), 0x7f);
        EXPECT_EQ(pParam->sLSMTvcCoef0[0], oRow.iDoubles != 0 ? 1.5 : 0);
        EXPECT_EQ(pParam->sLSMTvcCoef0[KELVANE_DOUBLE_COUNT - 1], oRow.iDoubles != 0 ? 1.5 : 0);
        EXPECT_EQ(
            HasLine("WARN", 0,
                    "Parameter strKey=30000 has more tokens than its record, ignored:" + std::to_string(oRow.iIgnored)),
            oRow.iIgnored != 0);
    }
}

TEST_F(ParameterSetTest, FindsRecordsByKeyWithTheFirstAsDefault)
{
    CKelvaneManager* pManager = Restart();
    const std::string strDiv = std::string(EIGHT) + Repeat("0x0", 19);
    LoadSets({{"9", strDiv + ",0x1"},
              {"30000", strDiv + ",0x5"},
              {"30000", "0x1,0x2,0x3" + Repeat("0x9", 5) + Repeat("0x0", 19) + ",0x2"},
              {"40000", ""}});
    EXPECT_EQ(CManagerInside::Tuning().m_mapAlgoParam.size(), 2u);
    EXPECT_EQ(pManager->GetAlgoCtrlParam(7), 9); // of the last set that had the word
    EXPECT_EQ(pManager->GetAlgorithmStruct("9")->sDIVMode, 1);
    EXPECT_EQ(pManager->GetAlgorithmStruct("30000")->sDIVMode, 2); // the later of two
    EXPECT_EQ(CManagerInside::Tuning().m_iDIVMode, 2);
    EXPECT_TRUE(HasLine("INFO", 0, "Get Parameter from strKey=9"));
    for (const char* pKey : {"40000", "none", "small", ""})
    {
        EXPECT_EQ(pManager->GetAlgorithmStruct(pKey), pManager->GetAlgorithmStruct("30000"));
        EXPECT_TRUE(HasLine("WARN", 0,
                            std::string("3841113 Can not find Parameter from strKey=") + pKey +
                                ", Use Default first Parameter strKey=30000"));
    }

    pManager = Restart();
    EXPECT_EQ(pManager->GetAlgorithmStruct("30000"), nullptr);
    EXPECT_TRUE(HasLine("ERROR", 13, "3841114 Parameter list is empty!"));
    LoadSets({{"1", strDiv + ",0x1"}});
    EXPECT_EQ(CManagerInside::Tuning().m_iDIVMode, 1);
    EXPECT_TRUE(HasLine("INFO", 0, "DIVMode is Open!"));
}
} // namespace
