// The fourteen watchers: what each follows, how they start without their keys, what stops them.
#include "tests/watchers/watcher_test.h"

#include <set>

namespace
{
const std::string strMicrophoneInstance = std::string(AUDIO_MEDIA_CLASS_PATH) + "\\0001\\" + AUDIO_OEM_SETTINGS_KEY;
const std::string strText1 = std::string("1\0", 2);
const std::string strNumber7 = std::string("\7\0\0\0", 4);

// A value of each watcher's key, and the line that its refresh writes.
const struct
{
    int iIndex;
    std::string strPath;
    const char* pName;
    DWORD dwType;
    std::string strBytes;
    const char* pLine;
} WATCHED[] = {
    {0, AUDIO_MODE_PATH, APO_SMART_MODE, REG_SZ, strText1, "APO mode change to 1"},
    {2, AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_NUM, REG_DWORD, strNumber7, "Speaker Percent Volume(0) change to (7)"},
    {3, AUDIO_BYPASS_PATH, AUDIO_KELVANE_STATUS, REG_DWORD, strNumber7, "Kelvane Bypass Status 0 change to 7"},
    {4, DEVICE_CLSID_PATH, AUDIO_CAPTURE_CLSID, REG_SZ, strText1, "Default Capture Endpoint CLSID  change to 1"},
    {5, LYRANA_HEADSET_TYPE_PATH, LYRANA_HEADSET_TYPE, REG_DWORD, strNumber7, "Headset Type 0 change to 7"},
    {6, LYRANA_HEADSET_MODE_PATH, LYRANA_HEADSET_MODE, REG_DWORD, strNumber7, "Headset mode 0 change to 7"},
    {7, LYRANA_MODE_PATH, LYRANA_APO_MODE, REG_DWORD, strNumber7, "Lyrana mode 2 change to 7"},
    {8, AUDIO_HEADSET_PATH, AUDIO_HEADSET_STATUS, REG_DWORD, strNumber7,
     "Audio Headset Render Status:0,Capture Status:0,Headset Status:1"},
    {9, VQE_SILENT_SPACE_PATH, VQE_SILENT_SPACE_STATUS, REG_DWORD, strNumber7, "Silent Space Status 0 change to 7"},
    {10, AUDIO_MICROPHONE_VOLUME_PATH, AUDIO_VOLUME_NUM, REG_DWORD, strNumber7,
     "Microphone Percent Volume(0) change to (7)"},
    {11, strMicrophoneInstance, SENARY_EXTERNAL_MIC, REG_BINARY, "\x0A", "External MIC Binary value:0A"},
    {12, AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_SPEAKER_MODE, REG_DWORD, strNumber7, "ZvSound Speaker mode 0 change to 7"},
    {13, ZV_SMART_AUDIO_MODE_LOCAL_PATH, SMART_AUDIO_MODE, REG_DWORD, strNumber7, "ZVSmartAudio mode 0 change to 7"},
    // Last: its key keeps the eighth away.
    {1, AUDIO_REALTEK_HEADSET_PATH, APO_EXTERNAL_MICROPHONE, REG_DWORD, strNumber7,
     "HeadSet Status:1,ExternalMic Status: 1"},
};

class WatchTest : public WatcherTest
{
protected:
    // The keys, and the one value without which a watcher follows nothing.
    static void MakeKeys(bool bRealtek)
    {
        for (const auto& oWatched : WATCHED)
        {
            if (oWatched.iIndex != 1 || bRealtek)
                CAudioREG::CreateRegKey(oWatched.strPath);
        }
        Set(strMicrophoneInstance, SENARY_EXTERNAL_MIC, REG_BINARY, "");
    }

    // Starts them all, and two that don't exist.
    static void StartAll()
    {
        Monitor().Initialize(std::vector<INT32>(16, 1));
        WaitForWorkers();
    }
};

TEST_F(WatchTest, AChangeWakesItsWatcherAlone)
{
    StartLog();
    MakeKeys(false);
    StartAll();
    for (const auto& oWatched : WATCHED)
    {
        if (oWatched.iIndex == 1)
        {
            CAudioMonitor::DeleteInstance();
            SetRegistry(oWatched.strPath, APO_INTERNAL_SPEAKER, 0);
            StartAll();
            EXPECT_EQ(CountLog("Realtek InternalSpeakerOutput exist!"), 1U);
            SetRegistry(AUDIO_HEADSET_PATH, AUDIO_HEADSET_STATUS, 1);
            WaitForWorkers();
            EXPECT_EQ(Status().m_iHeadSetStatus, 0);
        }
        const size_t iBefore = ReadLog().size();
        Set(oWatched.strPath, oWatched.pName, oWatched.dwType, oWatched.strBytes);
        std::set<unsigned long> oThreads;
        const std::vector<LogLine> vecLog = ReadLog();
        bool bFound = false;
        for (size_t i = iBefore; i < vecLog.size(); ++i)
        {
            oThreads.insert(vecLog[i].ulThread);
            bFound = bFound || vecLog[i].strMessage == oWatched.pLine;
        }
        EXPECT_TRUE(bFound) << oWatched.pLine;
        EXPECT_EQ(oThreads.size(), 1U) << oWatched.pLine;
    }
}

TEST_F(WatchTest, WithoutItsKeyOrEventAWatcherEndsForGood)
{
    StartLog();
    StartAll();
    EXPECT_EQ(CountLog("Fail to Regist Notify Change KeyPath:"), 13U);
    EXPECT_EQ(CountLog(std::string("Not exist sub Key in ") + AUDIO_MEDIA_CLASS_PATH), 1U);
    EXPECT_EQ(CountLog("Undefine RegRoot"), 0U);
    // Realtek and bypass have no line of their own.
    const std::vector<LogLine> vecStart = FindLog("CAudioREG::RegNotifyStart(");
    EXPECT_EQ(vecStart.size(), 11U);
    std::set<std::string> oText;
    for (const LogLine& oLine : vecStart)
    {
        EXPECT_TRUE(oLine.strLevel == "ERROR" && oLine.iErrorCode == ERROR_FILE_NOT_FOUND) << oLine.strMessage;
        EXPECT_EQ(oLine.strFunction, "StartWatch");
        oText.insert(oLine.strMessage);
    }
    EXPECT_EQ(oText.size(), 11U);
    EXPECT_EQ(oText.count("CAudioREG::RegNotifyStart(AUDIO_MODE_PATH, hKey, pThis->m_hModeEvent)"), 1U);

    MakeKeys(true);
    Set(AUDIO_BYPASS_PATH, AUDIO_KELVANE_STATUS, REG_DWORD, strNumber7);
    EXPECT_EQ(Status().m_iKelvaneBypass, 0) << "a watcher that ended came back";
    CAudioMonitor::DeleteInstance();

    machine::FailNext("CreateEventW", 8, -1);
    StartAll();
    machine::ClearFailures();
    EXPECT_EQ(CountLog("pThis->m_hModeEvent"), 2U);
    EXPECT_EQ(CountLog("pThis->m_h"), 11U + 14U);
}

// The next change comes while the watcher reads, or as soon as the last one is in the record.
TEST_F(WatchTest, NoChangeIsMissed)
{
    SetRegistry(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_NUM, 1);
    machine::FailNext("WaitForSingleObject", 6, -1); // a wait that fails is begun again
    Monitor().StartMonitor(2);
    EXPECT_TRUE(WaitFor([] { return Status().m_iSpeakerVolume == 1; }));
    machine::ClearFailures();
    WaitForWorkers();
    for (int iRound = 1; iRound <= 300; ++iRound)
    {
        SetRegistry(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_NUM, static_cast<DWORD>(2 * iRound));
        for (int iSpin = 0; iRound % 2 == 0 && iSpin < 1000000 && Status().m_iSpeakerVolume != 2 * iRound; ++iSpin)
            ;
        SetRegistry(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_NUM, static_cast<DWORD>(2 * iRound + 1));
        ASSERT_TRUE(WaitFor([&] { return Status().m_iSpeakerVolume == 2 * iRound + 1; })) << iRound;
    }
}

// A stop may meet the workers anywhere in their start, or at rest.
TEST_F(WatchTest, StopsLeaveNothing)
{
    MakeKeys(false);
    const size_t iResources = CountResources();
    for (int iRound = 0; iRound < 100; ++iRound)
    {
        Monitor().Initialize(std::vector<INT32>(14, 1));
        if (iRound % 10 == 0)
            WaitForWorkers();
        CAudioMonitor::DeleteInstance();
        ASSERT_EQ(CountResources(), iResources);
    }
}
} // namespace
