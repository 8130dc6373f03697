// Builds the tuning value from a file: how its lists become tables, and its sets records.
#pragma once

#include "apo/kelvane/tuning/apo_kelvane_tuning.h"

#include <memory>
#include <string>
#include <vector>

namespace tinyxml2
{
class XMLElement;
}

// One file each; on the loading thread.
class CKelvaneTuningLoader
{
public:
    // What the file says. What can't be read is told and stays empty; so does everything without a file, or with one
    // that can't be held in memory.
    CKelvaneTuning Load(const std::string& strPath);
    // Turns a brace list into a record and sets the control words; null when memory ran out. strKey is for the log.
    std::unique_ptr<const KelvaneStruParam> ParseAlgorithmPara(const std::string& strValue, const std::string& strKey);

private:
    void LoadTables(const tinyxml2::XMLElement* pXmlRoot, const std::string& strPath);
    static void LoadTemperatureConfig(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                                      std::vector<INT32>& oVector);
    static void LoadVolumeConfig(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                                 std::vector<INT32>& oVector);
    void LoadAlgorithmConfig(const tinyxml2::XMLElement* pXmlElement);
    void SetDIVModeFlag();

    CKelvaneTuning m_oTuning;
};
