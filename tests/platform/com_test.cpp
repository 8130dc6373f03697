// Component object model of the native machine.
#include "platform/linux/machine.h"
#include "tests/platform/modules/com_server.h"
#include "tests/support/machine_test.h"

#include <string>
#include <thread>

namespace
{
const char c_strServerKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{8A0B6F32-51D4-4C0E-9B1A-2C3D4E5F6071}\\InprocServer32";

class ComTest : public MachineTest
{
protected:
    static HRESULT Create(REFIID riid, void** ppv, IUnknown* pOuter = nullptr)
    {
        return CoCreateInstance(CLSID_TestServer, pOuter, CLSCTX_INPROC_SERVER, riid, ppv);
    }
};

TEST_F(ComTest, FindsAClassThroughTheRegistry)
{
    void* pNone = this;
    ASSERT_EQ(Create(IID_ITestObject, &pNone), CO_E_NOTINITIALIZED);
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(Create(IID_ITestObject, &pNone), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(pNone, nullptr);
    SetRegistry(c_strServerKey, "", std::string("no_such_module"));
    EXPECT_EQ(Create(IID_ITestObject, &pNone), CO_E_DLLNOTFOUND);
    SetRegistry(c_strServerKey, "", std::string("com_test_server"));
    EXPECT_EQ(Create(IID_IClassFactory, &pNone), E_NOINTERFACE);

    ITestObject* pObject = nullptr;
    ASSERT_EQ(Create(IID_ITestObject, reinterpret_cast<void**>(&pObject)), S_OK);
    EXPECT_EQ(pObject->GetSerial(), 2U); // the refused one was the first
    EXPECT_EQ(Create(IID_IUnknown, &pNone, pObject), CLASS_E_NOAGGREGATION);
    CoFreeUnusedLibraries();
    EXPECT_EQ(pObject->GetSerial(), 2U) << "a module in use stays";

    // Another thread uses the multithreaded apartment without a call of its own.
    std::thread oOther(
        []
        {
            ITestObject* pOwn = nullptr;
            ASSERT_EQ(Create(IID_ITestObject, reinterpret_cast<void**>(&pOwn)), S_OK);
            EXPECT_EQ(pOwn->GetSerial(), 3U);
            EXPECT_EQ(pOwn->Release(), 0U);
        });
    oOther.join();
    EXPECT_EQ(pObject->Release(), 0U);

    CoFreeUnusedLibraries();
    ASSERT_EQ(Create(IID_ITestObject, reinterpret_cast<void**>(&pObject)), S_OK);
    EXPECT_EQ(pObject->GetSerial(), 1U) << "an unused module was unloaded and starts anew";
    pObject->Release();
    CoFreeUnusedLibraries();
    CoUninitialize();
}

} // namespace
