// The manager's life: the order of start-up and of going down, the protection library's entry points.
#include "apo/kelvane/apo_kelvane_manager.h"

#include "apo/kelvane/apo_kelvane_everest.h"
#include "apo/kelvane/apo_kelvane_senary.h"
#include "apo/kelvane/tuning/apo_kelvane_tuning_file.h"
#include "apo/kelvane/tuning/apo_kelvane_tuning_loader.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_dump.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <cstdio>
#include <exception>
#include <iterator>

// The log goes last, so that all the others can still report on their way down.
CKelvaneManager::~CKelvaneManager()
{
    if (m_hDll != nullptr)
    {
        AUDIO_CHECK_WIN(FreeLibrary(m_hDll));
        m_hDll = nullptr;
    }
    m_oTuning.m_mapAlgoParam.clear();
    m_pIRP0.reset();
    m_pIRP1.reset();
    CAudioMonitor::DeleteInstance();
    CSenaryGainConfig::DeleteInstance();
    CEverestGainConfig::DeleteInstance();
    CAudioDump::DeleteInstance();
    CAudioLog::DeleteInstance();
}

namespace
{
// An exception ends its own step only, which the line names.
template <class Step> void RunStep(const char* pStep, Step fStep)
{
    try
    {
        fStep();
    }
    catch (const std::exception& oException)
    {
        AUDIOLOG_ERROR(AUDIO_BAD_DATA, std::string(pStep) + " failed:" + oException.what());
    }
}
} // namespace

// The order carries meaning: the library's version decides the tuning file, the tuning file decides about
// amplifiers and codec gain.
void CKelvaneManager::Initialize(HMODULE hModule)
{
    m_hInstance = hModule;
    RunStep("CAudioLog", [=] { CAudioLog::Instance()->Initialize(hModule); });
    RunStep("CAudioDump", [=] { CAudioDump::Instance()->Initialize(hModule); });
    RunStep("DebugMode", [this] { CAudioREG::ReadRegValue(AUDIO_DEBUG_PATH, AUDIO_DEBUG_MODE, m_iDebugMode); });
    RunStep("LoadProcessDll", [this] { LoadProcessDll(); });
    RunStep("LoadConfigFile", [this] { LoadConfigFile(); });
    RunStep("CAudioMonitor",
            [] {
                CAudioMonitor::Instance()->Initialize({std::begin(AUDIO_MONITOR_LIST), std::end(AUDIO_MONITOR_LIST)});
            });
    RunStep("InitializeIRP", [this] { InitializeIRP(); });
    RunStep("LoadSenaryGain", [this] { LoadSenaryGain(); });
    RunStep("LoadEverestGain", [this] { LoadEverestGain(); });
}

void CKelvaneManager::LoadConfigFile()
{
    m_oTuning = CKelvaneTuningLoader().Load(FindConfigFile(m_iDebugMode, m_strAlgoVersion));
}

namespace
{
template <class Function> void FindExport(HMODULE hDll, Function& fMember, const char* pExport)
{
    using AnyFunction = void (*)();
    fMember = reinterpret_cast<Function>(reinterpret_cast<AnyFunction>(GetProcAddress(hDll, pExport)));
}
} // namespace

// Looks one entry point up; a missing one is logged under its member's name.
#define FIND_EXPORT(fMember, pExport) (FindExport(m_hDll, fMember, pExport), !AUDIO_MISSING(fMember, AUDIO_NO_EXPORT))

void CKelvaneManager::LoadProcessDll()
{
    INT32 iResult = AUDIO_NO_LIBRARY;
    m_hDll = LoadLibraryA(AUDIO_KELVANE_DLL_PATH);
    if (!AUDIO_MISSING(m_hDll, AUDIO_NO_LIBRARY))
        iResult = FindExports();
    m_bLoadDLL = iResult == 0;
    if (!m_bLoadDLL)
        AUDIOLOG_EVENT_ERROR(iResult, std::string(AUDIO_EVENT_LOAD_DLL_FAIL) + "KelvAPO Load DLL fail!");
}

// All ten are required; the first one missing ends the lookup. A failed version query is told, and the lookup goes on.
INT32 CKelvaneManager::FindExports()
{
    if (!FIND_EXPORT(m_fAudioKelvaneGetVersion, "AudioKelvaneGetVersion"))
        return AUDIO_NO_EXPORT;
    const INT32 iResult = AUDIO_CHECK(AudioKelvaneGetVersion());
    const bool bFound = FIND_EXPORT(m_fAudioKelvaneGetSize, "AudioKelvaneGetSize") &&
                        FIND_EXPORT(m_fAudioKelvaneInit, "AudioKelvaneInit") &&
                        FIND_EXPORT(m_fAudioKelvaneSetPara, "AudioKelvaneSetParams") &&
                        FIND_EXPORT(m_fAudioKelvaneGetPara, "AudioKelvaneGetParams") &&
                        FIND_EXPORT(m_fAudioKelvaneApply, "AudioKelvaneApply") &&
                        FIND_EXPORT(m_fAudioKelvaneIvOptimize, "AudioKelvaneIvOptimize") &&
                        FIND_EXPORT(m_fAudioKelvaneSetBatteryInfo, "AudioKelvaneSetBatteryInformation") &&
                        FIND_EXPORT(m_fAudioKelvaneClearStatus, "AudioKelvaneClearStatus") &&
                        FIND_EXPORT(m_fAudioKelvaneTemperature, "AudioKelvaneSetTemperatureInformation");
    return bFound ? iResult : AUDIO_NO_EXPORT;
}

INT32 CKelvaneManager::AudioKelvaneGetVersion()
{
    const KelvaneVersion* sVersion = nullptr;
    const INT32 iResult = AUDIO_CHECK(m_fAudioKelvaneGetVersion(&sVersion));
    if (iResult != 0 || sVersion == nullptr)
        return iResult;

    char szText[260] = {};
    const int iLen = snprintf(szText, sizeof(szText), "KelvanePlatForm:%s,Ver:%s,Time:%s", sVersion->szPlatform,
                              sVersion->szVersion, sVersion->szBuildTime);
    if (iLen < 0 || iLen >= static_cast<int>(sizeof(szText)))
        return 0;
    m_strAlgoVersion = CAudioSTR::RightOf(CAudioSTR::LeftOf(szText, ".", 1), " ", 1);
    AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_ALGO_VERSION) + szText);
    return 0;
}
