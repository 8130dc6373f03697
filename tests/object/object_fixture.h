// What the processing object's tests share: an engine that notes its calls, objects opened to the test, one period.
#pragma once

#include "apo/kelvane/apo_kelvane_efx.h"
#include "apo/kelvane/apo_kelvane_factory.h"
#include "tests/support/apo_connections.h"
#include "tests/support/engine_inside.h"
#include "tests/support/logged_machine_test.h"
#include "tests/support/manager_inside.h"

#include <utility>

// The log at its lowest level, and a manager that is taken down before it.
class ObjectTest : public LoggedMachineTest
{
protected:
    void SetUp() override
    {
        LoggedMachineTest::SetUp();
        StartLog();
    }
    void TearDown() override
    {
        CKelvaneManager::DeleteInstance();
        LoggedMachineTest::TearDown();
    }

    static CAudioStatus& Status() { return CAudioMonitor::Instance()->StatusRecord(); }

    // The lines of a level as "code text", in order.
    static std::vector<std::string> LinesOf(const std::string& strLevel)
    {
        std::vector<std::string> vecTexts;
        for (const LogLine& oLine : ReadLog())
        {
            if (oLine.strLevel == strLevel)
                vecTexts.push_back(std::to_string(static_cast<UINT32>(oLine.iErrorCode)) + " " + oLine.strMessage);
        }
        return vecTexts;
    }
};

// Plays the engine's part: notes each call in a text, gives the codes it was told, fills the output with 7.
class CNotingEngine : public CBaseEngine
{
public:
    int InitAlgorithmParameter() override { return Note("init ", m_iInitCode); }
    int RefreshAlgorithmParams() override { return Note("refresh ", m_iRefreshCode); }
    int InputDataToQueue(const FLOAT32*, const int& iChannel, const UINT32& ulFrameCount) override
    {
        return Note("in" + Shape(iChannel, ulFrameCount), m_iInputCode);
    }
    int OutputDataFromQueue(FLOAT32* pf32OutputFrames, const int& iChannel, const UINT32& ulFrameCount) override
    {
        std::fill_n(pf32OutputFrames, static_cast<UINT32>(iChannel) * ulFrameCount, 7.0F);
        return Note("out" + Shape(iChannel, ulFrameCount), m_iOutputCode);
    }
    void ResetOutputQueue() override { Note("reset ", 0); }
    void ClearAllQueues() override {}

    int m_iInitCode = 0;
    int m_iRefreshCode = 0;
    int m_iInputCode = 0;
    int m_iOutputCode = 0;
    std::string m_strCalls;

private:
    static std::string Shape(int iChannel, UINT32 ulFrameCount)
    {
        return std::to_string(iChannel) + "x" + std::to_string(ulFrameCount) + " ";
    }
    int Note(const std::string& strCall, int iCode)
    {
        m_strCalls += strCall;
        return iCode;
    }
};

// A processing object over a noting engine, its inner operations open.
template <class TBase> class CTestAPO : public TBase
{
public:
    explicit CTestAPO(const APO_REG_PROPERTIES* pProperties = CKelvaneClassFactory::KelvanePostEFX_Property)
        : TBase(nullptr, pProperties)
    {
        this->m_pEngine.reset(new CNotingEngine);
        CEngineInside::Variant(*this->m_pEngine).m_iAPOType = 8;
    }
    ~CTestAPO() override = default;

    using TBase::m_oAudioModeGUID;
    using TBase::m_pEngine;
    int GetRenderMode() override { return m_iRenderMode; }
    CNotingEngine& Engine() { return static_cast<CNotingEngine&>(*this->m_pEngine); }
    std::string TakeCalls() { return std::exchange(Engine().m_strCalls, ""); }

    int m_iRenderMode = 0;
};
