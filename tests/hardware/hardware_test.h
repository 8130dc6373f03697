// The fixture of the hardware classes' tests: scripted devices, what they were sent as short texts, log lines checked.
#pragma once

#include "audioapi/audio_api_string.h"
#include "platform/control/machine_native.h"
#include "tests/engine/engine_test.h"

// How a device takes its requests from now on; a test changes it between calls.
struct DeviceMood
{
    machine::DeviceAnswer oAnswer;
    DWORD dwOpenError = 0;
    bool bCompleteHung = false; // the request's arrival completes those that the device held back
};

class HardwareTest : public EngineTest
{
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        StartLog(AUDIO_LEVEL_DEBUG);
    }

    // The device answers by the mood, which outlives it.
    static void Attach(const std::string& strName, const DeviceMood& oMood, const std::string& strInterface = "")
    {
        machine::AttachDevice({strName, strInterface, oMood.dwOpenError,
                               [&oMood](const machine::DeviceRequest&)
                               {
                                   if (oMood.bCompleteHung)
                                       machine::CompleteHungRequests();
                                   return oMood.oAnswer;
                               }});
    }

    // What the device was sent since the last ForgetSent: "open", "close", "cancel", and a request's bytes in hex.
    static std::string SentTo(const std::string& strDevice)
    {
        std::string strAll;
        for (const machine::SentItem& oItem : machine::Sent(strDevice))
        {
            strAll += strAll.empty() ? "" : " ";
            strAll += oItem.strWhat != "request" ? oItem.strWhat
                                                 : CAudioSTR::ToHexString(oItem.vecData.data(), oItem.vecData.size());
        }
        return strAll;
    }

    // The WARN and ERROR lines since the last call, as "code text" joined by "|"; an event's WARN has code 0.
    static std::string TakeFailures()
    {
        std::string strAll;
        for (const LogLine& oLine : ReadLog())
            if (oLine.strLevel == "WARN" || oLine.strLevel == "ERROR")
                strAll += (strAll.empty() ? "" : "|") + std::to_string(oLine.iErrorCode) + " " + oLine.strMessage;
        RestartLog();
        return strAll;
    }

    static void RestartLog()
    {
        EmptyLog();
        StartLog(AUDIO_LEVEL_DEBUG);
    }
};
