// A stream of the concrete object, in both variants: what happens beside a period must not cost it anything.
#include "tests/engine/engine_test.h"

namespace
{
class PostStreamTest : public EngineTest
{
protected:
    // Adds the output of five periods of ones.
    static void Play(CKelvanePostEFX& oObject, std::vector<FLOAT32>& vecOut)
    {
        for (int i = 0; i < 5; ++i)
        {
            CPeriod oPeriod(2, 480);
            oPeriod.Run(oObject);
            WaitForWorkers();
            vecOut.insert(vecOut.end(), oPeriod.m_vecOutput.begin(), oPeriod.m_vecOutput.end());
        }
    }

    CAudioStatus& m_oStatus = CAudioMonitor::Instance()->StatusRecord();
};

TEST_F(PostStreamTest, AVolumeThatChangesBesideTheAlgorithmReachesTheLibrary)
{
    for (const bool bAtStart : {false, true})
        for (const bool bInline : {false, true})
        {
            SetRecordChannels(2, "30000");
            m_oStatus.m_iSpeakerVolume = 10;
            m_oLibrary.iSetParaCount = 0;
            m_oLibrary.fnApply = [&](KelvaneDataStruct&) { m_oStatus.m_iSpeakerVolume = 90; };
            m_oLibrary.fnSetPara = [&] { m_oStatus.m_iSpeakerVolume = bAtStart ? 90 : 10; };
            const auto pObject = OpenStream(bInline);
            EXPECT_EQ(m_oLibrary.pLastParam, CManagerInside::Tuning().m_mapAlgoParam["30000"].get());
            m_oLibrary.fnSetPara = nullptr;
            std::vector<FLOAT32> vecOut;
            Play(*pObject, vecOut);
            EXPECT_EQ(m_oLibrary.pLastParam, CManagerInside::Tuning().m_mapAlgoParam["30080"].get());
            EXPECT_EQ(m_oLibrary.iSetParaCount, 2);
        }
}

TEST_F(PostStreamTest, ARefusedLockLeavesTheStreamAsItIs)
{
    int iFrame = 0;
    m_oLibrary.fnApply = [&](KelvaneDataStruct& oData) { *oData.psDataOut[0] = static_cast<FLOAT32>(++iFrame); };
    CFormatPair oStereo(2, 48000), oShort(2, 48000, 16), oOther(2, 44100);
    for (const bool bInline : {false, true})
    {
        std::vector<FLOAT32> aOut[2];
        for (const bool bRefused : {false, true})
        {
            iFrame = m_oLibrary.iSetParaCount = 0;
            const auto pObject = OpenStream(bInline);
            Play(*pObject, aOut[bRefused]);
            for (CFormatPair* pFormats : {&oStereo, &oShort, &oOther})
                EXPECT_EQ(bRefused ? pFormats->Lock(*pObject) : APOERR_APO_LOCKED, APOERR_APO_LOCKED);
            EXPECT_EQ(pObject->LockForProcess(1, nullptr, 1, &oStereo.m_pOutput), 13);
            Play(*pObject, aOut[bRefused]);
            EXPECT_EQ(pObject->UnlockForProcess(), S_OK);
            // Nor is anything started for one.
            EXPECT_EQ(oShort.Lock(*pObject), APOERR_FORMAT_NOT_SUPPORTED);
            EXPECT_EQ(pObject->LockForProcess(1, &oStereo.m_pInput, 1, &oOther.m_pOutput),
                      APOERR_INVALID_CONNECTION_FORMAT);
            EXPECT_EQ(m_oLibrary.iSetParaCount, 1);
        }
        EXPECT_EQ(aOut[0], aOut[1]);
        EXPECT_EQ(iFrame, 20);
    }
}
} // namespace
