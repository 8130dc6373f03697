// The hardware under a stream: where a failed start leaves amplifiers and audio, and which threads meet devices.
#include "tests/hardware/hardware_test.h"

#include "apo/kelvane/apo_kelvane_everest.h"
#include "apo/kelvane/apo_kelvane_senary.h"

#include <thread>

namespace
{
class StreamHardwareTest : public HardwareTest
{
protected:
    // Both codecs and one amplifier, brought up by the manager's own steps.
    void BringUp()
    {
        Attach("KELVANE_DEVICE0", m_oAmplifier);
        Attach("senary", m_oSenary, "{54C9343C-2A17-42E8-B4FD-9F9DA27B94D6}");
        Attach("everest", m_oEverest, "{F27CDC00-203E-4107-A503-21211537EA43}");
        CKelvaneManager* const pManager = CKelvaneManager::Instance();
        CManagerInside::Tuning().m_iAlgoCtrlParam[0] = 1;
        CManagerInside::Tuning().m_iAlgoCtrlParam[1] = 1;
        pManager->InitializeIRP();
        pManager->LoadSenaryGain();
        pManager->LoadEverestGain();
        machine::ForgetSent();
    }
    void TakeDown()
    {
        CManagerInside::RemoveAmplifiers();
        CSenaryGainConfig::DeleteInstance();
        CEverestGainConfig::DeleteInstance();
        m_oAmplifier = m_oSenary = m_oEverest = {};
    }

    DeviceMood m_oAmplifier, m_oSenary, m_oEverest;
};

TEST_F(StreamHardwareTest, AFailedStartLeavesTheStreamWhereItDoesNoHarm)
{
    const std::string strSilent = "|0 Set Low Gain failed then Will be Silented!";
    const struct
    {
        int iDebugMode;
        DWORD dwSenary, dwAmplifier, dwEverest; // errors of a gain request
        bool bSilent;                           // while there is a library
        const char* pSenary;
        const char* pAmplifier;
        std::string strFailure;
    } aGains[] = {
        {0, 0, 0, 31, false, "02000000", "0000000002000000", ""}, // the Everest codec isn't asked
        {0, 31, 0, 0, true, "02000000", "", "|31 CSenaryGainConfig::Instance()->SetLowSenaryHWGain()" + strSilent},
        {0, 0, 31, 0, true, "02000000", "0000000002000000",
         "|31 CKelvaneManager::Instance()->DeactiveMutilPAGain()" + strSilent},
        {1, 0, 0, 0, true, "", "", ""},
    };
    for (const BOOL bLoaded : {TRUE, FALSE})
        for (const auto& oGain : aGains)
        {
            SCOPED_TRACE(oGain.strFailure);
            Mend();
            CManagerInside::DebugMode() = oGain.iDebugMode;
            BringUp();
            m_oSenary.oAnswer.dwError = oGain.dwSenary;
            m_oAmplifier.oAnswer.dwError = oGain.dwAmplifier;
            m_oEverest.oAnswer.dwError = oGain.dwEverest;
            m_oLibrary.iInitCode = 7;
            CManagerInside::LoadDLL() = bLoaded;
            const ApoObject<CKelvanePostEFX> pObject = OpenStream();
            CPeriod oPeriod(2, 480, BUFFER_VALID, true); // in place: silence is written over the input
            oPeriod.Run(*pObject);
            EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecInput, oGain.bSilent && bLoaded ? 0.0F : 1.0F));
            EXPECT_EQ(SentTo("senary"), oGain.pSenary);
            EXPECT_EQ(SentTo("KELVANE_DEVICE0"), oGain.pAmplifier);
            EXPECT_EQ(SentTo("everest"), "");
            const std::string strFailures = TakeFailures();
            EXPECT_NE(strFailures.find(oGain.strFailure), std::string::npos) << strFailures;
            EXPECT_EQ(strFailures.find("Silented!") != std::string::npos, !oGain.strFailure.empty());
            TakeDown();
        }
}

// High gain that fails is told, each of the three is tried, and the stream is processed all the same.
TEST_F(StreamHardwareTest, AStartSetsEveryGainHigh)
{
    for (const DWORD dwError : {0U, 31U})
    {
        BringUp();
        m_oSenary.oAnswer.dwError = m_oAmplifier.oAnswer.dwError = m_oEverest.oAnswer.dwError = dwError;
        EXPECT_EQ(MakeEngine().InitAlgorithmParameter(), 0);
        EXPECT_EQ(m_pEngine->GetSilentStatus() + m_pEngine->GetBypassStatus(), 0);
        m_pEngine.reset(); // takes nothing back
        EXPECT_EQ(SentTo("senary"), "00000000");
        EXPECT_EQ(SentTo("everest"), "01");
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"), "0000000000000000");
        const std::string strFailures = TakeFailures();
        for (const char* pCall : {"31 CSenaryGainConfig::Instance()->SetHighSenaryHWGain()",
                                  "31 CEverestGainConfig::Instance()->SetHighEverestHWGain()",
                                  "31 CKelvaneManager::Instance()->ActiveMutilPAGain()"})
            EXPECT_EQ(strFailures.find(pCall) != std::string::npos, dwError != 0) << pCall;
        TakeDown();
    }
}

TEST_F(StreamHardwareTest, TheProcessingThreadOfTheWorkerVariantMeetsNoDevice)
{
    BringUp();
    machine::Controller oController;
    oController.fScript = [](UINT64) { return machine::TemperatureAnswer(315); };
    machine::AttachController(oController);
    CManagerInside::EntryPoints().m_fAudioKelvaneGetPara = [](void*, KelvaneStruParam*) { return 0; };
    CManagerInside::EntryPoints().m_fAudioKelvaneTemperature = [](void*, int32_t) { return 0; };
    CManagerInside::Tuning().m_iAlgoCtrlParam[5] = 1; // temperatures are reported
    const ApoObject<CKelvanePostEFX> pObject = OpenStream();
    DWORD dwThread = 0;
    std::thread(
        [&]
        {
            dwThread = GetCurrentThreadId();
            CPeriod oPeriod(2, 480);
            for (int i = 0; i < 1100; ++i) // eleven seconds of audio: each slow clock strikes
            {
                oPeriod.Run(*pObject);
                WaitForWorkers();
                CAudioMonitor::Instance()->StatusRecord().m_iSpeakerVolume = i % 100;
            }
        })
        .join();
    EXPECT_FALSE(machine::Sent("controller").empty());
    for (const machine::SentItem& oItem : machine::Sent())
        EXPECT_NE(oItem.dwThread, dwThread) << oItem.strDevice << " " << oItem.strWhat;
}

// Too many channels for the library: a failed start like any other, and nothing is set high before.
TEST_F(StreamHardwareTest, AStreamTooWideStartsAsAFailedInstance)
{
    for (const int iDebugMode : {0, 1})
    {
        CManagerInside::DebugMode() = iDebugMode;
        BringUp();
        const ApoObject<CKelvanePostEFX> pObject = OpenStream(false, 12);
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"), iDebugMode == 0 ? "0000000002000000" : "");
        machine::ForgetSent();
        CPeriod oPeriod(12, 480, BUFFER_VALID, true);
        oPeriod.Run(*pObject);
        EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecInput, iDebugMode == 0 ? 1.0F : 0.0F));
        EXPECT_EQ(CFormatPair(12, 48000).Lock(*pObject), APOERR_APO_LOCKED);
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"), "");
        TakeDown();
    }
}
} // namespace
