// Parameter sets in names and units.
#include "host/tuning/tuning_show.h"

#include "host/text_format.h"
#include "host/tuning/parameter_names.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace
{

// One value where all speakers have the same, else a list, which ends where all that follow are like the last.
std::string FormatValue(const KelvaneStruParam& oParam, const KelvaneParameterInfo& oInfo)
{
    std::vector<double> vecValues;
    for (int i = 0; i < (oInfo.bPerSpeaker ? KELVANE_MAX_CHANNELS : 1); ++i)
        vecValues.push_back(GetParameter(oParam, oInfo.eParameter, i));
    const size_t uSpeakers = static_cast<size_t>(std::clamp<int>(oParam.sChannelNum, 1, KELVANE_MAX_CHANNELS));
    while (vecValues.size() > uSpeakers && vecValues.back() == vecValues[vecValues.size() - 2])
        vecValues.pop_back();
    if (std::count(vecValues.begin(), vecValues.end(), vecValues.front()) ==
        static_cast<std::ptrdiff_t>(vecValues.size()))
        return FormatNumber(vecValues.front());
    std::string strList;
    for (const double f64Value : vecValues)
        strList += (strList.empty() ? "" : ", ") + FormatNumber(f64Value);
    return "[" + strList + "]";
}

std::string FormatParameters(const KelvaneStruParam& oParam, const KelvaneStruParam* pFirst)
{
    std::string strText;
    for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
    {
        const std::string strValue = FormatValue(oParam, oInfo);
        if (pFirst == nullptr || strValue != FormatValue(*pFirst, oInfo))
            strText += "  " + SourceName(oInfo) + " = " + strValue + "\n";
    }
    if (pFirst == nullptr || oParam.sDIVMode != pFirst->sDIVMode)
        strText += Print("  div_mode = %d\n", oParam.sDIVMode);
    return strText;
}

// Places of the words or of the doubles that the table names, and of the DIV mode, which is the program's.
std::vector<bool> NamedPlaces(bool bDouble)
{
    std::vector<bool> vecNamed(static_cast<size_t>(bDouble ? KELVANE_DOUBLE_COUNT : KELVANE_SHORT_COUNT));
    for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
    {
        const int iEnd = oInfo.iPlace + (oInfo.bPerSpeaker ? KELVANE_MAX_CHANNELS : 1);
        for (int i = oInfo.iPlace; oInfo.bDouble == bDouble && i < iEnd; ++i)
            vecNamed[static_cast<size_t>(i)] = true;
    }
    if (!bDouble)
        vecNamed[offsetof(KelvaneStruParam, sDIVMode) / sizeof(int16_t)] = true;
    return vecNamed;
}

std::string FormatUnnamed(const KelvaneStruParam& oParam, const KelvaneStruParam& oFirst, bool bFirst)
{
    std::string strText;
    int16_t sWords[KELVANE_SHORT_COUNT];
    int16_t sFirst[KELVANE_SHORT_COUNT];
    std::memcpy(sWords, &oParam, sizeof(sWords));
    std::memcpy(sFirst, &oFirst, sizeof(sFirst));
    const std::vector<bool> vecWords = NamedPlaces(false);
    for (size_t i = 0; i < vecWords.size(); ++i)
        if (!vecWords[i] && (bFirst ? sWords[i] != 0 : sWords[i] != sFirst[i]))
            strText += Print("  word %zu = %d\n", i, sWords[i]);
    const std::vector<bool> vecDoubles = NamedPlaces(true);
    for (size_t i = 0; i < vecDoubles.size(); ++i)
    {
        const double f64Value = oParam.sLSMTvcCoef0[i];
        if (!vecDoubles[i] && (bFirst ? f64Value != 0 : f64Value != oFirst.sLSMTvcCoef0[i]))
            strText += Print("  double %zu = ", i) + FormatNumber(f64Value) + "\n";
    }
    return strText;
}

std::string FormatList(const char* pLabel, const std::vector<int>& vecNumbers)
{
    std::string strText = pLabel;
    for (const int iNumber : vecNumbers)
        strText += " " + std::to_string(iNumber);
    return strText + "\n";
}

std::string FormatControl(const TuningSet& oSet)
{
    std::string strText = "control words";
    for (const uint64_t u64Word : oSet.u64Control)
        strText += Print(" 0x%llx", static_cast<unsigned long long>(u64Word));
    return strText + "\n";
}

} // namespace

std::string FormatSets(const TuningFile& oTuning)
{
    const TuningSet& oFirst = oTuning.vecSets.front();
    std::string strText = "library versions " + oTuning.strLibraryVersions + "\ndata version " +
                          oTuning.strDataVersion + "\n" + FormatList("sensors", oTuning.vecSensors) +
                          FormatList("hot above (C)", oTuning.vecHot) + FormatList("cool below (C)", oTuning.vecCool) +
                          FormatList("volume bands (percent)", oTuning.vecVolume) +
                          FormatControl(oTuning.vecSets.back());
    for (const TuningSet& oSet : oTuning.vecSets)
    {
        const bool bFirst = &oSet == &oFirst;
        strText += "\nset " + oSet.strKey + (bFirst ? "" : ", as " + oFirst.strKey + " but for") + "\n" +
                   FormatParameters(oSet.oParam, bFirst ? nullptr : &oFirst.oParam) +
                   FormatUnnamed(oSet.oParam, oFirst.oParam, bFirst);
    }
    return strText;
}
