// Tuning files, written and read.
#include "host/tuning/tuning_file.h"

#include "host/host_error.h"
#include "host/text_format.h"
#include "host/tuning/parameter_names.h"

#include <tinyxml2.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace
{

constexpr size_t SHORT_TOKEN_LEN = 6; // "0x" and four digits; the first longer token begins the doubles
constexpr size_t TOKENS_PER_LINE = 30;
constexpr const char* TOKEN_BLANKS = " \t\r\n";

std::vector<std::string> SplitBraces(const char* pText)
{
    std::string strText = pText != nullptr ? pText : "";
    strText = strText.substr(0, strText.rfind('}'));
    strText = strText.substr(strText.rfind('{') + 1);
    std::vector<std::string> vecTokens;
    for (size_t i = 0; i <= strText.size();)
    {
        const size_t iEnd = std::min(strText.find(',', i), strText.size());
        const size_t iFirst = strText.find_first_not_of(TOKEN_BLANKS, i);
        if (iFirst < iEnd)
            vecTokens.push_back(strText.substr(iFirst, strText.find_last_not_of(TOKEN_BLANKS, iEnd - 1) + 1 - iFirst));
        i = iEnd + 1;
    }
    return vecTokens;
}

std::vector<int> ReadList(const tinyxml2::XMLElement& oRoot, const char* pTag)
{
    std::vector<int> vecNumbers;
    if (const auto* pElement = oRoot.FirstChildElement(pTag))
        for (const std::string& strToken : SplitBraces(pElement->Attribute("VALUE")))
            vecNumbers.push_back(std::atoi(strToken.c_str()));
    return vecNumbers;
}

std::string ReadText(const tinyxml2::XMLElement& oRoot, const char* pTag, const char* pAttribute)
{
    const auto* pElement = oRoot.FirstChildElement(pTag);
    const char* pText = pElement != nullptr ? pElement->Attribute(pAttribute) : nullptr;
    return pText != nullptr ? pText : "";
}

uint64_t ReadWord(const std::string& strToken)
{
    uint64_t u64Word = 0;
    if (strToken.rfind("0x", 0) == 0)
        std::from_chars(strToken.data() + 2, strToken.data() + strToken.size(), u64Word, 16);
    return u64Word;
}

double ReadDouble(const std::string& strToken)
{
    double f64Value = 0;
    std::from_chars(strToken.data(), strToken.data() + strToken.size(), f64Value);
    return f64Value;
}

void ReadSet(const std::vector<std::string>& vecTokens, TuningSet& oSet)
{
    int16_t sWords[KELVANE_SHORT_COUNT] = {};
    size_t iWords = 0;
    size_t iDoubles = 0;
    for (size_t i = 0; i < vecTokens.size(); ++i)
    {
        if (i < TUNING_CONTROL_COUNT)
            oSet.u64Control[i] = ReadWord(vecTokens[i]);
        else if (vecTokens[i].size() > SHORT_TOKEN_LEN || iDoubles > 0)
        {
            if (iDoubles < KELVANE_DOUBLE_COUNT)
                oSet.oParam.sLSMTvcCoef0[iDoubles] = ReadDouble(vecTokens[i]);
            ++iDoubles;
        }
        else if (iWords < KELVANE_SHORT_COUNT)
            sWords[iWords++] = static_cast<int16_t>(ReadWord(vecTokens[i]));
    }
    std::memcpy(&oSet.oParam, sWords, sizeof(sWords));
}

// Long enough to be told from a word.
std::string FormatDouble(double f64Value)
{
    std::string strNumber = FormatNumber(f64Value);
    if (strNumber.size() <= SHORT_TOKEN_LEN && strNumber.find_first_of("en") == std::string::npos)
        strNumber += strNumber.find('.') == std::string::npos ? ".000000" : "000000";
    return strNumber;
}

// Words behind the last one that isn't 0 are left out, and doubles likewise: who reads them fills up with zeros.
std::vector<std::string> SetTokens(const TuningSet& oSet)
{
    std::vector<std::string> vecTokens;
    for (const uint64_t u64Word : oSet.u64Control)
        vecTokens.push_back(Print("0x%llx", static_cast<unsigned long long>(u64Word)));
    int16_t sWords[KELVANE_SHORT_COUNT];
    std::memcpy(sWords, &oSet.oParam, sizeof(sWords));
    int iWords = KELVANE_SHORT_COUNT;
    while (iWords > 0 && sWords[iWords - 1] == 0)
        --iWords;
    for (int i = 0; i < iWords; ++i)
        vecTokens.push_back(Print("0x%x", static_cast<unsigned>(static_cast<uint16_t>(sWords[i]))));
    int iDoubles = KELVANE_DOUBLE_COUNT;
    while (iDoubles > 0 && oSet.oParam.sLSMTvcCoef0[iDoubles - 1] == 0)
        --iDoubles;
    for (int i = 0; i < iDoubles; ++i)
        vecTokens.push_back(FormatDouble(oSet.oParam.sLSMTvcCoef0[i]));
    return vecTokens;
}

std::string FormatSet(const TuningSet& oSet)
{
    std::string strText = "        <NV ID=\"" + oSet.strKey + "\" VALUE=\"{";
    const std::vector<std::string> vecTokens = SetTokens(oSet);
    for (size_t i = 0; i < vecTokens.size(); ++i)
    {
        const bool bNewLine = i >= TUNING_CONTROL_COUNT && (i - TUNING_CONTROL_COUNT) % TOKENS_PER_LINE == 0;
        strText += (i > 0 ? "," : "") + std::string(bNewLine ? "\n" : "") + vecTokens[i];
    }
    return strText + "}\"/>\n";
}

std::string FormatList(const char* pTag, const std::vector<int>& vecNumbers)
{
    std::string strList;
    for (const int iNumber : vecNumbers)
        strList += (strList.empty() ? "" : ",") + std::to_string(iNumber);
    return "    <" + std::string(pTag) + " VALUE=\"{" + strList + "}\"/>\n";
}

} // namespace

std::string FormatTuning(const TuningFile& oTuning, const std::string& strSource)
{
    std::string strText =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- Built from " + strSource +
        " by \"apohost tuning build\": change that, not this. -->\n<SENCE_CATEGORY>\n" +
        "    <PLATFROM_VERSION VALUE=\"" + oTuning.strLibraryVersions + "\"/>\n" + "    <PARA_VERSION PARA=\"" +
        oTuning.strDataVersion + "\"/>\n" + FormatList("SENSOR_RANGE_COMMAND", oTuning.vecSensors) +
        FormatList("SENSOR_RANGE_NORMAL", oTuning.vecHot) + FormatList("SENSOR_RANGE_LOW", oTuning.vecCool) +
        FormatList("VOLUME_RANGE", oTuning.vecVolume) + "    <VENDOR>\n";
    for (const TuningSet& oSet : oTuning.vecSets)
        strText += FormatSet(oSet);
    return strText + "    </VENDOR>\n</SENCE_CATEGORY>\n";
}

TuningFile ReadTuning(const std::string& strPath)
{
    tinyxml2::XMLDocument oDocument;
    if (oDocument.LoadFile(strPath.c_str()) != tinyxml2::XML_SUCCESS)
        throw CHostError(strPath + ": " + oDocument.ErrorStr());
    const auto* pRoot = oDocument.FirstChildElement("SENCE_CATEGORY");
    const auto* pVendor = pRoot != nullptr ? pRoot->FirstChildElement("VENDOR") : nullptr;
    if (pVendor == nullptr)
        throw CHostError(strPath + ": no tuning file: SENCE_CATEGORY with VENDOR is expected");
    TuningFile oTuning;
    oTuning.strLibraryVersions = ReadText(*pRoot, "PLATFROM_VERSION", "VALUE");
    oTuning.strDataVersion = ReadText(*pRoot, "PARA_VERSION", "PARA");
    oTuning.vecSensors = ReadList(*pRoot, "SENSOR_RANGE_COMMAND");
    oTuning.vecHot = ReadList(*pRoot, "SENSOR_RANGE_NORMAL");
    oTuning.vecCool = ReadList(*pRoot, "SENSOR_RANGE_LOW");
    oTuning.vecVolume = ReadList(*pRoot, "VOLUME_RANGE");
    for (const auto* pSet = pVendor->FirstChildElement("NV"); pSet != nullptr; pSet = pSet->NextSiblingElement("NV"))
    {
        const char* pKey = pSet->Attribute("ID");
        TuningSet oSet;
        oSet.strKey = pKey != nullptr ? pKey : "";
        ReadSet(SplitBraces(pSet->Attribute("VALUE")), oSet);
        oTuning.vecSets.push_back(oSet);
    }
    if (oTuning.vecSets.empty())
        throw CHostError(strPath + ": holds no parameter set");
    return oTuning;
}

const TuningSet* FindSet(const TuningFile& oTuning, const std::string& strKey)
{
    const TuningSet* pFound = nullptr; // of two with one key the later holds
    for (const TuningSet& oSet : oTuning.vecSets)
        if (oSet.strKey == strKey)
            pFound = &oSet;
    return pFound;
}
