// What class objects and factories report, and what a failed registration leaves.
#include "tests/object/object_fixture.h"

#include "apo/kelvane/apo_kelvane_guid.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"

namespace
{
class FactoryTest : public ObjectTest
{
protected:
    // The key that the audio engine reads.
    static std::string ObjectKey(const CLSID& oClassID)
    {
        return "HKEY_CLASSES_ROOT\\AudioEngine\\AudioProcessingObjects\\" + CAudioSTR::GuidToString(oClassID);
    }
    // How many of the class's three keys there are.
    static int CountKeys(const CLSID& oClassID)
    {
        const std::string strClass =
            "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\" + CAudioSTR::GuidToString(oClassID);
        return CAudioREG::RegPathExists(ObjectKey(oClassID)) + CAudioREG::RegPathExists(strClass) +
               CAudioREG::RegPathExists(strClass + "\\InprocServer32");
    }
};

TEST_F(FactoryTest, WhatCantBeBuiltIsReported)
{
    void* pObject = this;
    CKelvaneManager* const pManager = CKelvaneManager::Instance();
    EXPECT_EQ(pManager->GetClassObject(IID_IUnknown, IID_IClassFactory, &pObject), E_INVALIDARG);
    EXPECT_EQ(CountLog("Invalid cisid:{00000000-0000-0000-C000-000000000046}"), 1U);
    EXPECT_EQ(pManager->GetClassObject(KELVANE_RENDER_EFX_GUID, IID_IAudioProcessingObject, &pObject), E_NOINTERFACE);
    EXPECT_EQ(CountLog("pFactory->QueryInterface(iid, ppv)"), 1U);

    APOClassFactory* const pTypeless = new CKelvaneClassFactory;
    pObject = this;
    EXPECT_EQ(pTypeless->CreateInstance(nullptr, IID_IUnknown, &pObject), E_OUTOFMEMORY);
    EXPECT_EQ(pObject, nullptr);
    EXPECT_EQ(LinesOf("ERROR").back(), std::to_string(0x8007000E) + " pAPOBase");
    EXPECT_EQ(pTypeless->Release(), 0U);
}

TEST_F(FactoryTest, AFailedRegistrationIsUndone)
{
    CKelvaneManager* const pManager = CKelvaneManager::Instance();
    machine::FailNext("GetModuleFileNameA", ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(pManager->RegisterAllFX(), E_FAIL);
    EXPECT_EQ(CountKeys(KELVANE_RENDER_EFX_GUID), 0);
    EXPECT_EQ(LinesOf("ERROR").back(), std::to_string(0x80004005) + " strModuleName.empty()");

    // Half of the first class's values.
    EXPECT_EQ(CAudioREG::RegisterAudioAPO(nullptr, "class", "module"), 13);
    machine::FailNext("RegSetValueExW", ERROR_ACCESS_DENIED, 1, 5);
    EXPECT_EQ(CAudioREG::RegisterAudioAPO(CKelvaneClassFactory::KelvanePostEFX_Property, "class", "module"),
              HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(CountKeys(KELVANE_RENDER_EFX_GUID), 0);

    // The second class: what the platform keeps of it can't be taken away.
    CAudioREG::CreateRegKey(ObjectKey(KELVANE_RENDER_OMFX_GUID) + "\\Held");
    EXPECT_EQ(pManager->RegisterAllFX(), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(CountKeys(KELVANE_RENDER_EFX_GUID), 0);
    EXPECT_EQ(CountKeys(KELVANE_RENDER_OMFX_GUID), 1);
    CAudioREG::DeleteRegKey(ObjectKey(KELVANE_RENDER_OMFX_GUID) + "\\Held");
}

TEST_F(FactoryTest, AClassThatCantBeRemovedStopsTheRemoval)
{
    CKelvaneManager* const pManager = CKelvaneManager::Instance();
    EXPECT_EQ(pManager->RegisterAllFX(), S_OK);
    CAudioREG::CreateRegKey(ObjectKey(KELVANE_RENDER_EFX_GUID) + "\\Held");
    EXPECT_EQ(pManager->UnregisterAllFX(), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(CountKeys(KELVANE_RENDER_EFX_GUID), 1);
    EXPECT_EQ(CountKeys(KELVANE_RENDER_OMFX_GUID), 3);
    CAudioREG::DeleteRegKey(ObjectKey(KELVANE_RENDER_EFX_GUID) + "\\Held");
    EXPECT_EQ(pManager->UnregisterAllFX(), S_OK);
    EXPECT_EQ(CountKeys(KELVANE_RENDER_OMFX_GUID), 0);
}
} // namespace
