// Class objects, identity, reference counts, aggregation: the rules of COM as this module keeps them.
#include "tests/conformance/module_fixture.h"

using namespace published;

namespace
{
using InterfacesTest = ModuleFixture;

// An unknown around an object: all interfaces of the whole lead back here.
class COuter : public IUnknown
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppInterface) override
    {
        if (iid == UNKNOWN)
        {
            *ppInterface = this;
            AddRef();
            return OK;
        }
        return m_pInner->QueryInterface(iid, ppInterface);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_uReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_uReferences; }

    ComPtr<IUnknown> m_pInner;
    ULONG m_uReferences = 1;
};

constexpr const IID* INTERFACES[] = {&OBJECT, &REALTIME, &CONFIGURATION, &EFFECTS, &EFFECTS_2};

TEST_F(InterfacesTest, ClassObjectsComeForTheTwoClassesAlone)
{
    for (const CLSID* pClassID : CLASSES)
    {
        for (const IID* pIid : {&UNKNOWN, &CLASS_FACTORY})
        {
            void* pFactory = nullptr;
            ASSERT_EQ(GetClassObject(*pClassID, *pIid, &pFactory), OK);
            EXPECT_EQ(static_cast<IUnknown*>(pFactory)->Release(), 0U) << "the caller's reference is the only one";
        }
        void* pNone = this;
        EXPECT_EQ(GetClassObject(*pClassID, OBJECT, &pNone), NO_INTERFACE);
        EXPECT_EQ(pNone, nullptr);
        EXPECT_EQ(GetClassObject(*pClassID, CLASS_FACTORY, nullptr), NULL_POINTER);
    }
    void* pUntouched = this;
    EXPECT_EQ(GetClassObject(OBJECT, CLASS_FACTORY, &pUntouched), BAD_ARGUMENT);
    EXPECT_EQ(pUntouched, this);
}

TEST_F(InterfacesTest, ObjectsAndServerLocksKeepTheModule)
{
    void* pFactory = nullptr;
    ASSERT_EQ(GetClassObject(RENDER_EFX, CLASS_FACTORY, &pFactory), OK);
    const ComPtr<IClassFactory> pOwned(static_cast<IClassFactory*>(pFactory));
    EXPECT_EQ(CanUnload(), OK) << "a factory doesn't count";
    pOwned->LockServer(TRUE);
    pOwned->LockServer(TRUE);
    pOwned->LockServer(FALSE);
    EXPECT_EQ(CanUnload(), S_FALSE);
    pOwned->LockServer(FALSE);
    EXPECT_EQ(CanUnload(), OK);
    ComPtr<IUnknown> pObject = Create<IUnknown>(RENDER_OMFX, UNKNOWN);
    EXPECT_EQ(CanUnload(), S_FALSE);
    pObject.reset();
    EXPECT_EQ(CanUnload(), OK);
    void* pNone = this;
    EXPECT_EQ(pOwned->CreateInstance(nullptr, CONFIGURATION, nullptr), NULL_POINTER);
    EXPECT_EQ(pOwned->CreateInstance(nullptr, CLASS_FACTORY, &pNone), NO_INTERFACE);
    EXPECT_EQ(pNone, nullptr);
    EXPECT_EQ(CanUnload(), OK) << "what can't be given isn't kept";
}

TEST_F(InterfacesTest, AnObjectIsOneBehindAllItsInterfaces)
{
    for (const CLSID* pClassID : CLASSES)
    {
        const ComPtr<IObject> pObject = Create<IObject>(*pClassID);
        const ComPtr<IUnknown> pIdentity = Query<IUnknown>(pObject.get(), UNKNOWN);
        EXPECT_EQ(pObject->AddRef(), 3U);
        EXPECT_EQ(pIdentity->Release(), 2U) << "one count for all interfaces";
        for (const IID* pIid : INTERFACES)
        {
            const ComPtr<IUnknown> pInterface = Query<IUnknown>(pIdentity.get(), *pIid);
            ASSERT_NE(pInterface, nullptr);
            for (const IID* pNext : INTERFACES)
                EXPECT_NE(Query<IUnknown>(pInterface.get(), *pNext), nullptr);
            EXPECT_EQ(Query<IUnknown>(pInterface.get(), UNKNOWN), pIdentity);
        }
        EXPECT_EQ(Query<IUnknown>(pObject.get(), EFFECTS), Query<IUnknown>(pObject.get(), EFFECTS_2));
        void* pNone = this;
        EXPECT_EQ(pObject->QueryInterface(CLASS_FACTORY, &pNone), NO_INTERFACE);
        EXPECT_EQ(pNone, nullptr);
        EXPECT_EQ(pObject->QueryInterface(OBJECT, nullptr), NULL_POINTER);
    }
}

TEST_F(InterfacesTest, AnAggregatedObjectCountsOnItsOuterUnknown)
{
    COuter oOuter;
    void* pFactory = nullptr;
    ASSERT_EQ(GetClassObject(RENDER_EFX, CLASS_FACTORY, &pFactory), OK);
    const ComPtr<IClassFactory> pOwned(static_cast<IClassFactory*>(pFactory));
    void* pNone = this;
    EXPECT_EQ(pOwned->CreateInstance(&oOuter, OBJECT, &pNone), NO_INTERFACE);
    EXPECT_EQ(pNone, nullptr);
    EXPECT_EQ(CanUnload(), OK);

    oOuter.m_pInner = Create<IUnknown>(RENDER_EFX, UNKNOWN, &oOuter);
    EXPECT_EQ(oOuter.m_uReferences, 1U);
    {
        const ComPtr<IObject> pObject = Query<IObject>(&oOuter, OBJECT);
        const ComPtr<IRealtime> pRealtime = Query<IRealtime>(pObject.get(), REALTIME);
        EXPECT_EQ(oOuter.m_uReferences, 3U);
        EXPECT_EQ(Query<IUnknown>(pRealtime.get(), UNKNOWN).get(), &oOuter);
        EXPECT_EQ(pRealtime->CalcInputFrames(480), 480U);
        EXPECT_EQ(oOuter.m_pInner->AddRef(), 2U) << "the inner unknown counts for itself";
        EXPECT_EQ(oOuter.m_pInner->Release(), 1U);
    }
    EXPECT_EQ(oOuter.m_uReferences, 1U);
    oOuter.m_pInner.reset();
    EXPECT_EQ(CanUnload(), OK);
}

TEST_F(InterfacesTest, EachSlotAnswersForItself)
{
    const ComPtr<IObject> pObject = CreateInitialized(RENDER_OMFX);
    EXPECT_EQ(pObject->Reset(), OK);
    INT64 i64Latency = -1;
    EXPECT_EQ(pObject->GetLatency(&i64Latency), OK);
    EXPECT_EQ(i64Latency, 0);
    EXPECT_EQ(pObject->GetLatency(nullptr), NULL_POINTER);

    Registration* pRegistration = nullptr;
    ASSERT_EQ(pObject->GetRegistrationProperties(&pRegistration), OK);
    EXPECT_EQ(pRegistration->oClassID, RENDER_OMFX);
    EXPECT_EQ(pRegistration->iFlags, 0xF);
    EXPECT_EQ(std::wstring(pRegistration->aFriendlyName), L"KELVANEPostOMFX");
    EXPECT_EQ(pRegistration->u32MajorVersion, 1U);
    EXPECT_EQ(pRegistration->u32MaxInputs + pRegistration->u32MinOutputs, 2U);
    EXPECT_EQ(pRegistration->u32MaxInstances, 0xFFFFFFFFU);
    EXPECT_EQ(pRegistration->u32Interfaces, 1U);
    EXPECT_EQ(pRegistration->aInterfaces[0], OBJECT);
    CoTaskMemFree(pRegistration);
    EXPECT_EQ(pObject->GetRegistrationProperties(nullptr), NULL_POINTER);

    const ComPtr<IEffects2> pEffects = Query<IEffects2>(pObject.get(), EFFECTS_2);
    GUID oUnwritten{};
    GUID* pEffectList = &oUnwritten;
    UINT uEffects = 7;
    EXPECT_EQ(pEffects->GetEffectsList(&pEffectList, &uEffects, nullptr), OK);
    EXPECT_EQ(pEffectList, nullptr);
    EXPECT_EQ(uEffects, 0U);
    EXPECT_EQ(pEffects->GetEffectsList(nullptr, nullptr, nullptr), OK);

    const ComPtr<IRealtime> pRealtime = Query<IRealtime>(pObject.get(), REALTIME);
    EXPECT_EQ(pRealtime->CalcInputFrames(441), 441U);
    EXPECT_EQ(pRealtime->CalcOutputFrames(0), 0U);
}
} // namespace
