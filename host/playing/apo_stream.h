// One stream through the module: activated by COM, initialised, locked to a format, driven by one call per period.
#pragma once

#include "host/playing/media_type.h"
#include "host/report/period_evidence.h"

#include <memory>
#include <vector>

// Releases its interface when it goes.
struct ComRelease
{
    template <class T> void operator()(T* pInterface) const { pInterface->Release(); }
};
template <class T> using ComPtr = std::unique_ptr<T, ComRelease>;

inline constexpr CLSID APO_RENDER_EFX = {0xD3BDE93A, 0x50C2, 0x439A, {0xB2, 0x38, 0x44, 0xF1, 0xCB, 0x50, 0x55, 0xB0}};
inline constexpr CLSID APO_RENDER_OMFX = {0x6CB3EF4C, 0xBC00, 0x4A60, {0xBC, 0x34, 0x73, 0x4F, 0x01, 0x48, 0xF8, 0x56}};

struct StreamSetup
{
    bool bInlineVariant = false; // OMFX instead of EFX
    int iRate = 0;               // Hz
    int iChannels = 0;           // interleaved
    int iPeriodFrames = 0;       // sample frames per call
    bool bInPlace = false;       // output and input buffer are one
    int iRestLimitS = 1;         // to wait for the threads that the activation starts
};

// COM for the life of the object; at its end the module goes down in order.
class CComApartment
{
public:
    // Throws CHostError.
    CComApartment();
    CComApartment(const CComApartment&) = delete;
    CComApartment& operator=(const CComApartment&) = delete;
    ~CComApartment();
};

class CApoStream
{
public:
    // Activates, initialises, negotiates, locks. Throws CHostError with the step and the module's code.
    explicit CApoStream(const StreamSetup& oSetup);
    CApoStream(const CApoStream&) = delete;
    CApoStream& operator=(const CApoStream&) = delete;
    ~CApoStream();

    // Whether the threads that the activation started came to rest in time.
    bool HasRested() const { return m_bRested; }

    size_t DataLen() const { return m_vecInput.size(); } // floats of a period

    // Puts one period into the input buffer, which pf32Source must stay equal to until Judge. DataLen() floats.
    void Fill(const float* pf32Source);
    // The periodic call alone, for a buffer of valid samples. Allocates nothing of its own.
    void Process();
    // What the call did.
    PeriodPath Judge(const float* pf32Source) const;
    // The period's output, interleaved; holds no samples after an underflow.
    const float* Output() const { return m_pOutput; }

    // Hands in one silent buffer, as at the end of a stream, and tells by the answer whether a bypass is on.
    bool ProbeBypass();

private:
    void Activate();
    void Initialize();
    void Negotiate();
    void Lock();
    void PrepareCall(APO_BUFFER_FLAGS eFlags);

    StreamSetup m_oSetup;
    CHostMediaType m_oMediaType;
    std::vector<float> m_vecInput;
    std::vector<float> m_vecOutput; // empty in place
    float* m_pOutput = nullptr;
    APO_CONNECTION_PROPERTY m_oInput{};
    APO_CONNECTION_PROPERTY m_oOutput{};
    ComPtr<IAudioProcessingObject> m_pObject;
    ComPtr<IAudioProcessingObjectRT> m_pRealtime;
    ComPtr<IAudioProcessingObjectConfiguration> m_pConfiguration;
    bool m_bRested = false;
    bool m_bLocked = false;
};
