// The two variants as their registration records make them, and the answers that the base class gives by itself.
#include "apo/kelvane/apo_kelvane_postefx.h"
#include "tests/object/object_fixture.h"

namespace
{
class COpenPostEFX final : public CKelvanePostEFX
{
public:
    using CKelvanePostEFX::CKelvanePostEFX;
    using CKelvanePostEFX::m_pEngine;
};

using VariantTest = ObjectTest;

TEST_F(VariantTest, TheRecordMakesTheVariant)
{
    const struct
    {
        const APO_REG_PROPERTIES* pProperties;
        const char *pTag, *pDumpIn, *pDumpOut;
        int iInline, iPriming;
    } aCases[] = {
        {CKelvaneClassFactory::KelvanePostEFX_Property, "[POST_EFX]", "PostInt32DataIn", "PostInt32DataOut", 0, 3},
        {CKelvaneClassFactory::KelvanePostOMFX_Property, "[OMFX_EFX]", "PostOMFXDataIn", "PostOMFXDataOut", 1, 0},
    };
    for (const auto& oCase : aCases)
    {
        const auto pObject = OpenObject(new COpenPostEFX(nullptr, oCase.pProperties));
        CBaseEngine& oEngine = *pObject->m_pEngine;
        EXPECT_EQ(CountLog(std::string(oCase.pTag) + "AuidoMode=0"), 1U);
        EXPECT_EQ(CEngineInside::Variant(oEngine).m_strDumpInName, oCase.pDumpIn);
        EXPECT_EQ(CEngineInside::Variant(oEngine).m_strDumpOutName, oCase.pDumpOut);
        EXPECT_EQ(CEngineInside::Stream(oEngine).m_bInlineMode, oCase.iInline);
        EXPECT_EQ(CEngineInside::CacheFrameCount(oEngine), oCase.iPriming);
    }
}

TEST_F(VariantTest, TheBaseGoesByModeRateAndEngine)
{
    const std::string strThrough = "in2x480 out2x480 ";
    auto pObject = OpenObject(new CTestAPO<CBaseAPO>);
    const auto fRun = [&]
    {
        CPeriod(2, 480).Run(*pObject);
        return pObject->TakeCalls();
    };
    EXPECT_EQ(fRun(), strThrough);
    pObject->m_iRenderMode = 2;
    EXPECT_EQ(fRun(), "refresh " + strThrough);
    EXPECT_EQ(fRun(), strThrough);
    pObject->m_iRenderMode = 3; // a mode that is set stays
    EXPECT_EQ(fRun(), strThrough);
    EXPECT_EQ(pObject->Engine().GetAudioMode(), 2);
    EXPECT_EQ(CountLog("Need Updata Para Mode 0 change to 2"), 1U);
    pObject->m_oAudioModeGUID = AUDIO_SIGNALPROCESSINGMODE_RAW;
    EXPECT_EQ(fRun(), "");
    pObject->m_oAudioModeGUID = AUDIO_SIGNALPROCESSINGMODE_SPEECH;
    EXPECT_EQ(fRun(), strThrough);
    pObject->Engine().SetBypassStatus(1);
    EXPECT_EQ(fRun(), "");
    pObject = OpenObject(new CTestAPO<CBaseAPO>, 2, 11025);
    EXPECT_EQ(fRun(), "");
}
} // namespace
