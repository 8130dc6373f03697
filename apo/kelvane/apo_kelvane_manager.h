// The one object of the process: brings log, protection library and tuning data up, holds them, and goes down last.
#pragma once

#include "apo/kelvane/apo_kelvane_irp.h"
#include "apo/kelvane/engine/apo_kelvane_entry_points.h"
#include "apo/kelvane/tuning/apo_kelvane_tuning.h"
#include "audioapi/audio_api_singleton.h"

#include <windows.h>

#include <memory>
#include <string>

// Initialize writes, on the loading thread, before any engine exists; everybody else reads.
class CKelvaneManager : public CAudioSingleton<CKelvaneManager>, private CKelvaneEntryPoints
{
public:
    ~CKelvaneManager();

    // Runs every start-up step; each handles its own failure. Once, on the loading thread.
    void Initialize(HMODULE hModule);

    // The exports' bodies. Any thread; HRESULT values.
    // S_FALSE while an object lives or a server lock is held.
    HRESULT CanUnloadNow() const;
    HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
    HRESULT RegisterAllFX();
    HRESULT UnregisterAllFX();

    // Any thread.
    const CKelvaneEntryPoints& EntryPoints() const { return *this; }
    // TRUE when the library is loaded whole.
    BOOL GetLoadDLLStatus() const { return m_bLoadDLL; }
    // 1: debug mode.
    INT32 GetDebugMode() const { return m_iDebugMode; }
    const CKelvaneTuning& Tuning() const { return m_oTuning; }
    INT64 GetAlgoCtrlParam(UINT64 iIndex) const { return m_oTuning.GetAlgoCtrlParam(iIndex); }
    const KelvaneStruParam* GetAlgorithmStruct(const std::string& strKey) const
    {
        return m_oTuning.GetAlgorithmStruct(strKey);
    }

    // Appends one line to the day's record file in debug mode, when its folder exists. strFile is the file's path up to
    // the date, iOffload nonzero for an engine in inline mode. Any thread; one thread per file.
    void PrintSmartDebugLog(const char* strFile, const char* strText, const int& iOffload) const;

    void LoadProcessDll();
    // Chooses the tuning file and publishes what it says.
    void LoadConfigFile();
    // Brings the make's gain object up when control word 0 is 1.
    void LoadSenaryGain();
    void LoadEverestGain();
    // Makes as many amplifier objects, one or two, as control word 1 says.
    void InitializeIRP();
    // Sets every amplifier active, or low. The first failure's code, which spares the other one. Threads that may wait
    // for a driver.
    DWORD ActiveMutilPAGain();
    DWORD DeactiveMutilPAGain();

private:
    friend class CAudioSingleton<CKelvaneManager>;
    friend class CManagerInside;
    CKelvaneManager() = default;

    INT32 FindExports();
    // Reads the version record into m_strAlgoVersion; the library's code.
    INT32 AudioKelvaneGetVersion();
    struct AmplifierGain;
    DWORD SetMutilPAGain(const AmplifierGain& oGain);

    std::unique_ptr<CKelvaneIRP> m_pIRP0; // null where the tuning file declares none
    std::unique_ptr<CKelvaneIRP> m_pIRP1;
    HMODULE m_hDll = nullptr;      // the protection library
    HMODULE m_hInstance = nullptr; // this module
    CKelvaneTuning m_oTuning;
    INT32 m_iDebugMode = 0; // 1: debug mode
    BOOL m_bLoadDLL = FALSE;
    std::string m_strAlgoVersion;
};
