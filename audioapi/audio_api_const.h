// The words through which the module meets its surroundings: registry paths, value names, files, event ids, tags.
#pragma once

#include <windows.h>

// Read-only literals, fixed at compile time. A path is the root key's name, a backslash and the subpath; a name that
// something is appended to ends in a backslash.

// Registry paths that the module reads or watches.
inline constexpr char AUDIO_MODE_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\SmartMode";
inline constexpr char AUDIO_DEBUG_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Debug";
inline constexpr char AUDIO_DUMP_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Dump";
inline constexpr char AUDIO_HEADSET_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Headset";
inline constexpr char AUDIO_ZVSOUND_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\ZVSound";
inline constexpr char DEVICE_CLSID_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\DeviceID";
inline constexpr char AUDIO_BYPASS_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Bypass";
inline constexpr char AUDIO_MICROPHONE_VOLUME_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Volume\\Microphone";
inline constexpr char AUDIO_SPEAKER_VOLUME_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Volume\\Speaker";
inline constexpr char AUDIO_REALTEK_HEADSET_PATH[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Realtek\\Audio\\RtkAudUService\\Others";
inline constexpr char LYRANA_MODE_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Lyrana\\LyranaMode";
inline constexpr char LYRANA_HEADSET_MODE_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Lyrana\\HeadSetMode";
inline constexpr char LYRANA_HEADSET_TYPE_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Lyrana\\HeadSetType";
inline constexpr char ZV_SMART_AUDIO_MODE_LOCAL_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\ZvVoiceAssistant";
inline constexpr char VQE_SILENT_SPACE_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\SilentSpace";
inline constexpr char AUDIO_MEDIA_CLASS_PATH[] =
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e96c-e325-11ce-bfc1-08002be10318}";
inline constexpr char AUDIO_SYSTEM_VERSION_PATH[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\";
inline constexpr char CPU_INFO_PATH[] = "HKEY_LOCAL_MACHINE\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";
inline constexpr char AUDIO_ENV_ITEM[] =
    "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment\\";

// Value names and subkeys of these paths.
inline constexpr char AUDIO_MODE_NAME[] = "AudioMode";
inline constexpr char APO_SMART_MODE[] = "SmartMode";
inline constexpr char APO_MULTI_RENDER[] = "MultiRender";
inline constexpr char APO_PRE_TIME[] = "PreTime";
inline constexpr char APO_POST_TIME[] = "PostTime";
inline constexpr char AUDIO_DEBUG_MODE[] = "DebugMode";
inline constexpr char AUDIO_DEBUG_LEVEL[] = "DebugLevel";
inline constexpr char AUDIO_DEBUG_SIZE[] = "DebugSize";
inline constexpr char AUDIO_DEBUG_NUM[] = "DebugNum";
inline constexpr char AUDIO_EVENT_LEVEL[] = "EventLevel";
inline constexpr char AUDIO_DUMP_LEVEL[] = "DumpLevel";
inline constexpr char AUDIO_DUMP_SIZE[] = "DumpSize";
inline constexpr char AUDIO_DUMP_NUM[] = "DumpNum";
inline constexpr char AUDIO_HEADSET_STATUS[] = "HeadsetStatus";
inline constexpr char AUDIO_HEADSET_RENDER[] = "HeadsetRender";
inline constexpr char AUDIO_HEADSET_CAPTURE[] = "HeadsetCapture";
inline constexpr char AUDIO_ZVSOUND_STATUS[] = "ZvSoundStatus";
inline constexpr char AUDIO_ZVSOUND_SPEAKER_MODE[] = "SpeakerMode";
inline constexpr char AUDIO_ZVSOUND_HEADPHONE_MODE[] = "HeadphoneMode";
inline constexpr char AUDIO_ZVSOUND_MICROPHONE_MODE[] = "MicrophoneMode";
inline constexpr char AUDIO_ZVSOUND_SHARE_STATUS[] = "ShareVoiceStatus";
inline constexpr char AUDIO_RENDER_CLSID[] = "RenderCLSID";
inline constexpr char AUDIO_CAPTURE_CLSID[] = "CaptureCLSID";
inline constexpr char AUDIO_KELVANE_STATUS[] = "KelvaneStatus";
inline constexpr char LYRANA_STATUS[] = "LyranaStatus";
inline constexpr char AUDIO_VQE_STATUS[] = "VQEStatus";
inline constexpr char AUDIO_VOLUME_NUM[] = "VolumeNum";
inline constexpr char AUDIO_VOLUME_MUTE[] = "VolumeMute";
inline constexpr char AUDIO_VOLUME_DB[] = "VolumeDB";
inline constexpr char APO_INTERNAL_SPEAKER[] = "InternalSpeakerOutput";
inline constexpr char APO_EXTERNAL_MICROPHONE[] = "ExternalMicrophoneInput";
inline constexpr char LYRANA_APO_MODE[] = "LyranaMode";
inline constexpr char LYRANA_HEADSET_MODE[] = "HeadSetMode";
inline constexpr char LYRANA_HEADSET_TYPE[] = "HeadSetType";
inline constexpr char SMART_AUDIO_MODE[] = "smartAudioMode";
inline constexpr char VQE_SILENT_SPACE_STATUS[] = "SilentSpaceStatus";
inline constexpr char SENARY_EXTERNAL_MIC[] = "ActiveHeadsetDev";
inline constexpr char AUDIO_OEM_SETTINGS_KEY[] = "Settings\\OEM";
inline constexpr char AUDIO_SYSTEM_NAME[] = "ProductName";
inline constexpr char AUDIO_SYSTEM_VERSION[] = "CurrentBuildNumber";
inline constexpr char AUDIO_MAJOR_VERSION[] = "CurrentMajorVersionNumber";
inline constexpr char CPU_NAME_STRING[] = "ProcessorNameString";
inline constexpr char AUDIO_ENV_PATH_NAME[] = "path";

// Files, folders, devices and format strings.
inline constexpr char AUDIO_KELVANE_DLL_PATH[] = "C:\\windows\\system32\\ZVAudioDriver\\Kelvane_x64.dll";
inline constexpr char AUDIO_DRIVER_DIR[] = "C:\\windows\\system32\\ZVAudioDriver\\";
inline constexpr char AUDIO_DEBUG_PARAMS_DIR[] = "D:\\.ZVAudioParams\\";
inline constexpr char AUDIO_PARAMS_FILE_PATTERN[] = "audio_kelvane_params_*.xml";
inline constexpr char AUDIO_SYSTEM_DIR[] = "C:\\windows\\system32\\";
inline constexpr char AUDIO_PROGRAMDATA_DEFAULT[] = "C:\\PROGRAMDATA";
inline constexpr char AUDIO_PROGRAMDATA_ENV[] = "PROGRAMDATA";
inline constexpr char AUDIO_DATA_FOLDER[] = "ZVAudio";
inline constexpr char AUDIO_VOICE_LOG_DIR[] = "D:\\.LOGAudioKelvaneVoice";
inline constexpr char AUDIO_OFFLOAD_PREFIX[] = "Offload_";
inline constexpr char AUDIO_LOG_SUFFIX[] = ".log";
inline constexpr char AUDIO_PCM_SUFFIX[] = ".pcm";
inline constexpr char AUDIO_TXT_SUFFIX[] = ".txt";
inline constexpr char AUDIO_FILE_TIME_FORMAT[] = "%d%02d%02d_%02d%02d%02d";
inline constexpr char AUDIO_LOG_TIME_FORMAT[] = "%d-%02d-%02d %02d:%02d:%02d.%03d";
inline constexpr char AUDIO_PROCESS_MARK[] = "P";
inline constexpr char AUDIO_THREAD_MARK[] = "T";
inline constexpr char AUDIO_EVENT_MARK[] = "E";
inline constexpr char AUDIO_KELVANE_DEVICE0[] = "\\\\.\\KELVANE_DEVICE0";
inline constexpr char AUDIO_KELVANE_DEVICE1[] = "\\\\.\\KELVANE_DEVICE1";
inline constexpr char AUDIO_WINDOWS10[] = "WINDOWS 10";
inline constexpr char AUDIO_WINDOWS11[] = "WINDOWS 11";

// The record files of debug mode, in AUDIO_VOICE_LOG_DIR.
inline constexpr char AUDIO_PARAMETERS_FILE[] = "D:\\.LOGAudioKelvaneVoice\\KelvaneAPO_Parameters_";
inline constexpr char AUDIO_PERFORMANCE_FILE[] = "D:\\.LOGAudioKelvaneVoice\\KelvaneAPO_Performance_";
inline constexpr char AUDIO_TEMPERATURE_FILE[] = "D:\\.LOGAudioKelvaneVoice\\KelvaneAPO_Temperature_";

// Keys of the parameter sets.
inline constexpr char AUDIO_VOLUME_EFFECT_ID0[] = "30000";
inline constexpr char AUDIO_VOLUME_EFFECT_ID1[] = "30020";
inline constexpr char AUDIO_VOLUME_EFFECT_ID2[] = "30040";
inline constexpr char AUDIO_VOLUME_EFFECT_ID3[] = "30060";
inline constexpr char AUDIO_VOLUME_EFFECT_ID4[] = "30080";
inline constexpr char AUDIO_HEAT_EFFECT_ID0[] = "40000";
inline constexpr char AUDIO_HEAT_EFFECT_ID1[] = "40020";
inline constexpr char AUDIO_HEAT_EFFECT_ID2[] = "40040";
inline constexpr char AUDIO_HEAT_EFFECT_ID3[] = "40060";
inline constexpr char AUDIO_HEAT_EFFECT_ID4[] = "40080";
inline constexpr char AUDIO_SOUND_MODE_EFFECT_ID0[] = "50000";
inline constexpr char AUDIO_SOUND_MODE_EFFECT_ID1[] = "50001";

// By m_iAPOType; the last stands for no type.
inline constexpr const char* AUDIO_APO_TYPE_TAG[] = {"[PRE_SFX]",  "[PRE_MFX]",  "[PRE_EFX]",  "[KWS_SFX]",
                                                     "[KWS_MFX]",  "[KWS_EFX]",  "[POST_SFX]", "[POST_MFX]",
                                                     "[POST_EFX]", "[OMFX_MFX]", "[OMFX_EFX]", "[UNKNOW]"};

// By level minus 1.
inline constexpr const char* AUDIO_LOG_LEVEL_WORD[] = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATA"};

// By stream index.
inline constexpr const char* AUDIO_DUMP_STREAM_NAME[] = {"datain", "dataout", "AEC", "BoardMIC"};

// The runtime libraries that the system folder should hold.
inline constexpr const char* AUDIO_SYSTEM_DEPENDENCE_DLL[] = {
    "concrt140.dll",   "msvcp140.dll",     "msvcp140_1.dll",    "msvcp140_2.dll",
    "vccorlib140.dll", "vcruntime140.dll", "vcruntime140_1.dll"};

// 1: the watcher of this number is started.
inline constexpr INT32 AUDIO_MONITOR_LIST[] = {1, 1, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1};

// Another program's event, signalled when a stream is late.
inline constexpr wchar_t AUDIO_CPU_STATUS_EVENT[] = L"Global\\MonitorCPUStatus";

// The embedded controller channel.
inline constexpr wchar_t AUDIO_WMI_ROOT_NAME[] = L"ROOT\\WMI";
inline constexpr wchar_t AUDIO_WMI_CLASS_NAME[] = L"OemWMIMethod";
inline constexpr wchar_t AUDIO_WMI_METHOD_NAME[] = L"OemWMIfun";
inline constexpr wchar_t AUDIO_WMI_INSTANCE_NAME[] = L"ACPI\\PNP0C14\\ZVMI_0";

// Item names of sample dumps.
inline constexpr char AUDIO_DUMP_POST_DATA_IN[] = "PostDataIn";
inline constexpr char AUDIO_DUMP_POST_DATA_OUT[] = "PostDataOut";
inline constexpr char AUDIO_DUMP_POST_INT16_DATA_IN[] = "PostInt16DataIn";
inline constexpr char AUDIO_DUMP_POST_INT16_DATA_OUT[] = "PostInt16DataOut";
inline constexpr char AUDIO_DUMP_POST_INT32_DATA_IN[] = "PostInt32DataIn";
inline constexpr char AUDIO_DUMP_POST_INT32_DATA_OUT[] = "PostInt32DataOut";
inline constexpr char AUDIO_DUMP_POST_OMFX_DATA_IN[] = "PostOMFXDataIn";
inline constexpr char AUDIO_DUMP_POST_OMFX_DATA_OUT[] = "PostOMFXDataOut";

// Event ids: each with its blank, the message follows at once.
inline constexpr char AUDIO_EVENT_LOCK_FORMAT[] = "3841082 ";
inline constexpr char AUDIO_EVENT_READ_ZVVA_PARAM[] = "3841093 ";
inline constexpr char AUDIO_EVENT_SET_GAIN_FAILED[] = "3841110 ";
inline constexpr char AUDIO_EVENT_CANCEL_GAIN_FAILED[] = "3841111 ";
inline constexpr char AUDIO_EVENT_ALGO_VERSION[] = "3841112 ";
inline constexpr char AUDIO_EVENT_PARAM_NOT_FOUND[] = "3841113 ";
inline constexpr char AUDIO_EVENT_PARAM_EMPTY[] = "3841114 ";
inline constexpr char AUDIO_EVENT_MODE_CHANGE[] = "3841115 ";
inline constexpr char AUDIO_EVENT_EVEREST_GAIN[] = "3841116 ";
inline constexpr char AUDIO_EVENT_SENARY_GAIN[] = "3841117 ";
inline constexpr char AUDIO_EVENT_EC_TEMPERATURE[] = "3841119 ";
inline constexpr char AUDIO_EVENT_INPUT_ZERO[] = "3841135 ";
inline constexpr char AUDIO_EVENT_OUTPUT_ZERO[] = "3841136 ";
inline constexpr char AUDIO_EVENT_INPUT_SIZE[] = "3841137 ";
inline constexpr char AUDIO_EVENT_SET_GAIN_OK[] = "3841203 ";
inline constexpr char AUDIO_EVENT_CANCEL_GAIN_OK[] = "3841204 ";
inline constexpr char AUDIO_EVENT_READ_VQE_PARAM[] = "3842005 ";
inline constexpr char AUDIO_EVENT_READ_REC_PARAM[] = "3842006 ";
inline constexpr char AUDIO_EVENT_LOAD_DLL_FAIL[] = "3843011 ";

// Event ids of the other modules of the family: given away, so never to be used for something new here.
inline constexpr const char* AUDIO_EVENT_RESERVED[] = {
    "38410010 ", "38410011 ", "38410012 ", "38410013 ", "38410014 ", "3841003 ", "3841004 ", "3841005 ", "3841006 ",
    "3841007 ",  "3841008 ",  "3841009 ",  "3841023 ",  "3841024 ",  "3841025 ", "3841026 ", "3841027 ", "3841028 ",
    "3841029 ",  "3841030 ",  "3841031 ",  "3841032 ",  "3841033 ",  "3841034 ", "3841035 ", "3841036 ", "3841037 ",
    "3841038 ",  "3841039 ",  "3841040 ",  "3841041 ",  "3841042 ",  "3841043 ", "3841045 ", "3841046 ", "3841047 ",
    "3841048 ",  "3841049 ",  "3841051 ",  "3841052 ",  "3841053 ",  "3841055 ", "3841056 ", "3841057 ", "3841058 ",
    "3841059 ",  "3841060 ",  "3841061 ",  "3841062 ",  "3841063 ",  "3841064 ", "3841065 ", "3841066 ", "3841073 ",
    "3841074 ",  "3841075 ",  "3841076 ",  "3841077 ",  "3841078 ",  "3841079 ", "3841080 ", "3841083 ", "3841084 ",
    "3841085 ",  "3841086 ",  "3841087 ",  "3841088 ",  "3841089 ",  "3841090 ", "3841091 ", "3841092 ", "3841095 ",
    "3841096 ",  "3841097 ",  "3841098 ",  "3841099 ",  "3841100 ",  "3841101 ", "3841102 ", "3841103 ", "3841108 ",
    "3841109 ",  "3841118 ",  "3841121 ",  "3841127 ",  "3841128 ",  "3841129 ", "3841130 ", "3841131 ", "3841133 ",
    "3841134 ",  "3841138 ",  "3841139 ",  "3841201 ",  "3841202 ",  "3841205 ", "3842001 ", "3842002 ", "3842003 ",
    "3842004 ",  "3843001 ",  "3843002 ",  "3843003 ",  "3843004 ",  "3843005 ", "3843006 ", "3843007 ", "3843008 ",
    "3843009 ",  "3843010 "};

// What follows names the surroundings and isn't read by this module.

// Registry paths; "*" stands for a user, and nothing resolves it.
inline constexpr char AUDIO_CONFIGURE_PATH[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\Configure";
inline constexpr char AUDIO_RENDER_DEVICES_PATH[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\MMDevices\\Audio\\Render\\";
inline constexpr char USER_VOLUME_PATH[] = "HKEY_USERS\\*\\SOFTWARE\\ZORVIK\\ZVAudio\\Volume";
inline constexpr char USER_ZVSOUND_PATH[] = "HKEY_USERS\\*\\SOFTWARE\\Zorvik\\Stationeer\\ZvSound";
inline constexpr char USER_SILENT_SPACE_PATH[] = "HKEY_USERS\\*\\SOFTWARE\\Zorvik\\Stationeer\\SilentSpace";
inline constexpr char USER_SMART_AUDIO_PATH[] = "HKEY_USERS\\*\\SOFTWARE\\Zorvik\\Stationeer\\ZvSmartAudio\\setting";

// Value names.
inline constexpr const char* AUDIO_FOREIGN_VALUE_NAME[] = {"CurrentMode",
                                                           "DeviceState",
                                                           "DMICGain",
                                                           "EverestCLSID",
                                                           "HeadsetMute",
                                                           "HeadsetVolume",
                                                           "PostCreationTime",
                                                           "PreCreationTime",
                                                           "SpeakerMute",
                                                           "SpeakerVolume",
                                                           "DevAutoSwitch",
                                                           "HighPriDispaly",
                                                           "ModifyNameSwitch",
                                                           "StereoSwith",
                                                           "Gain",
                                                           "MatchingDeviceId",
                                                           "GlobalSettings\\Device0",
                                                           "ZvSoundMicrophoneAutoVolumnStatus",
                                                           "ZvSoundHeadphoneMode",
                                                           "ZvSoundMicrophoneMode",
                                                           "ZvSoundPrivacyStatus",
                                                           "ZvSoundAudioRemoteShareStatus",
                                                           "ZvSoundSpeakerMode",
                                                           "Flags6",
                                                           "UpgradeSwitch",
                                                           "SessionMaxMemory",
                                                           "UpgradeWaitTime",
                                                           "UserName",
                                                           "SID"};

// Processes and services.
inline constexpr const wchar_t* AUDIO_FOREIGN_PROCESS_NAME[] = {
    L"AUDIODG.EXE",        L"Explorer.exe",         L"ZVSOUNDUI.EXE", L"VSTMESSAGECENTER.EXE",
    L"VESTRALSERVICE.EXE", L"ZVVEAudioSession.exe", L"Audiosrv"};

// Item names of sample dumps.
inline constexpr const char* AUDIO_FOREIGN_DUMP_NAME[] = {
    "PreDataIn",  "PreDataOut",     "PreInt16DataIn",  "PreInt16DataOut", "RecDataIn",
    "RecDataOut", "RecInt16DataIn", "RecInt16DataOut", "RefInt16Data",    "RefInt16DataAfterMix"};

// Folders, libraries, units.
inline constexpr char AUDIO_EVENT_MESSAGE_FILE[] = "%%SystemRoot%%\\System32\\ZVAudioEventMsg.dll";
inline constexpr char AUDIO_PROGRAM_FILES_DEFAULT[] = "C:\\Program files";
inline constexpr char AUDIO_PROGRAM_FILES_ENV[] = "PROGRAMFILES";
inline constexpr char NT_QUERY_SYSTEM_INFORMATION[] = "NtQuerySystemInformation";
inline constexpr char AUDIO_CHANNEL_UNIT[] = "ch";
inline constexpr char AUDIO_RATE_UNIT[] = "hz";
inline constexpr char AUDIO_GREATER_MARK[] = ">";
inline constexpr char AUDIO_ONE_MARK[] = "1";

// Wide forms.
inline constexpr wchar_t AUDIO_DRIVER_DIR_W[] = L"C:\\windows\\system32\\ZVAudioDriver\\";
inline constexpr wchar_t AUDIO_SYSTEM_DIR_W[] = L"C:\\windows\\system32\\";
inline constexpr wchar_t NT_DLL_NAME[] = L"Ntdll.dll";
