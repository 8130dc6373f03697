// The contract between the audio component and a speaker protection library: records, entry points, rules. Complete in
// itself: a library is written from this file alone.
//
// The library is a 64-bit DLL, Kelvane_x64.dll, that exports the ten functions named at the end by those names, in the
// C calling convention. The component loads it once per process and makes an instance for each stream:
//
//   once per process   GetVersion
//   once per stream    GetSize, Init, SetParams
//   every 5 ms         Apply
//   at any time        SetParams, GetParams, SetTemperatureInformation; the rest is there for tools
//
// Each function returns 0, or a code of the library's own; a code ends a stream's start, or is logged.
//
// Memory: the caller allocates what GetSize tells, aligned to 16 bytes and not cleared, hands both buffers to each call
// of the instance, and frees them when no call is under way. There is no release function, so an instance holds nothing
// else: no heap, no thread, no handle.
//
// Threads: one thread at a time is in Apply; up to three others are in the other functions of the same instance at the
// same moment, and nobody locks. Apply is on the way of the audio: it takes no heap, no lock, no wait and no system
// call, and leaves the floating-point mode as it found it.
//
// Audio: 32-bit float, full scale 1, 48 kHz, one array per channel, 240 samples a call as a rule. NaN and infinity may
// come in; they never come out.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr int32_t KELVANE_MAX_CHANNELS = 8;       // width of the channel arrays
inline constexpr int32_t KELVANE_SHORT_COUNT = 6072;     // words of the short region
inline constexpr int32_t KELVANE_DOUBLE_COUNT = 201;     // doubles behind it
inline constexpr int32_t KELVANE_VERSION_TEXT_LEN = 200; // bytes of one text of the version record, NUL included

// The frame record, one per call. Channel pointers behind the last real channel are null.
struct KelvaneDataStruct
{
    float* psDataIn[KELVANE_MAX_CHANNELS];  // speaker signal, iFrameLen samples each
    float* psDataOut[KELVANE_MAX_CHANNELS]; // speaker signal out of the library, the same shape
    int32_t iFrameLen;                      // samples per channel
    int32_t iReserved;
    const float* psVoltageIn[KELVANE_MAX_CHANNELS];        // voltage sense, iFrameLen samples each
    const float* psCurrentIn[KELVANE_MAX_CHANNELS];        // current sense
    const float* psVoltageBatteryIn[KELVANE_MAX_CHANNELS]; // battery voltage sense
    int32_t iDataMode;
    float SpeakerDBVolume;        // dB
    int16_t SpeakerPersentVolume; // percent
    uint16_t BatteryLifePercent;  // percent, 0 when unknown
    uint16_t ACLineStatus;        // 0 battery or unknown, 1 mains
    uint16_t usUnused[5];
};
static_assert(sizeof(void*) != 8 || sizeof(KelvaneDataStruct) == 352);
static_assert(sizeof(void*) != 8 ||
              (offsetof(KelvaneDataStruct, psDataOut) == 64 && offsetof(KelvaneDataStruct, iFrameLen) == 128 &&
               offsetof(KelvaneDataStruct, psVoltageIn) == 136 && offsetof(KelvaneDataStruct, psCurrentIn) == 200 &&
               offsetof(KelvaneDataStruct, psVoltageBatteryIn) == 264 &&
               offsetof(KelvaneDataStruct, iDataMode) == 328 && offsetof(KelvaneDataStruct, SpeakerDBVolume) == 332 &&
               offsetof(KelvaneDataStruct, SpeakerPersentVolume) == 336 &&
               offsetof(KelvaneDataStruct, BatteryLifePercent) == 338 &&
               offsetof(KelvaneDataStruct, ACLineStatus) == 340));

// The memory that one instance wants, in bytes. Zeroed by the caller, filled by the library.
struct KelvaneMemSize
{
    int32_t iRunBufSize;
    int32_t iScratchSize;
    int32_t iReserved[4];
};
static_assert(sizeof(KelvaneMemSize) == 24 && offsetof(KelvaneMemSize, iScratchSize) == 4);

// The library's own, read only: three NUL-terminated texts.
struct KelvaneVersion
{
    char szPlatform[KELVANE_VERSION_TEXT_LEN];
    char szVersion[KELVANE_VERSION_TEXT_LEN];
    char szBuildTime[KELVANE_VERSION_TEXT_LEN];
};
static_assert(offsetof(KelvaneVersion, szVersion) == 200 && offsetof(KelvaneVersion, szBuildTime) == 400);

// One parameter set, and the state that the library reports in the same layout. Words without a name are opaque.
struct KelvaneStruParam
{
    int16_t sOpaque0[1];
    int16_t sFFModule[8]; // [0] 0: the signal passes through untouched
    int16_t sOpaque9[8];
    int16_t sChannelNum;
    int16_t sOpaque18[1];
    int16_t sDIVMode; // 1: DIV mode
    int16_t sOpaque20[2794];
    int16_t sLSMRe[8]; // coil resistance, ohm / 100
    int16_t sOpaque2822[16];
    int16_t sLSMReWire[8]; // wire resistance, ohm / 100
    int16_t sOpaque2846[8];
    int16_t sLSMCoilTemp[8]; // coil temperature, degrees Celsius / 100
    int16_t sOpaque2862[32];
    int16_t sLSMMonitorTemp;
    int16_t sOpaque2895[510];
    int16_t sPOWPrms[8]; // 1 / 100
    int16_t sOpaque3413[104];
    int16_t sPOWTargetGain[8]; // 1 / 100
    int16_t sOpaque3525[114];
    int16_t sTEPCurrentGain[8]; // 1 / 100
    int16_t sOpaque3647[513];
    int16_t sANDCurrentGain[8]; // 1 / 100
    int16_t sOpaque4168[724];
    int16_t sBCNCurrentGain; // 1 / 100
    int16_t sOpaque4893[160];
    int16_t sIPWCurrentGain[8]; // 1 / 10000
    int16_t sIPWPCurrent[8];    // 1 / 1000
    int16_t sIPWPctmax[8];      // 1 / 1000
    int16_t sOpaque5077[995];
    double sLSMTvcCoef0[KELVANE_DOUBLE_COUNT];
};
static_assert(sizeof(KelvaneStruParam) == 13752);
static_assert(offsetof(KelvaneStruParam, sFFModule) == 2 && offsetof(KelvaneStruParam, sChannelNum) == 34 &&
              offsetof(KelvaneStruParam, sDIVMode) == 38 && offsetof(KelvaneStruParam, sLSMRe) == 5628 &&
              offsetof(KelvaneStruParam, sLSMReWire) == 5676 && offsetof(KelvaneStruParam, sLSMCoilTemp) == 5708 &&
              offsetof(KelvaneStruParam, sLSMMonitorTemp) == 5788 && offsetof(KelvaneStruParam, sPOWPrms) == 6810 &&
              offsetof(KelvaneStruParam, sPOWTargetGain) == 7034 &&
              offsetof(KelvaneStruParam, sTEPCurrentGain) == 7278 &&
              offsetof(KelvaneStruParam, sANDCurrentGain) == 8320 &&
              offsetof(KelvaneStruParam, sBCNCurrentGain) == 9784 &&
              offsetof(KelvaneStruParam, sIPWCurrentGain) == 10106 &&
              offsetof(KelvaneStruParam, sIPWPCurrent) == 10122 && offsetof(KelvaneStruParam, sIPWPctmax) == 10138 &&
              offsetof(KelvaneStruParam, sLSMTvcCoef0) == 12144);

// The entry points. pRunBuf and pScratchBuf are the instance's two buffers; what outlives a call lies in the first.

// Prepares the buffers. Until the first SetParams the signal passes.
using KelvaneInit = int32_t (*)(void* pRunBuf, void* pScratchBuf); // AudioKelvaneInit

// Processes one frame: reads psDataIn, writes psDataOut, which may be the same arrays.
using KelvaneApply = int32_t (*)(void* pRunBuf, void* pScratchBuf, KelvaneDataStruct* pDataStruct); // AudioKelvaneApply

// Takes a parameter set over, also while frames run. One that is refused leaves the set before in force.
using KelvaneSetPara = int32_t (*)(void* pRunBuf, void* pScratchBuf,
                                   const KelvaneStruParam* pStruParam); // AudioKelvaneSetParams

// The set in force, and the library's state in the words that are named for it.
using KelvaneGetPara = int32_t (*)(void* pRunBuf, KelvaneStruParam* pStruParam); // AudioKelvaneGetParams

// Bytes of the two buffers; both more than 0.
using KelvaneGetSize = int32_t (*)(KelvaneMemSize* pMemSize); // AudioKelvaneGetSize

// Sets the pointer to the library's version record. What stands in its version text behind the last blank and before
// the last point is what tuning files name.
using KelvaneGetVersion = int32_t (*)(const KelvaneVersion** pVersion); // AudioKelvaneGetVersion

// Corrects the library's model by what the sense signals of the frames have shown.
using KelvaneIvOptimize = int32_t (*)(void* pRunBuf); // AudioKelvaneIvOptimize

// Battery percent, 255 when unknown. The frames carry it too.
using KelvaneSetBatteryInfo = int32_t (*)(void* pRunBuf, int32_t iBattery); // AudioKelvaneSetBatteryInformation

// The state as Init left it; the set stays, and what was said of the battery.
using KelvaneClearStatus = int32_t (*)(void* pRunBuf); // AudioKelvaneClearStatus

// Ambient of the speakers, hundredths of a degree Celsius. 2500 is also what comes when no sensor answers.
using KelvaneTemperature = int32_t (*)(void* pRunBuf,
                                       int32_t iTemperature); // AudioKelvaneSetTemperatureInformation
