// What class objects and factories report.
#include "tests/object/object_fixture.h"

#include "apo/kelvane/apo_kelvane_guid.h"

namespace
{
using FactoryTest = ObjectTest;

TEST_F(FactoryTest, WhatCantBeBuiltIsReported)
{
    void* pObject = this;
    CKelvaneManager* const pManager = CKelvaneManager::Instance();
    EXPECT_EQ(pManager->GetClassObject(IID_IUnknown, IID_IClassFactory, &pObject), E_INVALIDARG);
    EXPECT_EQ(CountLog("Invalid cisid:{00000000-0000-0000-C000-000000000046}"), 1U);
    EXPECT_EQ(pManager->GetClassObject(KELVANE_RENDER_EFX_GUID, IID_IAudioProcessingObject, &pObject), E_NOINTERFACE);
    EXPECT_EQ(CountLog("pFactory->QueryInterface(iid, ppv)"), 1U);

    APOClassFactory* const pTypeless = new CKelvaneClassFactory;
    EXPECT_EQ(pTypeless->CreateInstance(nullptr, IID_IUnknown, &pObject), E_OUTOFMEMORY);
    EXPECT_EQ(LinesOf("ERROR").back(), std::to_string(0x8007000E) + " pAPOBase");
    EXPECT_EQ(pTypeless->Release(), 0U);
}
} // namespace
