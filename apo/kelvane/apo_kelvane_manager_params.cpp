// The manager's parameter sets: how the tuning file's lists become records, and how a record is found.
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_tuning_text.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <cstring>
#include <new>

namespace
{
constexpr size_t SHORT_TOKEN_LEN = 6; // "0x" and four digits

// A scan that doesn't fill its one value is logged with its result; the value keeps what it was.
void CheckScan(int iScanned, const AudioLogSite& oSite, const char* pText)
{
    if (iScanned != 1)
        AudioLogFailure(oSite, iScanned, pText);
}
#define AUDIO_SCAN(expression) CheckScan((expression), AUDIO_LOG_SITE, #expression)
} // namespace

void CKelvaneManager::LoadAlgorithmConfig(const tinyxml2::XMLElement* pXmlElement)
{
    if (AUDIO_MISSING(pXmlElement, AUDIO_BAD_DATA))
        return;
    const std::string strKey = AttributeText(pXmlElement, "ID");
    const std::string strValue = AttributeText(pXmlElement, "VALUE");
    if (!strValue.empty())
        m_mapAlgoParam[strKey] = ParseAlgorithmPara(strValue, strKey);
}

// Three runs of tokens: control words, shorts of up to six characters, and from the first longer one on doubles. Tokens
// that the record has no room for are counted and told, not read.
std::unique_ptr<KelvaneStruParam> CKelvaneManager::ParseAlgorithmPara(const std::string& strValue,
                                                                      const std::string& strKey)
{
    const std::vector<std::string> oVctPara = SplitBraceList(strValue);
    const size_t iParaCount = oVctPara.size();
    // Their names are those of the log's texts.
    const std::unique_ptr<INT16[]> g_pShortData(new (std::nothrow) INT16[iParaCount]());
    if (AUDIO_FAIL_IF(g_pShortData == nullptr, AUDIO_BAD_DATA))
        return nullptr;
    const std::unique_ptr<double[]> g_pDoubleData(new (std::nothrow) double[iParaCount]());
    if (AUDIO_FAIL_IF(g_pDoubleData == nullptr, AUDIO_BAD_DATA))
        return nullptr;

    size_t iShortCount = 0;
    size_t iDoubleCount = 0;
    size_t iIgnored = 0;
    for (size_t i = 0; i < iParaCount; ++i)
    {
        const bool bShort = oVctPara[i].size() <= SHORT_TOKEN_LEN && iDoubleCount == 0;
        if (i < ALGO_CTRL_COUNT)
            AUDIO_SCAN(sscanf_s(oVctPara[i].c_str(), "0x%I64x", &m_iAlgoCtrlParam[i]));
        else if (bShort ? iShortCount == KELVANE_SHORT_COUNT : iDoubleCount == KELVANE_DOUBLE_COUNT)
            ++iIgnored;
        else if (bShort)
            AUDIO_SCAN(sscanf_s(oVctPara[i].c_str(), "0x%hx", &g_pShortData[iShortCount++]));
        else
            g_pDoubleData[iDoubleCount++] = CAudioSTR::ToDouble(oVctPara[i]);
    }
    if (iIgnored != 0)
        AUDIOLOG_WARN("Parameter strKey=" + strKey +
                      " has more tokens than its record, ignored:" + std::to_string(iIgnored));

    std::unique_ptr<KelvaneStruParam> pStruParam(new (std::nothrow) KelvaneStruParam());
    if (AUDIO_MISSING(pStruParam, AUDIO_BAD_DATA))
        return nullptr;
    memcpy(pStruParam.get(), g_pShortData.get(), iShortCount * sizeof(INT16));
    memcpy(pStruParam->sLSMTvcCoef0, g_pDoubleData.get(), iDoubleCount * sizeof(double));
    return pStruParam;
}

const KelvaneStruParam* CKelvaneManager::GetAlgorithmStruct(const std::string& strKey) const
{
    const auto itParam = m_mapAlgoParam.find(strKey);
    if (itParam != m_mapAlgoParam.end())
    {
        AUDIOLOG_INFO("Get Parameter from strKey=" + strKey);
        return itParam->second.get();
    }
    if (m_mapAlgoParam.empty())
    {
        AUDIOLOG_EVENT_ERROR(AUDIO_BAD_DATA, std::string(AUDIO_EVENT_PARAM_EMPTY) + "Parameter list is empty!");
        return nullptr;
    }
    const auto& [strFirstKey, pFirst] = *m_mapAlgoParam.begin();
    AUDIOLOG_EVENT_WARN(std::string(AUDIO_EVENT_PARAM_NOT_FOUND) + "Can not find Parameter from strKey=" + strKey +
                        ", Use Default first Parameter strKey=" + strFirstKey);
    return pFirst.get();
}

// The first set in key order speaks for all of them.
void CKelvaneManager::SetDIVModeFlag()
{
    if (m_mapAlgoParam.empty())
        AUDIOLOG_WARN("No Parameter be Loaded in Map!");
    else if (const KelvaneStruParam* pFirst = m_mapAlgoParam.begin()->second.get())
        m_iDIVMode = pFirst->sDIVMode;
    AUDIOLOG_INFO(m_iDIVMode == 1 ? "DIVMode is Open!" : "DIVMode is Close!");
}
