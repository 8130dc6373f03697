// One instance of the protection library: its memory, and every call of it.
#pragma once

#include "apo/kelvane/engine/apo_kelvane_entry_points.h"

#include <windows.h>

#include <cstdlib>
#include <memory>

// A block of the general heap that the library works in; reads as a pointer to it.
template <class T> class CKelvaneMemory
{
public:
    // iSize bytes, not initialised; null without memory, and for a size no library of this kind can mean.
    void Allocate(int iSize)
    {
        constexpr int iSizeMax = 256 * 1024 * 1024;
        m_pMemory.reset(iSize > 0 && iSize <= iSizeMax ? static_cast<T*>(std::malloc(static_cast<size_t>(iSize)))
                                                       : nullptr);
    }
    void Release() { m_pMemory.reset(); }

    operator T*() const { return m_pMemory.get(); }
    T* operator->() const { return m_pMemory.get(); }

private:
    struct Free
    {
        void operator()(T* pMemory) const { std::free(pMemory); }
    };
    std::unique_ptr<T, Free> m_pMemory;
};

// Entered from the processing thread and the workers on one m_pRunBuf without a lock; the library must bear that. What
// fails is logged here. Codes are the library's, or the binding's to it.
class CKelvaneInstance : private CKelvaneEntryPoints
{
public:
    explicit CKelvaneInstance(const CKelvaneEntryPoints& oEntryPoints) : CKelvaneEntryPoints(oEntryPoints) {}

    // The memory that the library asks for; on failure none of it.
    int AudioKelvaneGetSize();
    int AudioKelvaneInit();
    void Release();
    // 0, or AUDIO_NO_INSTANCE without an instance.
    int CheckMemory() const;

    int SetPara(const KelvaneStruParam* pStruParam);
    // The library's live state; whatever it left in the record on failure.
    int GetPara(KelvaneStruParam& oStruParam);
    int Apply(KelvaneDataStruct* m_pDataStruct);
    // Hundredths of a degree Celsius.
    int SetTemperature(INT32 iTemperature);
    // Whether the entry points are there; the log tells of one that isn't.
    bool HasTemperature() const;
    bool HasBatteryInfo() const;

private:
    friend class CEngineInside;
    int AllocateMemory();

    CKelvaneMemory<BYTE> m_pRunBuf;     // the library's persistent memory
    CKelvaneMemory<BYTE> m_pScratchBuf; // the library's scratch memory
    CKelvaneMemory<KelvaneMemSize> m_pMemSize;
};
