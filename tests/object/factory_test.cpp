// Class objects and what they build: references, refusals, aggregation.
#include "tests/object/object_fixture.h"

#include "apo/base/apo_base_module.h"
#include "apo/kelvane/apo_kelvane_guid.h"

namespace
{
// An outer object that only counts.
struct CountingOuter : public IUnknown
{
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override
    {
        ++iQueries;
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++ulReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --ulReferences; }
    int iQueries = 0;
    ULONG ulReferences = 1;
};

using FactoryTest = ObjectTest;

TEST_F(FactoryTest, AFactoryBuildsCountsAndAggregates)
{
    IClassFactory* pFactory = nullptr;
    void* pObject = this;
    CKelvaneManager* const pManager = CKelvaneManager::Instance();
    EXPECT_EQ(pManager->GetClassObject(IID_IUnknown, IID_IClassFactory, &pObject), E_INVALIDARG);
    EXPECT_EQ(CountLog("Invalid cisid:{00000000-0000-0000-C000-000000000046}"), 1U);
    EXPECT_EQ(pManager->GetClassObject(KELVANE_RENDER_EFX_GUID, IID_IClassFactory, nullptr), E_POINTER);
    EXPECT_EQ(pManager->GetClassObject(KELVANE_RENDER_EFX_GUID, IID_IAudioProcessingObject, &pObject), E_NOINTERFACE);
    ASSERT_EQ(pManager->GetClassObject(KELVANE_RENDER_EFX_GUID, IID_IClassFactory, reinterpret_cast<void**>(&pFactory)),
              S_OK);
    EXPECT_EQ(pFactory->CreateInstance(nullptr, IID_IAudioProcessingObject, nullptr), E_POINTER);
    EXPECT_EQ(pFactory->CreateInstance(nullptr, IID_IClassFactory, &pObject), E_NOINTERFACE);
    EXPECT_EQ(g_lObjectCount, 0);

    CountingOuter oOuter;
    EXPECT_EQ(pFactory->CreateInstance(&oOuter, IID_IAudioProcessingObject, &pObject), E_NOINTERFACE);
    EXPECT_EQ(g_lObjectCount, 0);
    IUnknown* pInner = nullptr;
    ASSERT_EQ(pFactory->CreateInstance(&oOuter, IID_IUnknown, reinterpret_cast<void**>(&pInner)), S_OK);
    EXPECT_EQ(oOuter.ulReferences, 1U);
    IAudioProcessingObject* pAggregated = nullptr;
    ASSERT_EQ(pInner->QueryInterface(IID_IAudioProcessingObject, reinterpret_cast<void**>(&pAggregated)), S_OK);
    EXPECT_EQ(oOuter.ulReferences, 2U);
    EXPECT_EQ(pAggregated->QueryInterface(IID_IUnknown, &pObject), E_NOINTERFACE);
    EXPECT_EQ(oOuter.iQueries, 1);
    EXPECT_EQ(pAggregated->Release(), 1U);
    IAudioSystemEffects2* pEffects = nullptr;
    ASSERT_EQ(pInner->QueryInterface(IID_IAudioSystemEffects2, reinterpret_cast<void**>(&pEffects)), S_OK);
    UINT cEffects = 7;
    EXPECT_EQ(pEffects->GetEffectsList(nullptr, &cEffects, nullptr), S_OK);
    EXPECT_EQ(cEffects, 0U);
    EXPECT_EQ(pEffects->Release(), 1U);
    EXPECT_EQ(pInner->Release(), 0U);
    EXPECT_EQ(g_lObjectCount, 0);

    EXPECT_EQ(pFactory->Release(), 0U);

    APOClassFactory* const pTypeless = new CKelvaneClassFactory;
    EXPECT_EQ(pTypeless->CreateInstance(nullptr, IID_IUnknown, &pObject), E_OUTOFMEMORY);
    EXPECT_EQ(LinesOf("ERROR").back(), std::to_string(0x8007000E) + " pAPOBase");
    EXPECT_EQ(pTypeless->Release(), 0U);
}
} // namespace
