// One amplifier, and several as one: how each answer of the driver is told, and what it was sent.
#include "tests/hardware/hardware_test.h"

#include "apo/kelvane/apo_kelvane_irp.h"

#include <chrono>
#include <thread>

namespace
{
constexpr char ACTIVE[] = "0000000000000000";
constexpr char LOW[] = "0000000002000000";

using AmplifierTest = HardwareTest;

TEST_F(AmplifierTest, TellsHowTheDriverTookTheStatus)
{
    const std::string strRequestFailed = "Execute DeviceIoControl failed! dwStatusCtrl:2";
    const std::string strWaitFailed = "Execute GetOverlappedResult failed! dwStatusCtrl:2";
    const struct
    {
        const char* pName;
        machine::DeviceAnswer oAnswer;
        DWORD dwResult;
        std::string strFailure;
    } aRows[] = {
        {"at once", {0, AT_ONCE, 0, {}}, 0, ""},
        {"late", {0, LATE, 20, {}}, 0, ""},
        {"refused", {31, AT_ONCE, 0, {}}, 31, strRequestFailed},
        {"fails on completion", {1117, LATE, 20, {}}, 1117, strWaitFailed},
        {"never", {0, machine::Completion::Never, 0, {}}, ERROR_TIMEOUT, strWaitFailed},
        {"never, heeds no cancelling", {0, machine::Completion::Deaf, 0, {}}, ERROR_TIMEOUT, strWaitFailed},
    };
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(oRow.pName);
        RestartLog();
        DeviceMood oMood;
        Attach("KELVANE_DEVICE0", oMood);
        {
            CKelvaneIRP oIRP(AUDIO_KELVANE_DEVICE0);
            EXPECT_TRUE(HasLine("Success to Initialize IRP interface:\\\\.\\KELVANE_DEVICE0", 0, "INFO"));
            oMood.oAnswer = oRow.oAnswer;
            const auto oStart = std::chrono::steady_clock::now();
            EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_DEACTIVE), oRow.dwResult);
            EXPECT_LT(std::chrono::steady_clock::now() - oStart, std::chrono::seconds(4));
            EXPECT_EQ(oRow.strFailure.empty() || HasLine(oRow.strFailure, oRow.dwResult), true);
            EXPECT_EQ(CountLog(" Status Success! dwStatusCtrl:2"), oRow.dwResult == 0 ? 1U : 0U);
            // The next request is served, also when this one completes while the next is waited for.
            oMood.oAnswer = {0, LATE, 50, {}};
            oMood.bCompleteHung = true;
            EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_ACTIVE), 0U);
        }
        const std::string strCancel = oRow.dwResult == ERROR_TIMEOUT ? " cancel" : "";
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"),
                  std::string("open ") + ACTIVE + " " + LOW + strCancel + " " + ACTIVE + " " + LOW + " cancel close");
        EXPECT_EQ(machine::Sent("KELVANE_DEVICE0")[1].dwCode, 0x04001C14U);
        EXPECT_EQ(machine::Sent("KELVANE_DEVICE0")[1].dwOutputSize, 0U);
    }
}

TEST_F(AmplifierTest, AbsentDeviceCountsAsSuccess)
{
    const struct
    {
        const char* pName;
        bool bAttached;
        DWORD dwOpenError;
        bool bEvent;
        const char* pLine;
        int iCode;
        const char* pLevel;
        const char* pSent;
    } aRows[] = {
        {"none", false, 0, true, "IRP interface: \\\\.\\KELVANE_DEVICE0 not support! reason:2", 0, "WARN", ""},
        {"refuses", true, 5, true, "IRP interface: \\\\.\\KELVANE_DEVICE0 not support! reason:5", 0, "WARN",
         "open open open open"},
        {"no event", true, 0, false, "m_hEvent", 6, "ERROR", "open cancel close"},
    };
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(oRow.pName);
        RestartLog();
        const DeviceMood oMood{{}, oRow.dwOpenError};
        if (oRow.bAttached)
            Attach("KELVANE_DEVICE0", oMood);
        if (!oRow.bEvent)
            machine::FailNext("CreateEventW", 8);
        {
            CKelvaneIRP oIRP(AUDIO_KELVANE_DEVICE0);
            EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_DEACTIVE), 0U);
        }
        EXPECT_TRUE(HasLine(oRow.pLine, oRow.iCode, oRow.pLevel));
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"), oRow.pSent);
    }
}

TEST_F(AmplifierTest, StreamsThatStartTogetherSendOneRequestAtATime)
{
    std::atomic<int> iInFlight{0};
    std::atomic<int> iMost{0};
    machine::AttachDevice({"KELVANE_DEVICE0", "", 0,
                           [&](const machine::DeviceRequest&)
                           {
                               iMost = std::max<int>(iMost, ++iInFlight);
                               Sleep(1);
                               --iInFlight;
                               return machine::DeviceAnswer{0, LATE, 1, {}};
                           }});
    CKelvaneIRP oIRP(AUDIO_KELVANE_DEVICE0);
    std::vector<std::thread> vecThreads;
    for (int i = 0; i < 4; ++i)
        vecThreads.emplace_back(
            [&]
            {
                for (int k = 0; k < 10; ++k)
                    EXPECT_EQ(oIRP.SetKelvaneStatus(KELVANE_STATUS_ACTIVE), 0U);
            });
    for (std::thread& oThread : vecThreads)
        oThread.join();
    EXPECT_EQ(iMost, 1);
}

TEST_F(AmplifierTest, ManagerTreatsAmplifiersAsOne)
{
    const struct
    {
        int iNumber; // of control word 1
        DWORD dwError0, dwError1;
        DWORD dwResult;
        bool bSent0, bSent1;
    } aRows[] = {
        {0, 0, 0, 0, false, false}, {1, 0, 0, 0, true, false},   {2, 0, 0, 0, true, true},
        {3, 0, 0, 0, false, false}, {2, 31, 5, 31, true, false}, {2, 0, 5, 5, true, true},
    };
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(std::to_string(oRow.iNumber) + " " + std::to_string(oRow.dwResult));
        RestartLog();
        DeviceMood oMood0, oMood1;
        Attach("KELVANE_DEVICE0", oMood0);
        Attach("KELVANE_DEVICE1", oMood1);
        CKelvaneManager* const pManager = CKelvaneManager::Instance();
        pManager->m_iAlgoCtrlParam[1] = oRow.iNumber;
        pManager->InitializeIRP();
        EXPECT_TRUE(HasLine("Config PA Number:" + std::to_string(oRow.iNumber), 0, "INFO"));
        EXPECT_EQ(HasLine("Not support " + std::to_string(oRow.iNumber) + " PA !", 0, "WARN"),
                  oRow.iNumber != 1 && oRow.iNumber != 2);
        machine::ForgetSent();
        oMood0.oAnswer.dwError = oRow.dwError0;
        oMood1.oAnswer.dwError = oRow.dwError1;
        EXPECT_EQ(pManager->ActiveMutilPAGain(), oRow.dwResult);
        EXPECT_EQ(pManager->DeactiveMutilPAGain(), oRow.dwResult);
        const std::string strBoth = std::string(ACTIVE) + " " + LOW;
        EXPECT_EQ(SentTo("KELVANE_DEVICE0"), oRow.bSent0 ? strBoth : "");
        EXPECT_EQ(SentTo("KELVANE_DEVICE1"), oRow.bSent1 ? strBoth : "");
        const std::string strCode = std::to_string(oRow.dwResult);
        const bool bDone = oRow.dwResult == 0;
        EXPECT_EQ(HasLine("3841203 Set MutilPA Gain Success!", 0, "INFO"), bDone);
        EXPECT_EQ(HasLine("3841204 Cancel MutilPA Gain Success!", 0, "INFO"), bDone);
        EXPECT_EQ(HasLine("3841110 Set MutilPA Gain Failed! Reason:" + strCode, 0, "WARN"), !bDone);
        EXPECT_EQ(HasLine("3841111 Cancel MutilPA Gain Failed! Reason:" + strCode, 0, "WARN"), !bDone);
        for (int i = 0; i < 2; ++i)
            for (const char* pStatus : {"ACTIVE", "DEACTIVE"})
                EXPECT_EQ(HasLine("m_pIRP" + std::to_string(i) + "->SetKelvaneStatus(KELVANE_STATUS_" + pStatus + ")",
                                  oRow.dwResult),
                          !bDone && i == (oRow.dwError0 != 0 ? 0 : 1));
        pManager->m_pIRP0.reset();
        pManager->m_pIRP1.reset();
    }
}
} // namespace
