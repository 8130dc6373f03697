// What each refresh makes of its values, and what it says.
#include "tests/watchers/watcher_test.h"

#include <utility>

namespace
{
using RefreshTest = WatcherTest;

// What a step sets; the type REG_NONE deletes.
struct Value
{
    DWORD dwType;
    std::string strBytes;
};
Value Number(DWORD dwValue)
{
    return {REG_DWORD, std::string(reinterpret_cast<const char*>(&dwValue), sizeof(dwValue))};
}
Value Text(const char* pText)
{
    return {REG_SZ, std::string(pText) + '\0'};
}
const Value oGone = {REG_NONE, ""};

struct Step
{
    const char* pName;
    Value oValue;
    const char*
        pLines; // with "|" between them; null before the start. Reads that fail are "Fail:" and the value's name
};

// A watcher's key; the steps before its start and behind it.
const struct
{
    int iIndex;
    const char* pPath;
    std::vector<Step> vecBefore, vecSteps;
    std::vector<std::pair<CAudioInt CAudioStatus::*, int>> vecEnd; // what the record has then
} SCENARIO[] = {
    {0,
     AUDIO_MODE_PATH,
     {{APO_MULTI_RENDER, Number(3), nullptr}, {APO_SMART_MODE, Text("AudioMode:1"), nullptr}},
     {{APO_SMART_MODE, Text("AudioMode:3,PreTime:0,PostTime:0"),
       "APO mode change to AudioMode:3,PreTime:0,PostTime:0|multiRender: 3 change to 3|"
       "APO mode CaptureMode:0,RenderMode:2"},
      {APO_SMART_MODE, Text("PostTime:9,AudioMode:3,PreTime:00"),
       "APO mode change to PostTime:9,AudioMode:3,PreTime:00|multiRender: 3 change to 3|"
       "APO mode CaptureMode:3,RenderMode:3"},
      {APO_SMART_MODE, Text(""), "APO mode change to |multiRender: 3 change to 3|APO mode CaptureMode:0,RenderMode:0"},
      {APO_SMART_MODE, Text("AudioMode:4"),
       "APO mode change to AudioMode:4|multiRender: 3 change to 3|APO mode CaptureMode:4,RenderMode:4"},
      {APO_MULTI_RENDER, oGone,
       "APO mode change to AudioMode:4|Fail:MultiRender|"
       "CAudioREG::ReadRegValue(AUDIO_MODE_PATH, APO_MULTI_RENDER, dwMultiRenderValue)"},
      {APO_SMART_MODE, oGone, "Fail:SmartMode|CAudioREG::ReadRegValue(AUDIO_MODE_PATH, APO_SMART_MODE, strValue)"}},
     {{&CAudioStatus::m_iRenderMode, 4}, {&CAudioStatus::m_iCaptureMode, 4}, {&CAudioStatus::m_iMultiRender, 3}}},
    {3,
     AUDIO_BYPASS_PATH,
     {{AUDIO_KELVANE_STATUS, Number(1), nullptr}},
     {{LYRANA_STATUS, Number(1), "Kelvane Bypass Status 1 change to 1|Lyrana Bypass Status 0 change to 1"},
      {AUDIO_KELVANE_STATUS, oGone, "Fail:KelvaneStatus|Lyrana Bypass Status 1 change to 1"},
      {AUDIO_KELVANE_STATUS, Number(2), "Kelvane Bypass Status 1 change to 2|Lyrana Bypass Status 1 change to 1"},
      {AUDIO_VQE_STATUS, Number(3),
       "Kelvane Bypass Status 2 change to 2|Lyrana Bypass Status 1 change to 1|VQE Bypass Status 0 change to 3"}},
     {{&CAudioStatus::m_iKelvaneBypass, 2}, {&CAudioStatus::m_iLyranaBypass, 1}, {&CAudioStatus::m_iVQEBypass, 3}}},
    {4,
     DEVICE_CLSID_PATH,
     {},
     {{AUDIO_RENDER_CLSID, Text("R"),
       "Fail:CaptureCLSID|CAudioREG::ReadRegValue(DEVICE_CLSID_PATH, AUDIO_CAPTURE_CLSID, strCaptureValue)"},
      {AUDIO_CAPTURE_CLSID, Text("C"),
       "Default Capture Endpoint CLSID  change to C|Default Render Endpoint CLSID  change to R"},
      {AUDIO_CAPTURE_CLSID, Text("C"), ""}},
     {}},
    {2,
     AUDIO_SPEAKER_VOLUME_PATH,
     {{AUDIO_VOLUME_MUTE, Number(0), nullptr},
      {AUDIO_VOLUME_NUM, Number(50), nullptr},
      {AUDIO_VOLUME_DB, Text("-12.5"), nullptr}},
     {{AUDIO_VOLUME_NUM, Number(60), "Speaker Percent Volume(50) change to (60)"},
      {AUDIO_VOLUME_MUTE, Number(1), "Speaker Mute status(0) change to (1)"},
      {AUDIO_VOLUME_DB, Text("-12.50"), "Speaker DB Volume (-12.5) change to (-12.50)"},
      {AUDIO_VOLUME_DB, Text("loud"), "Speaker DB Volume (-12.5) change to (loud)"},
      {AUDIO_VOLUME_DB, Text("0"), ""},
      {AUDIO_VOLUME_NUM, oGone,
       "Fail:VolumeNum|CAudioREG::ReadRegValue(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_NUM, dwVolumeValue)|"
       "Speaker Percent Volume(60) change to (0)"},
      {AUDIO_VOLUME_MUTE, oGone,
       "Fail:VolumeMute|CAudioREG::ReadRegValue(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_MUTE, dwMuteValue)|"
       "Speaker Mute status(1) change to (0)|"
       "Fail:VolumeNum|CAudioREG::ReadRegValue(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_NUM, dwVolumeValue)"}},
     {{&CAudioStatus::m_iSpeakerMute, 0}, {&CAudioStatus::m_iSpeakerVolume, 0}}},
    {10,
     AUDIO_MICROPHONE_VOLUME_PATH,
     {{AUDIO_VOLUME_MUTE, Number(0), nullptr},
      {AUDIO_VOLUME_NUM, Number(50), nullptr},
      {AUDIO_VOLUME_DB, Text("-2"), nullptr}},
     {{AUDIO_VOLUME_MUTE, Number(1), "Microphone Mute status(0) change to (1)"},
      {AUDIO_VOLUME_MUTE, Number(0),
       "Microphone Mute status(1) change to (0)|Microphone Percent Volume(0) change to (50)|"
       "Microphone DB Volume (0) change to (-2)"},
      {AUDIO_VOLUME_NUM, oGone,
       "Fail:VolumeNum|CAudioREG::ReadRegValue(AUDIO_MICROPHONE_VOLUME_PATH, AUDIO_VOLUME_NUM, dwVolumeValue)|"
       "Microphone Percent Volume(50) change to (0)"}},
     {{&CAudioStatus::m_iMicrophoneMute, 0}, {&CAudioStatus::m_iMicrophoneVolume, 0}}},
    {1,
     AUDIO_REALTEK_HEADSET_PATH,
     {{APO_INTERNAL_SPEAKER, Number(0), nullptr}},
     {{APO_INTERNAL_SPEAKER, Number(1),
       "Fail:ExternalMicrophoneInput|"
       "CAudioREG::ReadRegValue(AUDIO_REALTEK_HEADSET_PATH, APO_EXTERNAL_MICROPHONE, dwMicroPhoneValue)"},
      {APO_EXTERNAL_MICROPHONE, Number(2), "HeadSet Status:0,ExternalMic Status: 1"},
      {APO_INTERNAL_SPEAKER, Number(0), "HeadSet Status:1,ExternalMic Status: 1"},
      {APO_INTERNAL_SPEAKER, oGone,
       "Fail:InternalSpeakerOutput|"
       "CAudioREG::ReadRegValue(AUDIO_REALTEK_HEADSET_PATH, APO_INTERNAL_SPEAKER, dwSpeakerValue)"}},
     {{&CAudioStatus::m_iHeadSetRender, 1},
      {&CAudioStatus::m_iHeadSetCapture, 1},
      {&CAudioStatus::m_iExternalMICStatus, 1}}},
    {8, // not needed while the other driver's value is there
     AUDIO_HEADSET_PATH,
     {{AUDIO_HEADSET_RENDER, Number(1), nullptr}, {AUDIO_HEADSET_STATUS, Number(1), nullptr}},
     {{AUDIO_HEADSET_CAPTURE, Number(2), "Audio Headset Render Status:1,Capture Status:1,Headset Status:1"},
      {AUDIO_HEADSET_RENDER, oGone,
       "Fail:HeadsetRender|CAudioREG::ReadRegValue(AUDIO_HEADSET_PATH, AUDIO_HEADSET_RENDER, dwRenderValue)|"
       "Audio Headset Render Status:0,Capture Status:1,Headset Status:1"},
      {AUDIO_HEADSET_RENDER, Number(2), "Audio Headset Render Status:1,Capture Status:1,Headset Status:1"},
      {AUDIO_HEADSET_CAPTURE, oGone,
       "Fail:HeadsetCapture|CAudioREG::ReadRegValue(AUDIO_HEADSET_PATH, AUDIO_HEADSET_CAPTURE, dwCaptureValue)|"
       "Audio Headset Render Status:1,Capture Status:0,Headset Status:1"},
      {AUDIO_HEADSET_CAPTURE, Number(0), "Audio Headset Render Status:1,Capture Status:0,Headset Status:1"},
      {AUDIO_HEADSET_STATUS, oGone,
       "Fail:HeadsetStatus|CAudioREG::ReadRegValue(AUDIO_HEADSET_PATH, AUDIO_HEADSET_STATUS, dwHeadsetValue)|"
       "Audio Headset Render Status:1,Capture Status:0,Headset Status:0"}},
     {{&CAudioStatus::m_iHeadSetRender, 1},
      {&CAudioStatus::m_iHeadSetCapture, 0},
      {&CAudioStatus::m_iHeadSetStatus, 0}}},
    {12,
     AUDIO_ZVSOUND_PATH,
     {{AUDIO_ZVSOUND_STATUS, Number(1), nullptr},
      {AUDIO_ZVSOUND_SPEAKER_MODE, Number(2), nullptr},
      {AUDIO_ZVSOUND_HEADPHONE_MODE, Number(2), nullptr},
      {AUDIO_ZVSOUND_SHARE_STATUS, Number(2), nullptr},
      {AUDIO_ZVSOUND_MICROPHONE_MODE, Number(2), nullptr}},
     {{AUDIO_ZVSOUND_STATUS, Number(1), ""},
      {AUDIO_ZVSOUND_MICROPHONE_MODE, Number(5), "ZvSound Micophone Status 2 change to 5"},
      {AUDIO_ZVSOUND_MICROPHONE_MODE, Number(1), "ZvSound Micophone Status 5 change to 1"},
      {AUDIO_ZVSOUND_SHARE_STATUS, oGone,
       "Fail:ShareVoiceStatus|CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_SHARE_STATUS, dwShareValue)|"
       "ZvSound Share Voice Status 2 change to 0"},
      {AUDIO_ZVSOUND_SHARE_STATUS, Number(3), "ZvSound Share Voice Status 0 change to 3"},
      {AUDIO_ZVSOUND_HEADPHONE_MODE, oGone,
       "Fail:HeadphoneMode|CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_HEADPHONE_MODE, dwHeadphoneMode)|"
       "ZvSound Headphone mode 2 change to 0"},
      {AUDIO_ZVSOUND_HEADPHONE_MODE, Number(4), "ZvSound Headphone mode 0 change to 4"},
      {AUDIO_ZVSOUND_MICROPHONE_MODE, Number(4), "ZvSound Micophone Status 1 change to 4"},
      {AUDIO_ZVSOUND_MICROPHONE_MODE, oGone,
       "Fail:MicrophoneMode|CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_MICROPHONE_MODE, "
       "dwMicrophoneValue)|ZvSound Micophone Status 4 change to 0"}},
     {{&CAudioStatus::m_iLastMicrophoneMode, 1}, // 4 and above are no ordinary modes
      {&CAudioStatus::m_iShareVoiceStatus, 3},
      {&CAudioStatus::m_iHeadphoneMode, 4},
      {&CAudioStatus::m_iSpeakerMode, 2}}},
};

TEST_F(RefreshTest, EachStepSaysWhatItRead)
{
    StartLog();
    for (const auto& oScenario : SCENARIO)
    {
        const std::string strFailure = std::string("Fail to Read Reg Value KeyPath:") + oScenario.pPath + "\\";
        CAudioREG::CreateRegKey(oScenario.pPath);
        for (const Step& oStep : oScenario.vecBefore)
            Set(oScenario.pPath, oStep.pName, oStep.oValue.dwType, oStep.oValue.strBytes);
        Monitor().StartMonitor(oScenario.iIndex);
        const size_t iStartLines = TakeLog().size();
        EXPECT_TRUE(oScenario.iIndex != 12 || iStartLines == 1) << "the sound effects' start is no change";
        for (const Step& oStep : oScenario.vecSteps)
        {
            if (oStep.oValue.dwType == REG_NONE)
                Delete(oScenario.pPath, oStep.pName);
            else
                Set(oScenario.pPath, oStep.pName, oStep.oValue.dwType, oStep.oValue.strBytes);
            std::string strLines;
            for (const std::string& strLine : TakeLog())
            {
                if (strLine.rfind("RegQueryValueExA(", 0) == 0)
                    continue; // the registry layer's second line
                strLines += (strLines.empty() ? "" : "|") +
                            (strLine.rfind(strFailure, 0) == 0 ? "Fail:" + strLine.substr(strFailure.size()) : strLine);
            }
            EXPECT_EQ(strLines, oStep.pLines);
        }
        for (size_t i = 0; i < oScenario.vecEnd.size(); ++i)
            EXPECT_EQ(Status().*oScenario.vecEnd[i].first, oScenario.vecEnd[i].second) << oScenario.pPath << " " << i;
    }
    EXPECT_EQ(Monitor().GetCaptureCLSID() + Monitor().GetRenderCLSID(), "CR");
    for (const auto& [pLine, pFunction] : {std::pair<const char*, const char*>{"multiRender: ", "RefreshAPPMode"},
                                           {"Speaker Percent Volume(", "RefreshSpeakerVolum"},
                                           {"Speaker DB Volume (", "RefreshSpeakerVolum"},
                                           {"Lyrana Bypass Status ", "RefreshBypassStatus"},
                                           {"Default Render Endpoint CLSID ", "RefreshDeviceCLSID"},
                                           {"Fail to Read Reg Value KeyPath:", "ReadRegValue"}})
        EXPECT_EQ(FindLog(pLine).at(0).strFunction, pFunction) << pLine;
}

// Of the instances the first that has the value, of its bytes the first.
TEST_F(RefreshTest, ExternalMicrophone)
{
    const std::string strClass = std::string(AUDIO_MEDIA_CLASS_PATH) + "\\";
    CAudioREG::CreateRegKey(strClass + "0000\\Settings\\OEM");
    StartLog();
    Monitor().StartMonitor(11);
    EXPECT_EQ(CountLog("Undefine RegRoot"), 0U) << "followed, although no instance has the value";
    CAudioMonitor::DeleteInstance();
    Set(strClass + "0002\\Settings\\OEM", SENARY_EXTERNAL_MIC, REG_BINARY, "\x0A");
    const std::string strPath = strClass + "0001\\Settings\\OEM";
    Set(strPath, SENARY_EXTERNAL_MIC, REG_BINARY, "");
    Monitor().StartMonitor(11);
    for (const std::string& strBytes :
         {std::string(), std::string("\x0A\0", 2), std::string("\0\x0A", 2), std::string("\x0A")})
    {
        Set(strPath, SENARY_EXTERNAL_MIC, REG_BINARY, strBytes);
        EXPECT_EQ(Status().m_iExternalMICStatus, !strBytes.empty() && strBytes[0] == 0x0A ? 1 : 0);
    }
}

TEST_F(RefreshTest, ProcessorEvent)
{
    StartLog(AUDIO_LEVEL_ERROR);
    CAudioMonitor::SetGetCPUStatusEvent();
    EXPECT_EQ(CountLog("CAudioREG::ReadRegValue(CPU_INFO_PATH, CPU_NAME_STRING, strCPUName)"), 1U);
    for (const char* pName : {"An AMD one", "amd Another"})
    {
        SetRegistry(CPU_INFO_PATH, CPU_NAME_STRING, std::string(pName));
        CAudioMonitor::SetGetCPUStatusEvent();
        EXPECT_EQ(CountLog("OpenEvent for 'Global\\MonitorCPUStatus' error"), pName[0] == 'a' ? 1U : 0U);
        EXPECT_EQ(CountLog("SetEvent(hEvent)"), pName[0] == 'a' ? 1U : 0U);
    }
    const HANDLE hEvent = CreateEventW(nullptr, TRUE, FALSE, L"Global\\MonitorCPUStatus");
    CAudioMonitor::SetGetCPUStatusEvent();
    EXPECT_EQ(WaitForSingleObject(hEvent, 0), static_cast<DWORD>(WAIT_OBJECT_0));
    CloseHandle(hEvent);
    EXPECT_EQ(CountLog("SetEvent(hEvent)"), 1U);
}
} // namespace
