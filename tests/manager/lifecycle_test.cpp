// The manager's life: how the protection library loads or fails, the default machine's start, the singleton.
#include "audioapi/audio_api_string.h"
#include "tests/manager/manager_test.h"

namespace
{
using ManagerLifeTest = ManagerTest;

// What stands at the library's path: a file of this host, a text, or nothing.
struct LibraryRow
{
    const char* pFile;
    const char* pText;
    BOOL bLoaded;
    const char* pVersion;
    INT32 iCode;           // of the failure, 0 for none
    const char* pMessages; // of the failure's own lines, separated by "|"
    bool bOptimizeFound;   // the first export that the half library lacks
};

TEST_F(ManagerLifeTest, LoadsTheLibraryWholeOrTellsWhy)
{
    const LibraryRow oRows[] = {
        {KELVANE_LIBRARY_FILE, nullptr, TRUE, "1.0.0", 0, "", true},
        {nullptr, nullptr, FALSE, "", 4301, "m_hDll", false},
        {nullptr, "no library", FALSE, "", 4301, "m_hDll", false},
        {FAKE_HALF_FILE, nullptr, FALSE, "7.8", 1626, "m_fAudioKelvaneIvOptimize", false},
        {FAKE_VERSION_FILE, nullptr, FALSE, "", 7, "m_fAudioKelvaneGetVersion(&sVersion)|AudioKelvaneGetVersion()",
         true},
        {FAKE_LONG_FILE, nullptr, TRUE, "", 0, "", true},
    };
    for (const LibraryRow& oRow : oRows)
    {
        SCOPED_TRACE(oRow.pFile != nullptr ? oRow.pFile : "no library");
        CKelvaneManager* pManager = Restart();
        DeleteFileA(AUDIO_KELVANE_DLL_PATH);
        if (oRow.pFile != nullptr)
            PutFile(AUDIO_KELVANE_DLL_PATH, HostFile(oRow.pFile));
        else if (oRow.pText != nullptr)
            PutFile(AUDIO_KELVANE_DLL_PATH, oRow.pText);

        pManager->LoadProcessDll();
        EXPECT_EQ(pManager->GetLoadDLLStatus(), oRow.bLoaded);
        EXPECT_EQ(CManagerInside::AlgoVersion(), oRow.pVersion);
        EXPECT_EQ(CManagerInside::EntryPoints().m_fAudioKelvaneIvOptimize != nullptr, oRow.bOptimizeFound);
        EXPECT_EQ(HasLine("ERROR", oRow.iCode, "3843011 KelvAPO Load DLL fail!"), !oRow.bLoaded);
        for (const std::string& strMessage : CAudioSTR::Split(oRow.pMessages, "|"))
            EXPECT_TRUE(HasLine("ERROR", oRow.iCode, strMessage)) << strMessage;
        for (const LogLine& oLine : FindLog("m_fAudioKelvaneIvOptimize"))
            EXPECT_EQ(oLine.strFunction, "FindExports");
    }
}

TEST_F(ManagerLifeTest, BringsUpTheDefaultMachineInOrder)
{
    const std::string strTuning = std::string(AUDIO_DRIVER_DIR) + "audio_kelvane_params_default.xml";
    PutFile(AUDIO_KELVANE_DLL_PATH, HostFile(KELVANE_LIBRARY_FILE));
    PutFile(strTuning, HostFile(KELVANE_TUNING_FILE));
    LetTimePass(); // the newest is for another library: this one's version decides
    const std::string strOther =
        "<SENCE_CATEGORY><PLATFROM_VERSION VALUE=\"9\"/><PARA_VERSION PARA=\"9\"/><VENDOR/></SENCE_CATEGORY>";
    PutFile(std::string(AUDIO_DRIVER_DIR) + "audio_kelvane_params_other.xml", strOther);
    for (const char* pName :
         {AUDIO_DEBUG_LEVEL, AUDIO_DEBUG_MODE, AUDIO_DEBUG_SIZE, AUDIO_DEBUG_NUM, AUDIO_EVENT_LEVEL})
        SetRegistry(AUDIO_DEBUG_PATH, pName, 1);
    MakeFolder(LogFolder());
    CKelvaneManager* pManager = CKelvaneManager::Instance();
    pManager->Initialize(nullptr);
    EXPECT_TRUE(pManager->GetLoadDLLStatus());
    EXPECT_TRUE(HasLine("INFO", 0, "Fuzzy Match to File:" + strTuning));
    EXPECT_EQ(CManagerInside::Tuning().m_mapAlgoParam.size(), 12u);
    EXPECT_EQ(CManagerInside::Tuning().m_vecVolumeRange.size(), 6u);
    for (const char* pGain : {"3841117 Senary Gain is Disable!", "3841116 Everest Gain is Disable!"})
        EXPECT_TRUE(HasLine("INFO", 0, pGain));
    for (const auto& [strKey, pParam] : CManagerInside::Tuning().m_mapAlgoParam)
    {
        EXPECT_EQ(pParam->sChannelNum, 2) << strKey;
        EXPECT_EQ(pParam->sPOWTargetGain[7], strKey == "30080" ? 120 : strKey == "30060" ? 110 : 100) << strKey;
        // Both limits and margins in their places only if all words were told from the doubles.
        EXPECT_EQ(pParam->sLSMTvcCoef0[104], strKey[0] == '4' ? 90 : 105) << strKey;
        EXPECT_EQ(pParam->sLSMTvcCoef0[159], 2) << strKey;
    }
    // Library and tuning file give no cause for complaint; registry and devices are bare here.
    for (const LogLine& oLine : ReadLog())
    {
        const bool bManager =
            oLine.strFile.rfind("apo_kelvane_manager", 0) == 0 || oLine.strFile.rfind("apo_kelvane_tuning", 0) == 0;
        EXPECT_FALSE(bManager && (oLine.strLevel == "WARN" || oLine.strLevel == "ERROR")) << oLine.strMessage;
    }
}

TEST_F(ManagerLifeTest, IsOneObjectForManyThreads)
{
    for (int iRound = 0; iRound < 200; ++iRound)
    {
        CKelvaneManager* pSeen[4] = {};
        std::vector<std::thread> oThreads;
        for (CKelvaneManager*& pManager : pSeen)
            oThreads.emplace_back([&pManager] { pManager = CKelvaneManager::Instance(); });
        for (std::thread& oThread : oThreads)
            oThread.join();
        for (const CKelvaneManager* pManager : pSeen)
            ASSERT_EQ(pManager, CKelvaneManager::Instance());
        CKelvaneManager::DeleteInstance();
    }
}
} // namespace
