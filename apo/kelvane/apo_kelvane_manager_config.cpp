// The manager's tuning data: which file is taken, and how its lists are read.
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_tuning_text.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"
#include "platform/hostpath.h"

#include <tinyxml2.h>

#include <algorithm>
#include <iterator>
#include <new>

namespace
{
constexpr UINT32 VOLUME_LIMIT_MAX = 100; // percent

// An element without which the file is of no use; the second line tells which file.
void ReportMissingTag(const char* pText, const std::string& strPath, const AudioLogSite& oSite)
{
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_ERROR, AUDIO_NO_TAG, pText);
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_ERROR, AUDIO_NO_TAG, "Tag missing in xml file:" + strPath);
}

// Parses the file; its root element, or null with the failure logged at the caller's site. The element lives as long as
// the document.
const tinyxml2::XMLElement* OpenConfigFile(tinyxml2::XMLDocument& oDocument, const std::string& strPath,
                                           const AudioLogSite& oSite)
{
    const tinyxml2::XMLError iResult = oDocument.LoadFile(strPath.empty() ? "" : HostPath(strPath).c_str());
    if (iResult != tinyxml2::XML_SUCCESS)
    {
        AUDIO_LOG_AT(oSite, AUDIO_LEVEL_ERROR, iResult, "Failed to load xml file:" + strPath);
        return nullptr;
    }
    const tinyxml2::XMLElement* pXmlRoot = oDocument.FirstChildElement("SENCE_CATEGORY");
    if (pXmlRoot == nullptr)
        ReportMissingTag("Failed to load tag SENCE_CATEGORY", strPath, oSite);
    return pXmlRoot;
}

const tinyxml2::XMLElement* FindTag(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                                    const AudioLogSite& oSite)
{
    const tinyxml2::XMLElement* pXmlTag = pXmlElement->FirstChildElement(strTag.c_str());
    if (pXmlTag == nullptr)
        AUDIO_LOG_AT(oSite, AUDIO_LEVEL_WARN, 0, "Config file not have Tag:" + strTag);
    return pXmlTag;
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
    for (const std::string& strToken : SplitBraceList(strText))
        oValues.push_back(CAudioSTR::ToInt(strToken));
    return true;
}
} // namespace

// Each source is asked only while the one before it gave nothing. A path that stays empty fails as a missing file does.
void CKelvaneManager::LoadConfigFile()
{
    std::string strPath;
    if (m_iDebugMode == 1)
        strPath = CAudioSYS::GetFuzzyMatchFile(AUDIO_DEBUG_PARAMS_DIR, AUDIO_PARAMS_FILE_PATTERN);
    if (strPath.empty())
        strPath = SelectMatchConfigFile();
    if (strPath.empty())
        strPath = CAudioSYS::GetFuzzyMatchFile(AUDIO_DRIVER_DIR, AUDIO_PARAMS_FILE_PATTERN);

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
}

void CKelvaneManager::LoadTables(const tinyxml2::XMLElement* pXmlRoot, const std::string& strPath)
{
    LoadTemperatureConfig(pXmlRoot, "SENSOR_RANGE_COMMAND", m_vecSensorRangeCommand);
    LoadTemperatureConfig(pXmlRoot, "SENSOR_RANGE_NORMAL", m_vecSensorRangeNormal);
    LoadTemperatureConfig(pXmlRoot, "SENSOR_RANGE_LOW", m_vecSensorRangeLow);
    if (m_vecSensorRangeNormal.size() != m_vecSensorRangeCommand.size() ||
        m_vecSensorRangeLow.size() != m_vecSensorRangeCommand.size())
        AUDIOLOG_WARN("Sensor lists differ in length, a sensor without a limit is never hot or cool");
    LoadVolumeConfig(pXmlRoot, "VOLUME_RANGE", m_vecVolumeRange);

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

std::string CKelvaneManager::SelectMatchConfigFile() const
{
    std::vector<WIN32_FIND_DATAA> oFileList;
    CAudioSYS::GetMatchFileList(AUDIO_DRIVER_DIR, AUDIO_PARAMS_FILE_PATTERN, oFileList);

    std::map<std::string, WIN32_FIND_DATAA> mapCandidate;
    std::string strMaxVersion;
    for (const WIN32_FIND_DATAA& stFile : oFileList)
    {
        std::string strVersion;
        if (!IsForLibrary(std::string(AUDIO_DRIVER_DIR) + stFile.cFileName, strVersion))
            continue;
        mapCandidate[strVersion] = stFile;
        strMaxVersion = CAudioSTR::GetMaxVersion(strMaxVersion, strVersion, ".");
    }

    const auto itCandidate = mapCandidate.find(strMaxVersion);
    if (itCandidate == mapCandidate.end())
        return "";
    const std::string strResult = std::string(AUDIO_DRIVER_DIR) + itCandidate->second.cFileName;
    AUDIOLOG_INFO("Fuzzy Match to File:" + strResult);
    return strResult;
}

// One file that can't be held in memory doesn't count; the others do.
bool CKelvaneManager::IsForLibrary(const std::string& strPath, std::string& strVersion) const
try
{
    tinyxml2::XMLDocument oDocument;
    const tinyxml2::XMLElement* pXmlRoot = OpenConfigFile(oDocument, strPath, AUDIO_LOG_SITE);
    if (pXmlRoot == nullptr)
        return false;
    const std::string strPlatform = LoadVersionConfig(pXmlRoot, "PLATFROM_VERSION", "VALUE");
    strVersion = LoadVersionConfig(pXmlRoot, "PARA_VERSION", "PARA");
    AUDIOLOG_DEBUG("Fuzzy find to File:" + strPath + ",XmlVersion:" + strVersion + ",AlgoVerison:" + strPlatform);
    const std::vector<std::string> oPlatforms = CAudioSTR::Split(strPlatform, ",");
    return std::find(oPlatforms.begin(), oPlatforms.end(), m_strAlgoVersion) != oPlatforms.end();
}
catch (const std::bad_alloc&)
{
    AUDIOLOG_ERROR(AUDIO_BAD_DATA, "Failed to load xml file:" + strPath);
    return false;
}

std::string CKelvaneManager::LoadVersionConfig(const tinyxml2::XMLElement* pXmlRoot, const std::string& strTag,
                                               const std::string& strAttr) const
{
    const tinyxml2::XMLElement* pXmlTag = FindTag(pXmlRoot, strTag, AUDIO_LOG_SITE);
    return pXmlTag != nullptr ? AttributeText(pXmlTag, strAttr.c_str()) : "";
}

void CKelvaneManager::LoadTemperatureConfig(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                                            std::vector<INT32>& oVector) const
{
    std::vector<INT32> oValues;
    if (ReadIntegerList(pXmlElement, strTag, oValues, AUDIO_LOG_SITE))
        oVector = oValues;
}

// Anything but six limits that are percentages gives the default bands.
void CKelvaneManager::LoadVolumeConfig(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                                       std::vector<INT32>& oVector) const
{
    std::vector<INT32> oValues;
    if (ReadIntegerList(pXmlElement, strTag, oValues, AUDIO_LOG_SITE))
    {
        oVector.clear();
        std::copy_if(oValues.begin(), oValues.end(), std::back_inserter(oVector),
                     [](INT32 iValue) { return static_cast<UINT32>(iValue) <= VOLUME_LIMIT_MAX; });
    }
    if (oVector.size() != VOLUME_LIMIT_COUNT)
    {
        AUDIOLOG_WARN("Config Volume Param Number is Invalid!");
        oVector = {0, 20, 40, 60, 80, 100};
    }
}
