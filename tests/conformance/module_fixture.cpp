// The module as another maker's program holds it.
#include "tests/conformance/module_fixture.h"

namespace
{
constexpr char strDriverFolder[] = "C:\\windows\\system32\\ZVAudioDriver\\";
} // namespace

void ModuleFixture::SetUp()
{
    MachineTest::SetUp();
    PutFile(std::string(strDriverFolder) + "Kelvane_x64.dll", HostFile(KELVANE_LIBRARY_FILE));
    PutFile(std::string(strDriverFolder) + "audio_kelvane_params_default.xml", HostFile(KELVANE_TUNING_FILE));
    Load();
}

void ModuleFixture::TearDown()
{
    Free();
    MachineTest::TearDown();
}

void ModuleFixture::Load()
{
    m_hModule = LoadLibraryA("KelvaneAPO");
    ASSERT_NE(m_hModule, nullptr) << GetLastError();
}

void ModuleFixture::Free()
{
    EXPECT_TRUE(m_hModule == nullptr || FreeLibrary(m_hModule));
    m_hModule = nullptr;
}

FARPROC ModuleFixture::Export(const char* pName) const
{
    const FARPROC pExport = GetProcAddress(m_hModule, pName);
    EXPECT_NE(pExport, nullptr) << pName;
    return pExport;
}

HRESULT ModuleFixture::GetClassObject(const CLSID& oClassID, const IID& iid, void** ppInterface) const
{
    using PFN_GET_CLASS_OBJECT = HRESULT(STDMETHODCALLTYPE*)(const CLSID*, const IID*, void**);
    const auto pExport = reinterpret_cast<PFN_GET_CLASS_OBJECT>(reinterpret_cast<void*>(Export("DllGetClassObject")));
    return pExport(&oClassID, &iid, ppInterface);
}

HRESULT ModuleFixture::CanUnload() const
{
    using PFN_CAN_UNLOAD = HRESULT(STDMETHODCALLTYPE*)();
    return reinterpret_cast<PFN_CAN_UNLOAD>(reinterpret_cast<void*>(Export("DllCanUnloadNow")))();
}

void* ModuleFixture::CreateObject(const CLSID& oClassID, const IID& iid, IUnknown* pOuter) const
{
    void* pFactory = nullptr;
    EXPECT_EQ(GetClassObject(oClassID, published::CLASS_FACTORY, &pFactory), published::OK);
    const ComPtr<IClassFactory> pOwned(static_cast<IClassFactory*>(pFactory));
    void* pObject = nullptr;
    EXPECT_EQ(pOwned->CreateInstance(pOuter, iid, &pObject), published::OK);
    return pObject;
}

ComPtr<published::IObject> ModuleFixture::CreateInitialized(const CLSID& oClassID, bool bDiscoveryOnly) const
{
    ComPtr<published::IObject> pObject = Create<published::IObject>(oClassID);
    published::InitRecord2 oInit{};
    oInit.oFirst.u32Size = sizeof(oInit);
    oInit.oFirst.oClassID = oClassID;
    oInit.oMode = published::MODE_MOVIE;
    oInit.bDiscoveryOnly = bDiscoveryOnly;
    EXPECT_EQ(pObject->Initialize(sizeof(oInit), reinterpret_cast<BYTE*>(&oInit)), published::OK);
    return pObject;
}
