// What both builds must agree on with the platform: sizes, offsets, constants, ids. It holds if it compiles.
#include <baseaudioprocessingobject.h>
#include <wincrypt.h>

#include <type_traits>

namespace
{
// --- Basic types ---
static_assert(sizeof(DWORD) == 4 && sizeof(LONG) == 4 && sizeof(BOOL) == 4 && sizeof(HRESULT) == 4);
static_assert(std::is_signed_v<BOOL> && std::is_signed_v<HRESULT> && std::is_unsigned_v<DWORD>);
static_assert(!std::is_same_v<HKEY, HMODULE> && !std::is_convertible_v<HKEY, HMODULE>);
static_assert(sizeof(WAVEFORMATEX) == 18 && sizeof(WAVEFORMATEXTENSIBLE) == 40);

// --- Constants that reach files, logs or the other side of an interface ---
static_assert((CRYPT_VERIFYCONTEXT | CRYPT_SILENT) == 0xF0000040);

constexpr bool Is(HRESULT hResult, UINT32 u32Value)
{
    return static_cast<UINT32>(hResult) == u32Value;
}
static_assert(Is(E_NOINTERFACE, 0x80004002) && Is(E_POINTER, 0x80004003) && Is(E_OUTOFMEMORY, 0x8007000E) &&
              Is(E_INVALIDARG, 0x80070057) && Is(REGDB_E_CLASSNOTREG, 0x80040154) &&
              Is(CLASS_E_NOAGGREGATION, 0x80040110));
static_assert(Is(APOERR_ALREADY_INITIALIZED, 0x887D0001) && Is(APOERR_ALREADY_UNLOCKED, 0x887D0006) &&
              Is(APOERR_APO_LOCKED, 0x887D000A));

// --- Ids that come from the other side ---
constexpr bool Is(const GUID& oGuid, UINT32 u32First, UINT16 u16Second, UINT16 u16Third, UINT64 u64Rest)
{
    UINT64 u64Own = 0;
    for (const unsigned char c : oGuid.Data4)
        u64Own = u64Own << 8 | c;
    return oGuid.Data1 == u32First && oGuid.Data2 == u16Second && oGuid.Data3 == u16Third && u64Own == u64Rest;
}
static_assert(Is(IID_IAudioMediaType, 0x4E997F73, 0xB71F, 0x4798, 0x873BED7DFCF15B4D));
static_assert(Is(AUDIO_SIGNALPROCESSINGMODE_DEFAULT, 0xC18E2F7E, 0x933D, 0x4965, 0xB7D11EEF228D2AF3));
static_assert(Is(AUDIO_SIGNALPROCESSINGMODE_RAW, 0x9E90EA20, 0xB493, 0x4FD1, 0xA1A87E1361A956CF));
} // namespace
