// The module as another maker's program holds it: loaded by name, its objects built through its exported functions.
#pragma once

#include "tests/conformance/published.h"
#include "tests/support/machine_test.h"

#include <memory>

struct ComRelease
{
    void operator()(IUnknown* pUnknown) const { pUnknown->Release(); }
};
template <class T> using ComPtr = std::unique_ptr<T, ComRelease>;

// Asks for an interface; null when it is refused.
template <class T> ComPtr<T> Query(IUnknown* pUnknown, const IID& iid)
{
    void* pInterface = nullptr;
    pUnknown->QueryInterface(iid, &pInterface);
    return ComPtr<T>(static_cast<T*>(pInterface));
}

// A float format that says what it is told to say, and counts its references.
class CMediaType : public published::IMediaType
{
public:
    explicit CMediaType(DWORD dwChannels = 2, FLOAT f32Rate = 48000)
        : m_oFormat{published::FLOAT_SAMPLES, dwChannels, 4, 32, f32Rate, 0}
    {
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppInterface) override
    {
        *ppInterface = nullptr;
        return published::NO_INTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_uReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_uReferences; }
    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* pbCompressed) override
    {
        *pbCompressed = FALSE;
        return published::OK;
    }
    HRESULT STDMETHODCALLTYPE IsEqual(IMediaType*, DWORD*) override { return published::BAD_ARGUMENT; }
    const void* STDMETHODCALLTYPE GetAudioFormat() override { return nullptr; }
    HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(published::Format* pFormat) override
    {
        *pFormat = m_oFormat;
        return m_hResult;
    }

    published::Format m_oFormat;
    HRESULT m_hResult = published::OK;
    ULONG m_uReferences = 1;
};

// One connection each way, of the same format and memory for any period.
class CConnection
{
public:
    explicit CConnection(DWORD dwChannels = 2, FLOAT f32Rate = 48000) : m_oType(dwChannels, f32Rate) {}
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    HRESULT Lock(published::IConfiguration& oConfiguration)
    {
        return oConfiguration.Lock(1, &m_pDescriptor, 1, &m_pDescriptor);
    }

    CMediaType m_oType;
    published::Descriptor m_oDescriptor{1, 0, 4096, &m_oType, 0x41434453};
    published::Descriptor* m_pDescriptor = &m_oDescriptor;
};

class ModuleFixture : public MachineTest
{
protected:
    void SetUp() override;
    void TearDown() override;

    void Load();
    void Free();
    HRESULT GetClassObject(const CLSID& oClassID, const IID& iid, void** ppInterface) const;
    HRESULT CanUnload() const;
    // The factory's object through one of its interfaces; aggregated when there is an outer unknown.
    template <class T>
    ComPtr<T> Create(const CLSID& oClassID, const IID& iid = published::OBJECT, IUnknown* pOuter = nullptr) const
    {
        return ComPtr<T>(static_cast<T*>(CreateObject(oClassID, iid, pOuter)));
    }
    // Made, and initialised for discovery only or for a stream.
    ComPtr<published::IObject> CreateInitialized(const CLSID& oClassID, bool bDiscoveryOnly = false) const;

private:
    void* CreateObject(const CLSID& oClassID, const IID& iid, IUnknown* pOuter) const;
    FARPROC Export(const char* pName) const;

    HMODULE m_hModule = nullptr;
};
