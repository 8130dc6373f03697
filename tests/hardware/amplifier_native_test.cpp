// One amplifier, and several as one: how each answer of the driver is told, and what it was sent.
#include "tests/hardware/hardware_test.h"

#include "apo/kelvane/apo_kelvane_irp.h"

#include <thread>

namespace
{
const std::string ACTIVE = "0000000000000000";
const std::string LOW = "0000000002000000";

using machine::Completion;
using AmplifierTest = HardwareTest;

TEST_F(AmplifierTest, TellsHowTheDriverTookTheStatus)
{
    const std::string strWaitFailed = " Execute GetOverlappedResult failed! dwStatusCtrl:2";
    const struct
    {
        const char* pName;
        machine::DeviceAnswer oAnswer;
        DWORD dwResult;
        std::string strFailure;
        size_t iExpired; // milliseconds that it was waited for in vain
    } aRows[] = {
        {"at once", {0, Completion::AtOnce, 0, {}}, 0, "", 0},
        {"late", {0, Completion::Late, 20, {}}, 0, "", 0},
        {"refused", {31, Completion::AtOnce, 0, {}}, 31, "31 Execute DeviceIoControl failed! dwStatusCtrl:2", 0},
        {"fails on completion", {1117, Completion::Late, 20, {}}, 1117, "1117" + strWaitFailed, 0},
        {"never", {0, Completion::Never, 0, {}}, 1460, "1460" + strWaitFailed, 2000},
        {"never, heeds no cancelling", {0, Completion::Deaf, 0, {}}, 1460, "1460" + strWaitFailed, 2200},
    };
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(oRow.pName);
        RestartLog();
        machine::ForgetSent();
        DeviceMood oMood;
        Attach("KELVANE_DEVICE0", oMood);
        {
            CKelvaneIRP oIRP(AUDIO_KELVANE_DEVICE0);
            oMood.oAnswer = oRow.oAnswer;
            const size_t iBefore = machine::ExpiredMilliseconds();
            machine::DivideTimeouts(oRow.iExpired != 0 ? 20 : 1);
            EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_DEACTIVE), oRow.dwResult);
            EXPECT_EQ(machine::ExpiredMilliseconds() - iBefore, oRow.iExpired);
            machine::DivideTimeouts(1);
            EXPECT_EQ(CountLog(" Status Success! dwStatusCtrl:2"), oRow.dwResult == 0 ? 1U : 0U);
            EXPECT_EQ(TakeFailures(), oRow.strFailure);
            // The next request is served, also when this one completes while the next is waited for.
            oMood.oAnswer = {0, Completion::Late, 50, {}};
            oMood.bCompleteHung = true;
            EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_ACTIVE), 0U);
        }
        const std::string strCancel = oRow.dwResult == 1460 ? "cancel " : "";
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"),
                  "open " + ACTIVE + " " + LOW + " " + strCancel + ACTIVE + " " + LOW + " cancel close");
        EXPECT_EQ(machine::Sent("KELVANE_DEVICE0")[1].dwCode, 0x04001C14U);
        EXPECT_EQ(machine::Sent("KELVANE_DEVICE0")[1].dwOutputSize, 0U);
    }
}

// The system may write into a record that is pending still, whatever the wait for it says.
TEST_F(AmplifierTest, AFailureWithoutACodeIsAFailure)
{
    const DeviceMood oMood{{0, Completion::Late, 20, {}}};
    Attach("KELVANE_DEVICE0", oMood);
    CKelvaneIRP oIRP(AUDIO_KELVANE_DEVICE0);
    for (const char* pCall : {"DeviceIoControl", "GetOverlappedResultEx"})
    {
        machine::FailNext(pCall, 0);
        EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_DEACTIVE), 31U) << pCall;
    }
    EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_DEACTIVE), 0U);
    EXPECT_EQ(FindLog("Execute GetOverlappedResult failed!").at(0).strFunction, "SetKelvaneStatus");
    const CKelvaneIRP oSecond(AUDIO_KELVANE_DEVICE0); // the first has it for itself
    EXPECT_EQ(CountLog("not support! reason:32"), 1U);
}

TEST_F(AmplifierTest, OneThatCannotBeHadCountsAsSuccess)
{
    const struct
    {
        DWORD dwOpenError; // 0: the device opens, but there is no event
        const char* pFailure;
        const char* pSent;
    } aRows[] = {
        {2, "0 IRP interface: \\\\.\\KELVANE_DEVICE0 not support! reason:2", "open open open open"},
        {5, "0 IRP interface: \\\\.\\KELVANE_DEVICE0 not support! reason:5", "open open open open"},
        {0, "6 m_hEvent", "open cancel close"},
    };
    for (const auto& oRow : aRows)
    {
        machine::ForgetSent();
        const DeviceMood oMood{{}, oRow.dwOpenError};
        Attach("KELVANE_DEVICE0", oMood);
        machine::FailNext("CreateEventW", 8, oRow.dwOpenError == 0 ? 1 : 0);
        EXPECT_EQ(CKelvaneIRP(AUDIO_KELVANE_DEVICE0).SetKelvaneStatus(KELVANE_STATUS_DEACTIVE), 0U);
        EXPECT_EQ(TakeFailures(), oRow.pFailure);
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"), oRow.pSent);
    }
}

TEST_F(AmplifierTest, StreamsThatStartTogetherTakeTurns)
{
    std::atomic<bool> bInFlight{false};
    machine::AttachDevice({"KELVANE_DEVICE0", "", 0,
                           [&](const machine::DeviceRequest&)
                           {
                               EXPECT_FALSE(bInFlight.exchange(true));
                               Sleep(1);
                               bInFlight = false;
                               return machine::DeviceAnswer{0, Completion::Late, 1, {}};
                           }});
    CKelvaneIRP oIRP(AUDIO_KELVANE_DEVICE0);
    const auto fSend = [&]
    {
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_ACTIVE), 0U);
    };
    std::thread oOther(fSend);
    fSend();
    oOther.join();
}

TEST_F(AmplifierTest, ManagerTreatsAmplifiersAsOne)
{
    const struct
    {
        int iNumber; // of control word 1
        DWORD dwError0, dwError1;
        DWORD dwResult;
        const char* pFailing; // the one that the operations stop at
        bool bSent0, bSent1;
    } aRows[] = {
        {0, 0, 0, 0, "", false, false}, {1, 0, 0, 0, "", true, false},          {2, 0, 0, 0, "", true, true},
        {3, 0, 0, 0, "", false, false}, {2, 31, 5, 31, "m_pIRP0", true, false}, {2, 0, 5, 5, "m_pIRP1", true, true},
    };
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(std::to_string(oRow.iNumber) + " " + oRow.pFailing);
        RestartLog();
        DeviceMood oMood0, oMood1;
        Attach("KELVANE_DEVICE0", oMood0);
        Attach("KELVANE_DEVICE1", oMood1);
        CKelvaneManager* const pManager = CKelvaneManager::Instance();
        CManagerInside::Tuning().m_iAlgoCtrlParam[1] = oRow.iNumber;
        pManager->InitializeIRP();
        const std::string strNumber = std::to_string(oRow.iNumber);
        EXPECT_EQ(CountLog("Config PA Number:" + strNumber), 1U);
        EXPECT_EQ(TakeFailures(), oRow.iNumber % 3 == 0 ? "0 Not support " + strNumber + " PA !" : "");
        machine::ForgetSent();
        oMood0.oAnswer.dwError = oRow.dwError0;
        oMood1.oAnswer.dwError = oRow.dwError1;
        EXPECT_EQ(pManager->ActiveMutilPAGain(), oRow.dwResult);
        EXPECT_EQ(pManager->DeactiveMutilPAGain(), oRow.dwResult);
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"), oRow.bSent0 ? ACTIVE + " " + LOW : "");
        EXPECT_EQ(SentTo("KELVANE_DEVICE1"), oRow.bSent1 ? ACTIVE + " " + LOW : "");
        EXPECT_EQ(CountLog("3841203 Set MutilPA Gain Success!"), oRow.dwResult == 0 ? 1U : 0U);
        EXPECT_EQ(CountLog("3841204 Cancel MutilPA Gain Success!"), oRow.dwResult == 0 ? 1U : 0U);
        const std::string strFailures = TakeFailures();
        for (const char* pText :
             {"->SetKelvaneStatus(KELVANE_STATUS_ACTIVE)|0 3841110 Set MutilPA Gain Failed! Reason:",
              "->SetKelvaneStatus(KELVANE_STATUS_DEACTIVE)|0 3841111 Cancel MutilPA Gain Failed! Reason:"})
            EXPECT_EQ(strFailures.find(oRow.pFailing + std::string(pText) + std::to_string(oRow.dwResult)) ==
                          std::string::npos,
                      oRow.dwResult == 0);
        CManagerInside::RemoveAmplifiers();
    }
}
} // namespace
