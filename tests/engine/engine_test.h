// The engine tests' fixture: a protection engine over a scripted library that is set into the manager.
#pragma once

#include "apo/kelvane/apo_kelvane_factory.h"
#include "apo/kelvane/apo_kelvane_postefx.h"
#include "tests/support/apo_connections.h"
#include "tests/support/engine_inside.h"
#include "tests/support/logged_machine_test.h"
#include "tests/support/manager_inside.h"

#include <atomic>

// What the ten functions do and what they were told. Passes the channels through unless told otherwise.
struct ScriptedLibrary
{
    KelvaneMemSize oSize{};
    int iInitCode = 0, iSetParaCode = 0, iSizeCode = 0, iApplyCode = 0;
    std::function<void(KelvaneDataStruct&)> fnApply; // behind the pass-through
    std::function<void()> fnSetPara;
    std::atomic<int> iApplyCount{0}, iSetParaCount{0};
    std::atomic<int> iBattery{-1}, iACLine{-1};
    std::atomic<const KelvaneStruParam*> pLastParam{nullptr};
};
inline ScriptedLibrary* g_pLibrary = nullptr;

class EngineTest : public LoggedMachineTest
{
protected:
    void SetUp() override
    {
        LoggedMachineTest::SetUp();
        g_pLibrary = &m_oLibrary;
        CManagerInside::EntryPoints().m_fAudioKelvaneGetSize = [](KelvaneMemSize* pSize)
        {
            *pSize = g_pLibrary->oSize;
            return g_pLibrary->iSizeCode;
        };
        CManagerInside::EntryPoints().m_fAudioKelvaneInit = [](void*, void*) { return g_pLibrary->iInitCode; };
        CManagerInside::EntryPoints().m_fAudioKelvaneSetPara = [](void*, void*, const KelvaneStruParam* pParam)
        {
            g_pLibrary->pLastParam = pParam;
            ++g_pLibrary->iSetParaCount;
            if (g_pLibrary->fnSetPara)
                g_pLibrary->fnSetPara();
            return g_pLibrary->iSetParaCode;
        };
        CManagerInside::EntryPoints().m_fAudioKelvaneApply = Apply;
        CManagerInside::EntryPoints().m_fAudioKelvaneSetBatteryInfo = [](void*, int32_t) { return 0; };
        CManagerInside::Tuning().m_vecVolumeRange = {0, 20, 40, 60, 80, 100};
        Mend();
    }

    // Library and parameter sets in order.
    void Mend()
    {
        m_oLibrary.oSize = {64, 64, {}};
        m_oLibrary.iInitCode = m_oLibrary.iSetParaCode = m_oLibrary.iSizeCode = m_oLibrary.iApplyCode = 0;
        CManagerInside::LoadDLL() = TRUE;
        for (const char* pKey : {"30000", "30020"})
            SetRecordChannels(0, pKey);
        SetRecordChannels(8);
    }

    // Makes the key's set, by default the one that a stream starts with.
    static void SetRecordChannels(int iChannel, const char* pKey = "30080")
    {
        auto pParam = std::make_unique<KelvaneStruParam>();
        pParam->sChannelNum = static_cast<int16_t>(iChannel);
        CManagerInside::Tuning().m_mapAlgoParam[pKey] = std::move(pParam);
    }

    void TearDown() override
    {
        m_pEngine.reset();
        CKelvaneManager::DeleteInstance();
        LoggedMachineTest::TearDown();
    }

    static int32_t Apply(void*, void*, KelvaneDataStruct* pData)
    {
        for (int ch = 0; ch < KELVANE_MAX_CHANNELS; ++ch)
            if (pData->psDataIn[ch] != nullptr)
                std::copy_n(pData->psDataIn[ch], pData->iFrameLen, pData->psDataOut[ch]);
        g_pLibrary->iBattery = pData->BatteryLifePercent;
        g_pLibrary->iACLine = pData->ACLineStatus;
        ++g_pLibrary->iApplyCount;
        if (g_pLibrary->fnApply)
            g_pLibrary->fnApply(*pData);
        return g_pLibrary->iApplyCode;
    }

    // A locked object of the concrete class.
    static ApoObject<CKelvanePostEFX> OpenStream(bool bInline = false, DWORD dwChannels = 2, FLOAT32 f32Rate = 48000)
    {
        const APO_REG_PROPERTIES* const pProperties =
            bInline ? CKelvaneClassFactory::KelvanePostOMFX_Property : CKelvaneClassFactory::KelvanePostEFX_Property;
        return OpenObject(new CKelvanePostEFX(nullptr, pProperties), dwChannels, f32Rate);
    }

    // An engine with its format, not started.
    CKelvanePostEngine& MakeEngine(int iChannel = 2, int iSampleRate = 48000, bool bInline = false)
    {
        m_pEngine = std::make_unique<CKelvanePostEngine>();
        CEngineInside::Stream(*m_pEngine).m_bInlineMode = bInline ? 1 : 0;
        CEngineInside::CacheFrameCount(*m_pEngine) = bInline ? 0 : AUDIO_CACHE_FRAME_NUM;
        SetFormat(iChannel, iSampleRate);
        return *m_pEngine;
    }

    void SetFormat(int iChannel, int iSampleRate)
    {
        m_pEngine->SetSampleRate(iSampleRate);
        m_pEngine->SetInChannelCount(iChannel);
        m_pEngine->SetOutChannelCount(iChannel);
    }

    // An engine with an instance but without workers: the test runs the algorithm by hand.
    CKelvanePostEngine& MakeHandEngine(int iChannel = 2, int iSampleRate = 48000)
    {
        CKelvanePostEngine& oEngine = MakeEngine(iChannel, iSampleRate);
        EXPECT_EQ(oEngine.AudioKelvaneGetSize(), 0);
        EXPECT_EQ(oEngine.AudioKelvaneSetPara(), 0);
        return oEngine;
    }

    void RunAlgorithm()
    {
        while (m_pEngine->SplitInputDataItem() == 0)
        {
            m_pEngine->AudioKelvaneApply();
            m_pEngine->MergerOutputDataItem();
        }
    }

    int Input(const std::vector<float>& vecFrames)
    {
        const int iChannel = m_pEngine->GetInChannelCount();
        const UINT32 ulFrameCount = static_cast<UINT32>(vecFrames.size() / static_cast<size_t>(iChannel));
        CEngineInside::Stream(*m_pEngine).m_iSystemFrameLen = static_cast<int>(ulFrameCount);
        return m_pEngine->InputDataToQueue(vecFrames.data(), iChannel, ulFrameCount);
    }

    // One period's output in a buffer that held fill.
    std::vector<float> Output(UINT32 ulFrameCount, float fill = 9.0F)
    {
        const int iChannel = m_pEngine->GetOutChannelCount();
        std::vector<float> vecFrames(ulFrameCount * static_cast<size_t>(iChannel), fill);
        EXPECT_EQ(m_pEngine->OutputDataFromQueue(vecFrames.data(), iChannel, ulFrameCount), 0);
        return vecFrames;
    }

    // The next iFrameCount frames of a stream whose every sample differs from its neighbours: a ramp with a channel
    // offset.
    std::vector<float> Ramp(int iFrameCount)
    {
        std::vector<float> vecFrames;
        for (int s = 0; s < iFrameCount; ++s, ++m_iRampFrame)
            for (int ch = 0; ch < m_pEngine->GetInChannelCount(); ++ch)
                vecFrames.push_back(static_cast<float>(m_iRampFrame + 1) + static_cast<float>(ch) * 0.25F);
        return vecFrames;
    }

    ScriptedLibrary m_oLibrary;
    std::unique_ptr<CKelvanePostEngine> m_pEngine;
    int m_iRampFrame = 0;
};
