// The object outside the periodic call: init records, formats.
#include "tests/object/object_fixture.h"

#include <cstring>

namespace
{
using LifecycleTest = ObjectTest;

TEST_F(LifecycleTest, InitializeTellsTheRecordsBySizeAndReportsTheMode)
{
    const struct
    {
        UINT32 cbDataSize;
        bool bData;
        GUID oMode; // in the record
        HRESULT hResult;
        const char* pLine; // that the case ends in
    } aCases[] = {
        {88, true, AUDIO_SIGNALPROCESSINGMODE_RAW, S_OK, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_RAW"},
        {88, true, IID_IUnknown, S_OK, "APO Init AudioMode unknow!"},
        {56, true, {}, S_OK, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_DEFAULT"},
        {0, false, {}, E_INVALIDARG, "Invalid cbDataSize Parameter!"},
        {88, false, {}, E_INVALIDARG, "((pbyData == nullptr) && (cbDataSize) != 0)"},
        {0, true, {}, E_INVALIDARG, "((pbyData != nullptr) && (cbDataSize == 0))"},
    };
    for (const auto& oCase : aCases)
    {
        SCOPED_TRACE(oCase.pLine);
        const ApoObject<CTestAPO<CKelvaneEFX>> oObject(new CTestAPO<CKelvaneEFX>);
        const size_t iLines = CountLog(oCase.pLine);
        BYTE aData[88] = {};
        std::memcpy(aData + 64, &oCase.oMode, 16);
        EXPECT_EQ(oObject->Initialize(oCase.cbDataSize, oCase.bData ? aData : nullptr), oCase.hResult);
        EXPECT_EQ(CountLog(oCase.pLine), iLines + 1);
        EXPECT_TRUE(oObject->m_oAudioModeGUID ==
                    (oCase.cbDataSize == 56 ? AUDIO_SIGNALPROCESSINGMODE_DEFAULT : oCase.oMode));
        // A refused record leaves the object uninitialised, a taken one bars the next.
        EXPECT_EQ(oObject->Initialize(56, aData), FAILED(oCase.hResult) ? S_OK : APOERR_ALREADY_INITIALIZED);
    }
    EXPECT_EQ(CountLog("CBaseAudioProcessingObject::Initialize(cbDataSize, pbyData)"), 3U);
}

TEST_F(LifecycleTest, LockHandsFormatAndSystemToTheEngine)
{
    Status().m_iHeadSetStatus = 1;
    Status().m_iSpeakerVolume = 33;
    Status().m_iSpeakerMode = 5;
    Status().m_iMicrophoneMode = 7;
    Status().m_iHeadphoneMode = 4;
    Status().m_iHeadSetType = 3;
    Status().m_iLyranaMode = 1;
    const auto oObject = OpenObject(new CTestAPO<CKelvaneEFX>, 6, 44100);
    CBaseEngine& oEngine = oObject->Engine();
    EXPECT_TRUE(oEngine.GetAudioModeGUID() == AUDIO_SIGNALPROCESSINGMODE_DEFAULT);
    EXPECT_EQ(oEngine.GetSampleRate(), 44100);
    EXPECT_EQ(oEngine.GetInChannelCount(), 6);
    EXPECT_EQ(oEngine.GetOutChannelCount(), 6);
    EXPECT_EQ(oEngine.GetHeadsetStatus(0), 1);
    EXPECT_EQ(oEngine.GetSpeakerVolume(0), 33);
    EXPECT_EQ(oEngine.GetSpeakerMode(0), 5);
    EXPECT_EQ(oEngine.GetMicrophoneMode(0), 7);
    EXPECT_EQ(oEngine.GetHeadphoneMode(0), 4);
    EXPECT_EQ(oEngine.GetHeadsetType(0), 3);
    EXPECT_EQ(oEngine.GetLyranaMode(0), 1);
    EXPECT_EQ(CountLog("t format in LockForProcess:{6,4,32,44100,3,{00000003-0000-0010-8000-00AA00389B71}}"), 2U);
    EXPECT_EQ(CountLog("3841082 [POST_EFX]AuidoMode=0,HeadsetStatus=1"), 1U);

    EXPECT_EQ(oObject->UnlockForProcess(), S_OK);
    EXPECT_EQ(CFormatPair(1, 48000).Lock(*oObject), S_OK);
    EXPECT_EQ(oEngine.GetSampleRate(), 48000);
    EXPECT_EQ(oEngine.GetInChannelCount(), 1);
    EXPECT_EQ(oObject->UnlockForProcess(), S_OK);
    oObject->m_pEngine.reset();
    EXPECT_EQ(CFormatPair(2, 48000).Lock(*oObject), 12);
}

} // namespace
