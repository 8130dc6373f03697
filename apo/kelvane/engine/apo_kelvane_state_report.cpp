// The text of the library's live state.
#include "apo/kelvane/engine/apo_kelvane_state_report.h"

#include "apo/kelvane/apo_kelvane_manager.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"

#include <cstdio>
#include <string>
#include <utility>

namespace
{

struct PrintItem
{
    const char* pName;
    int16_t (KelvaneStruParam::*pField)[8];
    float fDivisor;
    const char* pFailure;
};

// In the order of the text.
constexpr PrintItem aPrintItem[] = {
    {"sFFModule", &KelvaneStruParam::sFFModule, 1, "Print kelvane FFModule Param failed!"},
    {"sIPWCurrentGain", &KelvaneStruParam::sIPWCurrentGain, 10000, "Print kelvane IPWCurrentGain Param failed!"},
    {"sIPWPCurrent", &KelvaneStruParam::sIPWPCurrent, 1000, "Print kelvane IPWCurrent Param failed!"},
    {"sIPWPctmax", &KelvaneStruParam::sIPWPctmax, 1000, "Print kelvane IPWPctmax Param failed!"},
    {"sLSMRe", &KelvaneStruParam::sLSMRe, 100, "Print kelvane LSMRe Param failed!"},
    {"sLSMReWire", &KelvaneStruParam::sLSMReWire, 100, "Print kelvane LSMReWire Param failed!"},
    {"sLSMCoilTemp", &KelvaneStruParam::sLSMCoilTemp, 100, "Print kelvane LSMCoilTemp Param failed!"},
    {"sPOWPrms", &KelvaneStruParam::sPOWPrms, 100, "Print kelvane POWPrms Param failed!"},
    {"sPOWTargetGain", &KelvaneStruParam::sPOWTargetGain, 100, "Print kelvane POWTargetGain Param failed!"},
    {"sTEPCurrentGain", &KelvaneStruParam::sTEPCurrentGain, 100, "Print kelvane sTEPCurrentGain Param failed!"},
    {"sANDCurrentGain", &KelvaneStruParam::sANDCurrentGain, 100, "Print kelvane ANDCurrentGain Param failed!"},
};

std::string PrintField(const PrintItem& oItem, const KelvaneStruParam& oStruParam)
{
    float fValues[8];
    for (int i = 0; i < 8; ++i)
        fValues[i] = static_cast<float>((oStruParam.*oItem.pField)[i]) / oItem.fDivisor;
    char szText[1024] = {};
    const int iLen =
        snprintf(szText, sizeof(szText), "%s[8]=%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f;", oItem.pName, fValues[0],
                 fValues[1], fValues[2], fValues[3], fValues[4], fValues[5], fValues[6], fValues[7]);
    if (iLen < 1)
        AUDIOLOG_ERROR(AUDIO_BAD_DATA, oItem.pFailure);
    return szText;
}
} // namespace

// Ends in a line end, so that each state stands on a line of its own in the file.
std::string CKelvaneStateReport::PrintSingleItemPara(const KelvaneStruParam& pStruParam) const
{
    char szText[1024] = {};
    const int iLen = snprintf(
        szText, sizeof(szText),
        "sLSMMonitorTemp = %.2f;                              "
        "sBCNCurrentGain = %.2f;                              "
        "SpeakerDBVolume = %.2f,                              "
        "SpeakerPersentVolume = %d,                              "
        "BatteryLifePercent = %d,                              "
        "ACLineStatus = %d\n",
        static_cast<float>(pStruParam.sLSMMonitorTemp), static_cast<float>(pStruParam.sBCNCurrentGain) / 100.0F,
        CAudioMonitor::Instance()->GetSpeakerVolumeDB(), CAudioMonitor::Instance()->GetSpeakerVolume(),
        m_oPower.Status().BatteryLifePercent, m_oPower.Status().ACLineStatus);
    if (iLen < 1)
        AUDIOLOG_ERROR(AUDIO_BAD_DATA, "Print kelvane Single Item Param failed!");
    return szText;
}

std::string CKelvaneStateReport::AudioSmartPrintPara()
{
    if (CKelvaneManager::Instance()->GetDebugMode() != 1)
        return {};
    KelvaneStruParam pStruParam = {};
    m_oInstance.GetPara(pStruParam);
    std::string strText = std::string("KelvParamID:") + m_oChoice.ParamID() + ";";
    for (const PrintItem& oItem : aPrintItem)
        strText += PrintField(oItem, pStruParam);
    return strText + PrintSingleItemPara(pStruParam);
}

int CKelvaneStateReport::AudioSmartGatherPara()
{
    m_strStates += AudioSmartPrintPara();
    return 0;
}

int CKelvaneStateReport::AudioSmartRecordPara(int iOffload)
{
    const std::string strStates = std::exchange(m_strStates, {});
    CKelvaneManager::Instance()->PrintSmartDebugLog(AUDIO_PARAMETERS_FILE, strStates.c_str(), iOffload);
    return 0;
}
