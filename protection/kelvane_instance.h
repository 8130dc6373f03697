// One instance of the protection algorithm: what lies in the memory that the caller gives for it.
#pragma once

#include "protection/dsp/direct_gain.h"
#include "protection/dsp/protector.h"
#include "protection/kelvane_shared_record.h"
#include "protection/kelvane_state_words.h"

// Apply's alone: sets on their way in, and signals of a piece.
struct KelvaneScratch
{
    KelvaneStruParam oStruParam;
    float f32Direct[BLOCK_LEN];
};

// In the run buffer. Apply is entered by one thread at a time; everything else by any thread beside it.
class CKelvaneInstance
{
public:
    static constexpr int32_t MAX_FRAME_LEN = 240; // samples per channel
    static constexpr int32_t UNKNOWN_TEMPERATURE = 2500;
    static constexpr int32_t UNKNOWN_BATTERY = 255;

    CKelvaneInstance() { Report(); }

    bool IsInitialized() const { return m_uMark.load(std::memory_order_acquire) == INITIALIZED_MARK; }

    // FALSE: out of range, nothing happened.
    bool SetParams(const KelvaneStruParam& oStruParam);
    // The current set with the live fields in it. FALSE if sets were changed all the while.
    bool GetParams(KelvaneStruParam& oStruParam) const;
    // Degrees Celsius / 100. 2500: no sensor answers.
    void SetTemperature(int32_t iTemperature);
    // Percent, or UNKNOWN_BATTERY. Holds for frames that don't know better.
    void SetBattery(int32_t iBattery) { m_iBattery.store(iBattery, std::memory_order_relaxed); }
    // The frames that follow begin with a speaker as cold as its surroundings.
    void ClearStatus();
    // The next block takes over the resistance that the sense signals show.
    void IvOptimize() { m_bIvWanted.store(true, std::memory_order_relaxed); }

    // Processes one frame. No wait, no heap.
    void Apply(KelvaneScratch& oScratch, const KelvaneDataStruct& oDataStruct);

private:
    static constexpr uint32_t INITIALIZED_MARK = 0x4B4C564E;
    using Frame = KelvaneDataStruct;

    void TakeSet(KelvaneScratch& oScratch, const Frame& oFrame);
    void ProcessPiece(KelvaneScratch& oScratch, const Frame& oFrame, int iOffset, int iCount);
    void ProcessPair(KelvaneScratch& oScratch, const Frame& oFrame, int iPair, int iOffset, int iCount);
    float Weight(int iPosition) const;
    void FinishBlock(const Frame& oFrame);
    Surroundings Around(const Frame& oFrame) const;
    void Report();

    std::atomic<uint32_t> m_uMark{INITIALIZED_MARK};
    std::atomic<int32_t> m_iTemperature{UNKNOWN_TEMPERATURE};
    std::atomic<int32_t> m_iBattery{UNKNOWN_BATTERY};
    std::atomic<bool> m_bClearWanted{false};
    std::atomic<bool> m_bIvWanted{false};
    CKelvaneSharedRecord m_oRecord;
    CKelvaneStateWords m_oState;

    // Apply's alone.
    uint32_t m_uSetCount = 0;
    int m_iMode = 0;
    bool m_bStarted = false;   // a sample was processed
    bool m_bProtector = false; // a set told what the speakers are
    int m_iPosition = 0;       // in the block
    int m_iFadeBlocks = 0;     // protected part of what goes out: FADE_BLOCKS is all of it
    int m_iFadeBefore = 0;
    int m_iWarmBlocks = 0;
    DirectGain m_oDirect[KELVANE_MAX_CHANNELS];
    double m_f64LevelSum[KELVANE_MAX_CHANNELS] = {}; // of the block's squares out
    Protector m_oProtector;
};
