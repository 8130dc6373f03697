// Builds the twelve sets from their source.
#include "host/tuning/tuning_source.h"

#include "host/host_error.h"
#include "host/tuning/parameter_names.h"
#include "host/tuning/source_table.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace
{

constexpr size_t MOST_SENSORS = 16;

// In the order of the bands.
constexpr const char* NORMAL_KEYS[] = {"30000", "30020", "30040", "30060", "30080"};
constexpr const char* HEATED_KEYS[] = {"40000", "40020", "40040", "40060", "40080"};
constexpr const char* SOUND_MODE_KEYS[] = {"50000", "50001"};
constexpr size_t BAND_COUNT = std::size(NORMAL_KEYS);

class CTuningSource
{
public:
    CTuningSource(const toml::table& oRoot, SourceFaults& oFaults)
        : m_oRoot(&oRoot, "the file", oFaults), m_oFaults(oFaults)
    {
    }

    TuningFile Build()
    {
        ReadHead();
        ReadControl();
        ReadBase();
        ReadSets();
        m_oRoot.Finish();
        return m_oTuning;
    }

private:
    void ReadHead()
    {
        CSourceTable oFile(m_oRoot.Table("file"), "[file]", m_oFaults);
        m_oTuning.strLibraryVersions = oFile.Text("library_version");
        m_oTuning.strDataVersion = oFile.Text("data_version");
        oFile.Finish();
        CSourceTable oSensors(m_oRoot.Table("sensors"), "[sensors]", m_oFaults);
        m_oTuning.vecSensors = oSensors.Integers("ids", SENSOR_ID, 0, MOST_SENSORS);
        const size_t uCount = m_oTuning.vecSensors.size();
        const size_t uMost = m_oFaults.vecTexts.empty() ? uCount : MOST_SENSORS; // faulty ids tell no count
        m_oTuning.vecHot = oSensors.Integers("hot_above_c", CELSIUS, uCount, uMost);
        m_oTuning.vecCool = oSensors.Integers("cool_below_c", CELSIUS, uCount, uMost);
        oSensors.Finish();
    }

    void ReadControl()
    {
        CSourceTable oControl(m_oRoot.Table("control"), "[control]", m_oFaults);
        for (const ControlRow& oRow : CONTROL_ROWS)
            m_oBase.u64Control[oRow.uWord] = static_cast<uint64_t>(oControl.Number(oRow.pName, oRow.oRange));
        m_oBase.oParam.sDIVMode = static_cast<int16_t>(oControl.Number("div_mode", SWITCH));
        oControl.Finish();
    }

    // What each speaker has stands in one table, the rest in the other; nothing has a default.
    void ReadBase()
    {
        for (const bool bPerSpeaker : {false, true})
        {
            const char* pTable = bPerSpeaker ? "speaker" : "protection";
            CSourceTable oTable(m_oRoot.Table(pTable), "[" + std::string(pTable) + "]", m_oFaults);
            for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
                if (oInfo.bPerSpeaker == bPerSpeaker)
                    ReadParameter(oTable, oInfo, m_oBase.oParam);
            oTable.Finish();
        }
    }

    // One value for all speakers, or a list with one for each; who comes behind the last is like the last.
    void ReadParameter(CSourceTable& oTable, const KelvaneParameterInfo& oInfo, KelvaneStruParam& oParam)
    {
        const SourceRange oRange = RangeOf(oInfo);
        const size_t uSpeakers = static_cast<size_t>(oParam.sChannelNum);
        const std::vector<double> vecValues = oInfo.bPerSpeaker
                                                  ? oTable.Numbers(SourceName(oInfo), oRange, uSpeakers, uSpeakers)
                                                  : std::vector<double>{oTable.Number(SourceName(oInfo), oRange)};
        for (size_t i = 0; !vecValues.empty() && i < (oInfo.bPerSpeaker ? KELVANE_MAX_CHANNELS : 1); ++i)
            SetParameter(oParam, oInfo.eParameter, vecValues[std::min(i, vecValues.size() - 1)], static_cast<int>(i));
    }

    void ReadOverrides(CSourceTable& oTable, KelvaneStruParam& oParam)
    {
        for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
            if (oTable.Has(SourceName(oInfo)))
                ReadParameter(oTable, oInfo, oParam);
    }

    // vecTables: what stands over the base, topmost first. A rule between numbers is told where its number stands.
    void AddSet(const char* pKey, const KelvaneStruParam& oParam, std::initializer_list<const toml::table*> vecTables)
    {
        TuningSet oSet = m_oBase;
        oSet.strKey = pKey;
        oSet.oParam = oParam;
        m_oTuning.vecSets.push_back(oSet);
        const KelvaneParameterFault oFault = CheckParameters(oParam);
        if (!m_oFaults.vecTexts.empty() || oFault.pRule == nullptr) // a fault in range was told already
            return;
        const std::string strName = SourceName(*oFault.pInfo);
        std::vector<const toml::table*> vecAll = vecTables;
        vecAll.push_back(m_oRoot.Table(oFault.pInfo->bPerSpeaker ? "speaker" : "protection"));
        for (const toml::table* pTable : vecAll)
            if (const toml::node* pNode = pTable != nullptr ? pTable->get(strName) : nullptr)
                return m_oFaults.Add(pNode->source(), strName + ": set " + pKey + ": " + oFault.pRule);
    }

    void ReadSets()
    {
        const toml::array* pBands = m_oRoot.Tables("volume_band", BAND_COUNT);
        const toml::table* pHeated = m_oRoot.Table("heated");
        const CSourceTable oHeated(pHeated, "[heated]", m_oFaults); // tells if it is missing
        m_oTuning.vecVolume = {0};
        for (size_t i = 0; pBands != nullptr && i < BAND_COUNT; ++i)
            ReadBand(*pBands->get_as<toml::table>(i), pHeated, i);
        const toml::array* pModes = m_oRoot.Tables("sound_mode", std::size(SOUND_MODE_KEYS));
        for (size_t i = 0; pModes != nullptr && i < std::size(SOUND_MODE_KEYS); ++i)
        {
            CSourceTable oMode(pModes->get_as<toml::table>(i), "[[sound_mode]]", m_oFaults);
            KelvaneStruParam oParam = m_oBase.oParam;
            ReadOverrides(oMode, oParam);
            oMode.Finish();
            AddSet(SOUND_MODE_KEYS[i], oParam, {pModes->get_as<toml::table>(i)});
        }
    }

    // Two sets: in the heated one [heated] comes over the band, and the band's own part for it over that.
    void ReadBand(const toml::table& oTable, const toml::table* pHeated, size_t uBand)
    {
        CSourceTable oBand(&oTable, "[[volume_band]]", m_oFaults);
        const double f64Above = m_oTuning.vecVolume.back();
        const double f64ForOthers = static_cast<double>(BAND_COUNT - 1 - uBand);
        m_oTuning.vecVolume.push_back(
            static_cast<int>(oBand.Number("up_to_percent", {f64Above + 1, PERCENT.f64Highest - f64ForOthers})));
        KelvaneStruParam oParam = m_oBase.oParam;
        ReadOverrides(oBand, oParam);
        AddSet(NORMAL_KEYS[uBand], oParam, {&oTable});
        if (pHeated != nullptr)
        {
            CSourceTable oHeated(pHeated, "[heated]", m_oFaults);
            ReadOverrides(oHeated, oParam);
            if (uBand == 0)
                oHeated.Finish();
        }
        const toml::table* pOwn = oBand.Table("heated");
        if (pOwn != nullptr)
        {
            CSourceTable oOwn(pOwn, "[volume_band.heated]", m_oFaults);
            ReadOverrides(oOwn, oParam);
            oOwn.Finish();
        }
        AddSet(HEATED_KEYS[uBand], oParam, {pOwn, pHeated, &oTable});
        oBand.Finish();
    }

    CSourceTable m_oRoot;
    SourceFaults& m_oFaults;
    TuningFile m_oTuning;
    TuningSet m_oBase;
};

std::string ReadText(const std::string& strPath)
{
    errno = 0;
    std::ifstream oFile(strPath);
    std::ostringstream oText;
    if (oFile.peek() != std::ifstream::traits_type::eof())
        oText << oFile.rdbuf();
    if (!oFile.is_open() || oFile.bad() || !oText)
        throw CHostError(strPath + ": not readable: " + std::strerror(errno != 0 ? errno : EIO));
    return oText.str();
}

// What a line gives a value to; all that it says, if it gives none.
std::string NameOf(const std::string& strText, size_t uLine)
{
    std::istringstream oText(strText);
    std::string strLine;
    for (size_t i = 0; i < uLine; ++i)
        std::getline(oText, strLine);
    strLine = strLine.substr(0, strLine.find_first_of("=#"));
    const size_t iFirst = std::min(strLine.find_first_not_of(" \t"), strLine.size());
    return strLine.substr(iFirst, strLine.find_last_not_of(" \t\r") + 1 - iFirst);
}

} // namespace

TuningFile ReadTuningSource(const std::string& strPath)
{
    const std::string strSource = ReadText(strPath);
    SourceFaults oFaults{strPath, {}};
    TuningFile oTuning;
    try
    {
        const toml::table oRoot = toml::parse(strSource, strPath);
        oTuning = CTuningSource(oRoot, oFaults).Build();
    }
    catch (const toml::parse_error& oError) // a name given twice, and a value that is none
    {
        const std::string strName = NameOf(strSource, oError.source().begin.line);
        oFaults.Add(oError.source(), strName + ": " + std::string(oError.description()) + AllowedFor(strName));
    }
    if (oFaults.vecTexts.empty())
        return oTuning;
    std::string strText;
    for (const std::string& strFault : oFaults.vecTexts)
        strText += (strText.empty() ? "" : "\n") + strFault;
    throw CHostError(strText);
}
