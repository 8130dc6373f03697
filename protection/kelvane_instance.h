// One instance of the protection algorithm: what lies in the memory that the caller gives for it.
#pragma once

#include "protection/kelvane_shared_record.h"

#include <atomic>

// The frame's working set, in the scratch buffer. Apply's alone.
struct KelvaneScratch
{
    bool bActive;
    float f32Gain[KELVANE_MAX_CHANNELS];
};

// In the run buffer. Apply is entered by one thread at a time; everything else by any thread beside it.
class CKelvaneInstance
{
public:
    static constexpr int32_t MAX_FRAME_LEN = 240;        // samples per channel
    static constexpr int32_t INITIAL_TEMPERATURE = 2500; // degrees Celsius / 100

    bool IsInitialized() const { return m_uMark.load(std::memory_order_acquire) == INITIALIZED_MARK; }

    void SetParams(const KelvaneStruParam& oStruParam) { m_oRecord.Store(oStruParam); }
    // The current set with the live fields in it. FALSE if sets were changed all the while.
    bool GetParams(KelvaneStruParam& oStruParam) const;
    void SetTemperature(int32_t iTemperature) { m_iTemperature.store(iTemperature, std::memory_order_relaxed); }
    void ClearStatus();

    // Processes one frame. No wait, no heap.
    void Apply(KelvaneScratch& oScratch, const KelvaneDataStruct& oDataStruct);

private:
    static constexpr uint32_t INITIALIZED_MARK = 0x4B4C564E;

    std::atomic<uint32_t> m_uMark{INITIALIZED_MARK};
    std::atomic<int32_t> m_iTemperature{INITIAL_TEMPERATURE};
    CKelvaneSharedRecord m_oRecord;
    std::atomic<float> m_f32Rms[KELVANE_MAX_CHANNELS] = {}; // of the last frame out, full scale is 1
};
