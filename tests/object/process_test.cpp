// The decision taken on every period, and what each path does with the audio.
#include "tests/object/object_fixture.h"

namespace
{
class ProcessTest : public ObjectTest
{
protected:
    void SetUp() override
    {
        ObjectTest::SetUp();
        CManagerInside::LoadDLL() = TRUE;
        Open(2, 48000);
    }
    void TearDown() override
    {
        m_pObject.reset();
        ObjectTest::TearDown();
    }

    // A fresh object, locked with the format.
    void Open(DWORD dwChannels, FLOAT32 f32Rate)
    {
        m_pObject.reset();
        m_pObject = OpenObject(new CTestAPO<CKelvaneEFX>, dwChannels, f32Rate);
    }
    CNotingEngine& Engine() { return m_pObject->Engine(); }

    ApoObject<CTestAPO<CKelvaneEFX>> m_pObject;
};

TEST_F(ProcessTest, EveryReasonLeadsToItsPath)
{
    const std::string strThrough = "in2x480 out2x480 ";
    const struct
    {
        const char* pName;
        int iFlags;
        FLOAT32 f32Rate;
        BOOL bLoaded;
        int iBypassStatus, iHeadset, iKelvaneBypass, iSilentStatus, bThreadRun;
        std::string strCalls;
        int iOutputFlags;
        FLOAT32 f32Input, f32Output; // what the buffers hold afterwards, 1 and -1 before
    } aCases[] = {
        {"running", 1, 48000, TRUE, 0, 0, 0, 0, 1, strThrough, 1, 1, 7},
        {"rate cut to whole Hz", 1, 44100.9F, TRUE, 0, 0, 0, 0, 1, strThrough, 1, 1, 7},
        {"16 kHz", 1, 16000, TRUE, 0, 0, 0, 0, 1, strThrough, 1, 1, 7},
        {"22.05 kHz", 1, 22050, TRUE, 0, 0, 0, 0, 1, strThrough, 1, 1, 7},
        {"32 kHz", 1, 32000, TRUE, 0, 0, 0, 0, 1, strThrough, 1, 1, 7},
        {"96 kHz", 1, 96000, TRUE, 0, 0, 0, 0, 1, strThrough, 1, 1, 7},
        {"no library", 1, 48000, FALSE, 0, 0, 0, 0, 1, "", 1, 1, 1},
        {"rate", 1, 11025, TRUE, 0, 0, 0, 0, 1, "", 1, 1, 1},
        {"low gain", 1, 48000, TRUE, 1, 0, 0, 0, 1, "", 1, 1, 1},
        {"headset", 1, 48000, TRUE, 0, 1, 0, 0, 1, "", 1, 1, 1},
        {"system bypass", 1, 48000, TRUE, 0, 0, 1, 0, 1, "", 1, 1, 1},
        {"bypass before silent", 1, 48000, TRUE, 1, 0, 0, 1, 1, "", 1, 1, 1},
        {"bypass of a silent buffer", 2, 48000, TRUE, 0, 0, 1, 0, 1, "", 2, 1, 1},
        {"silent engine", 1, 48000, TRUE, 0, 0, 0, 1, 1, strThrough, 1, 0, 7},
        {"silent engine, stopped", 1, 48000, TRUE, 0, 0, 0, 1, 0, "", 1, 0, -1},
        {"silent buffer", 2, 48000, TRUE, 0, 0, 0, 0, 1, strThrough, 1, 0, 7},
        {"silent buffer, stopped", 2, 48000, TRUE, 0, 0, 0, 0, 0, "", 2, 0, -1},
        {"invalid flags", 0, 48000, TRUE, 1, 0, 0, 1, 1, "", CPeriod::iUntouched, 1, -1},
        {"unknown flags", 3, 48000, TRUE, 0, 0, 0, 0, 1, "", CPeriod::iUntouched, 1, -1},
    };
    for (const auto& oCase : aCases)
    {
        SCOPED_TRACE(oCase.pName);
        Open(2, oCase.f32Rate);
        CManagerInside::LoadDLL() = oCase.bLoaded;
        Status().m_iHeadSetStatus = oCase.iHeadset;
        Status().m_iKelvaneBypass = oCase.iKelvaneBypass;
        Engine().SetBypassStatus(oCase.iBypassStatus);
        Engine().SetSilentStatus(oCase.iSilentStatus);
        CEngineInside::ThreadRun(Engine()) = oCase.bThreadRun;
        CPeriod oPeriod(2, 480, oCase.iFlags);
        oPeriod.Run(*m_pObject);
        EXPECT_EQ(m_pObject->TakeCalls(), oCase.strCalls);
        EXPECT_EQ(oPeriod.m_oOutput.u32BufferFlags, oCase.iOutputFlags);
        EXPECT_EQ(oPeriod.m_oOutput.u32ValidFrameCount, oCase.iOutputFlags == CPeriod::iUntouched ? 0U : 480U);
        EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecInput, oCase.f32Input));
        EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecOutput, oCase.f32Output));
        EXPECT_EQ(CEngineInside::Stream(Engine()).m_iProcessCount, 1);
    }
    EXPECT_EQ(CountLog("Buffer Flags is invalid"), 2U);
    EXPECT_EQ(LinesOf("ERROR"), std::vector<std::string>());
}

TEST_F(ProcessTest, ChannelsComeFromTheLockedFormatAndANewFrameCountResetsTheOutput)
{
    Open(6, 44100);
    for (const UINT32 u32FrameCount : {480U, 1U, 441U, 441U, 4800U})
    {
        const bool bNew = static_cast<UINT32>(CEngineInside::Stream(Engine()).m_iSystemFrameLen) != u32FrameCount;
        CPeriod(6, u32FrameCount).Run(*m_pObject);
        const std::string strShape = "6x" + std::to_string(u32FrameCount) + " ";
        EXPECT_EQ(m_pObject->TakeCalls(), (bNew ? "reset " : "") + ("in" + strShape) + "out" + strShape);
        EXPECT_EQ(static_cast<UINT32>(CEngineInside::Stream(Engine()).m_iSystemFrameLen), u32FrameCount);
    }
    EXPECT_EQ(CountLog("LastSystemFrameLength:1, CurrentSystemFrameLength:441"), 1U);
}

TEST_F(ProcessTest, AChangeOfTheSystemRefreshesParametersOnce)
{
    const std::string strThrough = "in2x480 out2x480 ";
    const auto fRun = [&]
    {
        CPeriod(2, 480).Run(*m_pObject);
        return m_pObject->TakeCalls();
    };
    EXPECT_EQ(fRun(), strThrough);
    Status().m_iSpeakerVolume = 40;
    EXPECT_EQ(fRun(), "refresh " + strThrough);
    EXPECT_EQ(fRun(), strThrough);

    // Sound modes count only while the sound effects are on.
    for (CAudioInt* const pMode : {&Status().m_iSpeakerMode, &Status().m_iHeadphoneMode, &Status().m_iMicrophoneMode})
    {
        Status().m_iZvSoundStatus = 0;
        *pMode = 3;
        EXPECT_EQ(fRun(), strThrough);
        Status().m_iZvSoundStatus = 1;
        EXPECT_EQ(fRun(), "refresh " + strThrough);
        EXPECT_EQ(fRun(), strThrough);
    }
    for (const char* pMode : {"Speaker", "HeadPhone", "MicroPhone"})
        EXPECT_EQ(CountLog(std::string("3841115 iCurrent") + pMode + "Mode: 0 change to 3"), 1U);

    // A change that meets a bypassed call is taken note of and never refreshed.
    Engine().SetBypassStatus(1);
    Status().m_iSpeakerVolume = 60;
    EXPECT_EQ(fRun(), "");
    EXPECT_EQ(Engine().GetSpeakerVolume(0), 60);
    Engine().SetBypassStatus(0);
    EXPECT_EQ(fRun(), strThrough);

    // A failed refresh costs the period its audio.
    Status().m_iSpeakerVolume = 80;
    Engine().m_iRefreshCode = 99;
    CPeriod oPeriod(2, 480);
    oPeriod.Run(*m_pObject);
    EXPECT_EQ(m_pObject->TakeCalls(), "refresh ");
    EXPECT_EQ(oPeriod.m_oOutput.u32ValidFrameCount, 480U);
    EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecOutput, -1));
    const std::string strArguments = "(u32NumInputConnections, ppInputConnections, u32NumOutputConnections, "
                                     "ppOutputConnections)";
    EXPECT_EQ(LinesOf("ERROR"),
              (std::vector<std::string>{"99 m_pEngine->RefreshAlgorithmParams()",
                                        "99 ProcessAudioBuffer" + strArguments, "99 ChooseAPOProcess" + strArguments}));

    // A frame that can't be queued doesn't keep the output waiting.
    Engine().m_iRefreshCode = 0;
    Engine().m_iInputCode = 22;
    EXPECT_EQ(fRun(), strThrough);
    EXPECT_EQ(CountLog("m_pEngine->InputDataToQueue(pf32InputFrames, m_pEngine->GetInChannelCount(), "
                       "ppInputConnections[0]->u32ValidFrameCount)"),
              1U);
}

TEST_F(ProcessTest, MissingRecordsAndBuffersAreReportedAndNothingIsWritten)
{
    CPeriod oPeriod(2, 480);
    APO_CONNECTION_PROPERTY* pNone = nullptr;
    for (APO_CONNECTION_PROPERTY** ppMissing : {static_cast<APO_CONNECTION_PROPERTY**>(nullptr), &pNone})
    {
        m_pObject->APOProcess(1, ppMissing, 1, &oPeriod.m_pOutput);
        EXPECT_EQ(LinesOf("ERROR").back(), "13 ppInputConnections == nullptr || *ppInputConnections == nullptr");
        m_pObject->APOProcess(1, &oPeriod.m_pInput, 1, ppMissing);
        EXPECT_EQ(LinesOf("ERROR").back(), "13 ppOutputConnections == nullptr || *ppOutputConnections == nullptr");
    }

    // Bypass with no input buffer: the copy fails and the output connection stays as it was.
    Engine().SetBypassStatus(1);
    CPeriod oNoBuffer(2, 480);
    oNoBuffer.m_oInput.pBuffer = 0;
    oNoBuffer.Run(*m_pObject);
    EXPECT_EQ(oNoBuffer.m_oOutput.u32ValidFrameCount, 0U);

    m_pObject->m_pEngine.reset();
    m_pObject->APOProcess(1, &oPeriod.m_pInput, 1, &oPeriod.m_pOutput);
    EXPECT_EQ(LinesOf("ERROR").back(), "12 m_pEngine");
    EXPECT_EQ(oPeriod.m_oOutput.u32ValidFrameCount, 0U);
}

TEST_F(ProcessTest, BypassIsToldOncePer501Calls)
{
    Engine().SetBypassStatus(1);
    CPeriod oPeriod(2, 1);
    for (int i = 0; i < 1002; ++i)
        oPeriod.Run(*m_pObject);
    ASSERT_EQ(CountLog("[POST_EFX] Audio has been Bypass!"), 2U);
    EXPECT_EQ(FindLog("Audio has been Bypass!")[0].strFunction, "ProcessByPassMode");
}

} // namespace
