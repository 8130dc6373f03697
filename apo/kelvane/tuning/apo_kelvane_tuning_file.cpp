// The choice of a tuning file.
#include "apo/kelvane/tuning/apo_kelvane_tuning_file.h"

#include "apo/kelvane/tuning/apo_kelvane_tuning_text.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_system.h"

#include <tinyxml2.h>

#include <cstdio>
#include <map>
#include <memory>
#include <new>
#include <vector>

namespace
{
// The file is ours: what a document opened by itself stays open when it runs out of memory.
tinyxml2::XMLError LoadFile(tinyxml2::XMLDocument& oDocument, const std::string& strPath)
{
    FILE* pOpened = nullptr;
    if (strPath.empty() || fopen_s(&pOpened, strPath.c_str(), "rb") != 0 || pOpened == nullptr)
        return tinyxml2::XML_ERROR_FILE_NOT_FOUND;
    const std::unique_ptr<FILE, int (*)(FILE*)> pFile(pOpened, fclose);
    return oDocument.LoadFile(pOpened);
}
} // namespace

void ReportMissingTag(const char* pText, const std::string& strPath, const AudioLogSite& oSite)
{
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_ERROR, AUDIO_NO_TAG, pText);
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_ERROR, AUDIO_NO_TAG, "Tag missing in xml file:" + strPath);
}

const tinyxml2::XMLElement* OpenConfigFile(tinyxml2::XMLDocument& oDocument, const std::string& strPath,
                                           const AudioLogSite& oSite)
{
    const tinyxml2::XMLError iResult = LoadFile(oDocument, strPath);
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

namespace
{
// The attribute of the root's first child of that name; empty if either is missing.
std::string LoadVersionConfig(const tinyxml2::XMLElement* pXmlRoot, const std::string& strTag,
                              const std::string& strAttr)
{
    const tinyxml2::XMLElement* pXmlTag = FindTag(pXmlRoot, strTag, AUDIO_LOG_SITE);
    return pXmlTag != nullptr ? AttributeText(pXmlTag, strAttr.c_str()) : "";
}

// Whether the file lists the library's version; strVersion is then that of its data. One file that can't be held in
// memory doesn't count; the others do.
bool IsForLibrary(const std::string& strPath, const std::string& strAlgoVersion, std::string& strVersion)
try
{
    tinyxml2::XMLDocument oDocument;
    const tinyxml2::XMLElement* pXmlRoot = OpenConfigFile(oDocument, strPath, AUDIO_LOG_SITE);
    if (pXmlRoot == nullptr)
        return false;
    const std::string strPlatform = LoadVersionConfig(pXmlRoot, "PLATFROM_VERSION", "VALUE");
    strVersion = LoadVersionConfig(pXmlRoot, "PARA_VERSION", "PARA");
    AUDIOLOG_DEBUG("Fuzzy find to File:" + strPath + ",XmlVersion:" + strVersion + ",AlgoVerison:" + strPlatform);
    return ListsVersion(strPlatform, strAlgoVersion);
}
catch (const std::bad_alloc&)
{
    AUDIOLOG_ERROR(AUDIO_BAD_DATA, "Failed to load xml file:" + strPath);
    return false;
}

// The installed file with the greatest tuning version among those made for the library; empty if none.
std::string SelectMatchConfigFile(const std::string& strAlgoVersion)
{
    std::vector<WIN32_FIND_DATAA> oFileList;
    CAudioSYS::GetMatchFileList(AUDIO_DRIVER_DIR, AUDIO_PARAMS_FILE_PATTERN, oFileList);

    std::map<std::string, WIN32_FIND_DATAA> mapCandidate;
    std::string strMaxVersion;
    for (const WIN32_FIND_DATAA& stFile : oFileList)
    {
        std::string strVersion;
        if (!IsForLibrary(std::string(AUDIO_DRIVER_DIR) + stFile.cFileName, strAlgoVersion, strVersion))
            continue;
        mapCandidate[strVersion] = stFile;
        strMaxVersion = NewerVersion(strMaxVersion, strVersion);
    }

    const auto itCandidate = mapCandidate.find(strMaxVersion);
    if (itCandidate == mapCandidate.end())
        return "";
    std::string strResult = std::string(AUDIO_DRIVER_DIR) + itCandidate->second.cFileName;
    AUDIOLOG_INFO("Fuzzy Match to File:" + strResult);
    return strResult;
}
} // namespace

// Each source is asked only while the one before it gave nothing.
std::string FindConfigFile(INT32 iDebugMode, const std::string& strAlgoVersion)
{
    std::string strPath;
    if (iDebugMode == 1)
        strPath = CAudioSYS::GetFuzzyMatchFile(AUDIO_DEBUG_PARAMS_DIR, AUDIO_PARAMS_FILE_PATTERN);
    if (strPath.empty())
        strPath = SelectMatchConfigFile(strAlgoVersion);
    if (strPath.empty())
        strPath = CAudioSYS::GetFuzzyMatchFile(AUDIO_DRIVER_DIR, AUDIO_PARAMS_FILE_PATTERN);
    return strPath;
}
