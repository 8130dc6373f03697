// The one object of the process: brings log, protection library and tuning data up, holds them, and goes down last.
#pragma once

#include "apo/kelvane/apo_kelvane_irp.h"
#include "apo/kelvane/engine/apo_kelvane_entry_points.h"
#include "audioapi/audio_api_singleton.h"
#include "protection/kelvane_protection.h"

#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tinyxml2
{
class XMLElement;
}

// Everything is written by Initialize on the loading thread, before any engine exists, and only read afterwards.
class CKelvaneManager : public CAudioSingleton<CKelvaneManager>, public CKelvaneEntryPoints
{
public:
    static constexpr size_t ALGO_CTRL_COUNT = 8;
    static constexpr size_t VOLUME_LIMIT_COUNT = 6;

    ~CKelvaneManager();

    // Runs every start-up step; each handles its own failure. Once, on the loading thread.
    void Initialize(HMODULE hModule);

    // The exports' bodies. Any thread; HRESULT values.
    // S_FALSE while an object lives or a server lock is held.
    HRESULT CanUnloadNow() const;
    HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
    HRESULT RegisterAllFX();
    HRESULT UnregisterAllFX();

    const CKelvaneEntryPoints& EntryPoints() const { return *this; }
    // TRUE when the library is loaded whole. Any thread.
    BOOL GetLoadDLLStatus() const { return m_bLoadDLL; }
    // The control word, 0 for an index of ALGO_CTRL_COUNT or more. Any thread.
    INT64 GetAlgoCtrlParam(UINT64 iIndex) const;
    // The key's record, or the first one, or null when there is none. Stays the manager's. Any thread.
    const KelvaneStruParam* GetAlgorithmStruct(const std::string& strKey) const;

    // Appends one line to the day's record file in debug mode, when its folder exists. strFile is the file's path up to
    // the date, iOffload nonzero for an engine in inline mode. Any thread; one thread per file.
    void PrintSmartDebugLog(const char* strFile, const char* strText, const int& iOffload) const;

    void LoadProcessDll();
    // Reads the version record into m_strAlgoVersion; the library's code.
    INT32 AudioKelvaneGetVersion();

    // Chooses the tuning file, parses it and fills the tables. A file that can't be held in memory is told and passed
    // over.
    void LoadConfigFile();
    // The installed file with the greatest tuning version among those made for the loaded library; empty if none.
    std::string SelectMatchConfigFile() const;
    // The attribute of the root's first child of that name; empty if either is missing.
    std::string LoadVersionConfig(const tinyxml2::XMLElement* pXmlRoot, const std::string& strTag,
                                  const std::string& strAttr) const;
    void LoadTemperatureConfig(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                               std::vector<INT32>& oVector) const;
    void LoadVolumeConfig(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                          std::vector<INT32>& oVector) const;
    void LoadAlgorithmConfig(const tinyxml2::XMLElement* pXmlElement);
    // Turns a brace list into a record and sets the control words; null when memory ran out. strKey is for the log.
    std::unique_ptr<KelvaneStruParam> ParseAlgorithmPara(const std::string& strValue, const std::string& strKey);
    void SetDIVModeFlag();
    // Brings the make's gain object up when control word 0 is 1.
    void LoadSenaryGain();
    void LoadEverestGain();

    // Makes as many amplifier objects, one or two, as control word 1 says.
    void InitializeIRP();
    // Sets every amplifier active, or low. The first failure's code, which spares the other one. Threads that may wait
    // for a driver.
    DWORD ActiveMutilPAGain();
    DWORD DeactiveMutilPAGain();

    std::unique_ptr<CKelvaneIRP> m_pIRP0; // null where the tuning file declares none
    std::unique_ptr<CKelvaneIRP> m_pIRP1;
    HMODULE m_hDll = nullptr;      // the protection library
    HMODULE m_hInstance = nullptr; // this module
    INT64 m_iAlgoCtrlParam[ALGO_CTRL_COUNT] = {};
    INT32 m_iDIVMode = 0;   // 1: DIV mode
    INT32 m_iDebugMode = 0; // 1: debug mode
    std::vector<INT32> m_vecSensorRangeCommand;
    std::vector<INT32> m_vecSensorRangeNormal; // upper limits, degrees Celsius
    std::vector<INT32> m_vecSensorRangeLow;    // lower limits, degrees Celsius
    std::vector<INT32> m_vecVolumeRange;       // VOLUME_LIMIT_COUNT, percent; empty without a tuning file
    BOOL m_bLoadDLL = FALSE;
    std::string m_strAlgoVersion;
    std::map<std::string, std::unique_ptr<KelvaneStruParam>> m_mapAlgoParam;

private:
    friend class CAudioSingleton<CKelvaneManager>;
    CKelvaneManager() = default;

    INT32 FindExports();
    // strPath is for the log.
    void LoadTables(const tinyxml2::XMLElement* pXmlRoot, const std::string& strPath);
    // Whether the file lists the loaded library's version; strVersion is then that of its data.
    bool IsForLibrary(const std::string& strPath, std::string& strVersion) const;
};
