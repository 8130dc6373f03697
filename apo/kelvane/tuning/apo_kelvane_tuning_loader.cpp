// The reading of a tuning file.
#include "apo/kelvane/tuning/apo_kelvane_tuning_loader.h"

#include "apo/kelvane/tuning/apo_kelvane_tuning_file.h"
#include "apo/kelvane/tuning/apo_kelvane_tuning_text.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <tinyxml2.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

namespace
{
constexpr UINT32 VOLUME_LIMIT_MAX = 100; // percent
constexpr size_t SHORT_TOKEN_LEN = 6;    // "0x" and four digits

// A scan that doesn't fill its one value is logged with its result; the value keeps what it was.
void CheckScan(int iScanned, const AudioLogSite& oSite, const char* pText)
{
    if (iScanned != 1)
        AudioLogFailure(oSite, iScanned, pText);
}
#define AUDIO_SCAN(expression) CheckScan((expression), AUDIO_LOG_SITE, #expression)

struct TokenCounts
{
    size_t iShorts;
    size_t iDoubles;
    size_t iIgnored;
};

// Three runs of tokens: control words, shorts of up to six characters, and from the first longer one on doubles. Tokens
// that the record has no room for are counted, not read. The names are those of the log's texts.
TokenCounts ReadTokens(const std::vector<std::string>& oVctPara, INT64* m_iAlgoCtrlParam, INT16* g_pShortData,
                       double* g_pDoubleData)
{
    size_t iShortCount = 0;
    size_t iDoubleCount = 0;
    size_t iIgnored = 0;
    for (size_t i = 0; i < oVctPara.size(); ++i)
    {
        const bool bShort = oVctPara[i].size() <= SHORT_TOKEN_LEN && iDoubleCount == 0;
        if (i < CKelvaneTuning::ALGO_CTRL_COUNT)
            AUDIO_SCAN(sscanf_s(oVctPara[i].c_str(), "0x%I64x", &m_iAlgoCtrlParam[i]));
        else if (bShort ? iShortCount == KELVANE_SHORT_COUNT : iDoubleCount == KELVANE_DOUBLE_COUNT)
            ++iIgnored;
        else if (bShort)
            AUDIO_SCAN(sscanf_s(oVctPara[i].c_str(), "0x%hx", &g_pShortData[iShortCount++]));
        else
            g_pDoubleData[iDoubleCount++] = CAudioSTR::ToDouble(oVctPara[i]);
    }
    return {iShortCount, iDoubleCount, iIgnored};
}

// The integers of the tag's list; false, and logged at the caller's site, if element or tag is missing.
bool ReadIntegerList(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag, std::vector<INT32>& oValues,
                     const AudioLogSite& oSite)
{
    if (AudioCheckCondition(pXmlElement == nullptr, oSite, AUDIO_BAD_DATA, "pXmlElement"))
        return false;
    const tinyxml2::XMLElement* pXmlTag = FindTag(pXmlElement, strTag, oSite);
    if (pXmlTag == nullptr)
        return false;
    const std::string strText = AttributeText(pXmlTag, "VALUE");
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_INFO, 0, strTag + ":" + strText);
    oValues = BraceIntegers(strText);
    return true;
}
} // namespace

// A path that is empty fails as a missing file does.
CKelvaneTuning CKelvaneTuningLoader::Load(const std::string& strPath)
{
    try
    {
        tinyxml2::XMLDocument oDocument;
        if (const tinyxml2::XMLElement* pXmlRoot = OpenConfigFile(oDocument, strPath, AUDIO_LOG_SITE))
            LoadTables(pXmlRoot, strPath);
    }
    catch (const std::bad_alloc&)
    {
        AUDIOLOG_ERROR(AUDIO_BAD_DATA, "Failed to load xml file:" + strPath);
    }
    return std::move(m_oTuning);
}

void CKelvaneTuningLoader::LoadTables(const tinyxml2::XMLElement* pXmlRoot, const std::string& strPath)
{
    LoadTemperatureConfig(pXmlRoot, "SENSOR_RANGE_COMMAND", m_oTuning.m_vecSensorRangeCommand);
    LoadTemperatureConfig(pXmlRoot, "SENSOR_RANGE_NORMAL", m_oTuning.m_vecSensorRangeNormal);
    LoadTemperatureConfig(pXmlRoot, "SENSOR_RANGE_LOW", m_oTuning.m_vecSensorRangeLow);
    if (m_oTuning.m_vecSensorRangeNormal.size() != m_oTuning.m_vecSensorRangeCommand.size() ||
        m_oTuning.m_vecSensorRangeLow.size() != m_oTuning.m_vecSensorRangeCommand.size())
        AUDIOLOG_WARN("Sensor lists differ in length, a sensor without a limit is never hot or cool");
    LoadVolumeConfig(pXmlRoot, "VOLUME_RANGE", m_oTuning.m_vecVolumeRange);

    const tinyxml2::XMLElement* pXmlVendor = pXmlRoot->FirstChildElement("VENDOR");
    if (pXmlVendor == nullptr)
    {
        ReportMissingTag("Failed to load tag VENDOR", strPath, AUDIO_LOG_SITE);
        return;
    }
    for (const tinyxml2::XMLElement* pXmlElement = pXmlVendor->FirstChildElement("NV"); pXmlElement != nullptr;
         pXmlElement = pXmlElement->NextSiblingElement("NV"))
        LoadAlgorithmConfig(pXmlElement);
    SetDIVModeFlag();
}

void CKelvaneTuningLoader::LoadTemperatureConfig(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                                                 std::vector<INT32>& oVector)
{
    std::vector<INT32> oValues;
    if (ReadIntegerList(pXmlElement, strTag, oValues, AUDIO_LOG_SITE))
        oVector = oValues;
}

// Anything but six limits that are percentages gives the default bands.
void CKelvaneTuningLoader::LoadVolumeConfig(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                                            std::vector<INT32>& oVector)
{
    std::vector<INT32> oValues;
    if (ReadIntegerList(pXmlElement, strTag, oValues, AUDIO_LOG_SITE))
    {
        oVector.clear();
        std::copy_if(oValues.begin(), oValues.end(), std::back_inserter(oVector),
                     [](INT32 iValue) { return static_cast<UINT32>(iValue) <= VOLUME_LIMIT_MAX; });
    }
    if (oVector.size() != CKelvaneTuning::VOLUME_LIMIT_COUNT)
    {
        AUDIOLOG_WARN("Config Volume Param Number is Invalid!");
        oVector = {0, 20, 40, 60, 80, 100};
    }
}

void CKelvaneTuningLoader::LoadAlgorithmConfig(const tinyxml2::XMLElement* pXmlElement)
{
    if (AUDIO_MISSING(pXmlElement, AUDIO_BAD_DATA))
        return;
    const std::string strKey = AttributeText(pXmlElement, "ID");
    const std::string strValue = AttributeText(pXmlElement, "VALUE");
    if (!strValue.empty())
        m_oTuning.m_mapAlgoParam[strKey] = ParseAlgorithmPara(strValue, strKey);
}

std::unique_ptr<const KelvaneStruParam> CKelvaneTuningLoader::ParseAlgorithmPara(const std::string& strValue,
                                                                                 const std::string& strKey)
{
    const std::vector<std::string> oVctPara = SplitBraceList(strValue);
    const size_t iParaCount = oVctPara.size();
    const std::unique_ptr<INT16[]> g_pShortData(new (std::nothrow) INT16[iParaCount]());
    if (AUDIO_FAIL_IF(g_pShortData == nullptr, AUDIO_BAD_DATA))
        return nullptr;
    const std::unique_ptr<double[]> g_pDoubleData(new (std::nothrow) double[iParaCount]());
    if (AUDIO_FAIL_IF(g_pDoubleData == nullptr, AUDIO_BAD_DATA))
        return nullptr;
    const TokenCounts oCounts =
        ReadTokens(oVctPara, m_oTuning.m_iAlgoCtrlParam, g_pShortData.get(), g_pDoubleData.get());
    if (oCounts.iIgnored != 0)
        AUDIOLOG_WARN("Parameter strKey=" + strKey +
                      " has more tokens than its record, ignored:" + std::to_string(oCounts.iIgnored));

    std::unique_ptr<KelvaneStruParam> pStruParam(new (std::nothrow) KelvaneStruParam());
    if (AUDIO_MISSING(pStruParam, AUDIO_BAD_DATA))
        return nullptr;
    memcpy(pStruParam.get(), g_pShortData.get(), oCounts.iShorts * sizeof(INT16));
    memcpy(pStruParam->sLSMTvcCoef0, g_pDoubleData.get(), oCounts.iDoubles * sizeof(double));
    return pStruParam;
}

// The first set in key order speaks for all of them.
void CKelvaneTuningLoader::SetDIVModeFlag()
{
    if (m_oTuning.m_mapAlgoParam.empty())
        AUDIOLOG_WARN("No Parameter be Loaded in Map!");
    else if (const KelvaneStruParam* pFirst = m_oTuning.m_mapAlgoParam.begin()->second.get())
        m_oTuning.m_iDIVMode = pFirst->sDIVMode;
    AUDIOLOG_INFO(m_oTuning.m_iDIVMode == 1 ? "DIVMode is Open!" : "DIVMode is Close!");
}
