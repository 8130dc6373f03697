// The whole module as the audio engine meets it: found through the registry, built through COM, fed period by period.
#include "apo/kelvane/apo_kelvane_guid.h"
#include "tests/platform/machine_file.h"
#include "tests/support/apo_connections.h"
#include "tests/support/machine_test.h"

#include <filesystem>
#include <utility>

namespace
{
constexpr char strDriverFolder[] = "/c/windows/system32/ZVAudioDriver/";

// A stream that is initialised and locked, and gone at the end; built through COM, or by the module itself.
class CStream
{
public:
    CStream(const CLSID& oClassID, DWORD dwChannels, FLOAT32 f32Rate, HMODULE hModule = nullptr)
        : m_oFormats(dwChannels, f32Rate)
    {
        BYTE aInit[sizeof(APOInitSystemEffects2)] = {};
        IClassFactory* pFactory = nullptr;
        void** const ppFactory = reinterpret_cast<void**>(&pFactory);
        const auto pGetClassObject = reinterpret_cast<HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**)>(
            reinterpret_cast<void (*)()>(GetProcAddress(hModule, "DllGetClassObject")));
        EXPECT_EQ(pGetClassObject != nullptr
                      ? pGetClassObject(oClassID, IID_IClassFactory, ppFactory)
                      : CoGetClassObject(oClassID, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory, ppFactory),
                  S_OK);
        EXPECT_EQ(pFactory->CreateInstance(nullptr, IID_IAudioProcessingObject, reinterpret_cast<void**>(&m_pObject)),
                  S_OK);
        pFactory->Release();
        EXPECT_EQ(m_pObject->Initialize(sizeof(aInit), aInit), S_OK);
        m_pObject->QueryInterface(IID_IAudioProcessingObjectRT, reinterpret_cast<void**>(&m_pRT));
        m_pObject->QueryInterface(IID_IAudioProcessingObjectConfiguration, reinterpret_cast<void**>(&m_pConfiguration));
        EXPECT_EQ(Lock(), S_OK);
    }
    CStream(const CStream&) = delete;
    CStream& operator=(const CStream&) = delete;
    ~CStream()
    {
        m_pConfiguration->UnlockForProcess();
        m_pConfiguration->Release();
        m_pRT->Release();
        m_pObject->Release();
    }

    HRESULT Lock() { return m_oFormats.Lock(*m_pConfiguration); }

    CFormatPair m_oFormats;
    IAudioProcessingObject* m_pObject = nullptr;
    IAudioProcessingObjectRT* m_pRT = nullptr;
    IAudioProcessingObjectConfiguration* m_pConfiguration = nullptr;
};

class ModuleTest : public MachineTest
{
protected:
    void SetUp() override
    {
        MachineTest::SetUp();
        std::filesystem::copy(KELVANE_MACHINE_FOLDER, machine::Folder(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
        std::filesystem::copy_file(KELVANE_LIBRARY, machine::Folder() + strDriverFolder + "Kelvane_x64.dll");
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        EXPECT_EQ(CallExport("DllRegisterServer"), S_OK);
    }
    void TearDown() override
    {
        CoFreeUnusedLibraries();
        CoUninitialize();
        MachineTest::TearDown();
    }

    // Loads the module for one call, as the registration tool does.
    static HRESULT CallExport(const char* pName)
    {
        const HMODULE hModule = LoadLibraryA("KelvaneAPO");
        const auto pExport = reinterpret_cast<HRESULT(STDMETHODCALLTYPE*)()>(
            reinterpret_cast<void (*)()>(GetProcAddress(hModule, pName)));
        EXPECT_NE(pExport, nullptr) << pName;
        const HRESULT hResult = pExport != nullptr ? pExport() : E_FAIL;
        FreeLibrary(hModule);
        return hResult;
    }

    // In each set of the default tuning file.
    static void ReplaceInTuning(const std::string& strFrom, const std::string& strTo)
    {
        const std::string strTuning = machine::Folder() + strDriverFolder + "audio_kelvane_params_default.xml";
        std::string strText = HostFile(strTuning);
        ASSERT_NE(strText.find(strFrom), std::string::npos) << strFrom;
        for (size_t i = 0; (i = strText.find(strFrom, i)) != std::string::npos;)
            strText.replace(i, strFrom.size(), strTo);
        std::ofstream(strTuning) << strText;
    }

    // Plays distinct samples and gives input and output, interleaved.
    static void Play(CStream& oStream, int iChannels, UINT32 u32FrameCount, int iPeriods, std::vector<FLOAT32>& vecIn,
                     std::vector<FLOAT32>& vecOut)
    {
        CPeriod oPeriod(iChannels, u32FrameCount);
        for (int i = 0; i < iPeriods; ++i)
        {
            for (FLOAT32& f32 : oPeriod.m_vecInput)
            {
                vecIn.push_back(0.5F + static_cast<FLOAT32>(vecIn.size()) * 0x1p-20F);
                f32 = vecIn.back();
            }
            oPeriod.Run(*oStream.m_pRT);
            EXPECT_EQ(oPeriod.m_oOutput.u32ValidFrameCount, u32FrameCount);
            vecOut.insert(vecOut.end(), oPeriod.m_vecOutput.begin(), oPeriod.m_vecOutput.end());
            WaitForWorkers();
        }
    }

    static std::string ReadText(HKEY hRoot, const std::string& strPath, const char* pName)
    {
        HKEY hKey = nullptr;
        char aText[300] = {};
        DWORD dwSize = sizeof(aText) - 1;
        if (RegOpenKeyExA(hRoot, strPath.c_str(), 0, KEY_READ, &hKey) != 0)
            return "no key";
        if (RegQueryValueExA(hKey, pName, nullptr, nullptr, reinterpret_cast<BYTE*>(aText), &dwSize) != 0)
            strcpy(aText, "no value");
        RegCloseKey(hKey);
        return aText;
    }
};

TEST_F(ModuleTest, RegistrationWritesBothClassesAndTakesThemBack)
{
    const struct
    {
        const char *pClassID, *pClassName, *pFriendlyName;
    } aCases[] = {
        {"{D3BDE93A-50C2-439A-B238-44F1CB5055B0}", "KELVANE Post EFX Class", "KELVANEPostEFX"},
        {"{6CB3EF4C-BC00-4A60-BC34-734F0148F856}", "KELVANE Post OMFX Class", "KELVANEPostOMFX"},
    };
    EXPECT_EQ(CallExport("DllRegisterServer"), S_OK);
    for (const bool bRegistered : {true, false})
    {
        for (const auto& oCase : aCases)
        {
            const std::string strClass = std::string("SOFTWARE\\Classes\\CLSID\\") + oCase.pClassID;
            const std::string strServer = strClass + "\\InprocServer32";
            const std::string strObject = std::string("AudioEngine\\AudioProcessingObjects\\") + oCase.pClassID;
            const auto fExpected = [=](const char* pText) { return bRegistered ? pText : "no key"; };
            EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, strClass, ""), fExpected(oCase.pClassName));
            EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, strServer, ""), fExpected("KelvaneAPO"));
            EXPECT_EQ(ReadText(HKEY_LOCAL_MACHINE, strServer, "ThreadingMode"), fExpected("Both"));
            EXPECT_EQ(ReadText(HKEY_CLASSES_ROOT, strObject, "APOInterface0"),
                      fExpected("{FD7F2B29-24D0-4B5C-B177-592C39F9CA10}"));
            EXPECT_EQ(ReadText(HKEY_CLASSES_ROOT, strObject, "FriendlyName"), fExpected(oCase.pFriendlyName));
        }
        // Nothing to take back is the platform's failure.
        EXPECT_EQ(CallExport("DllUnregisterServer") == S_OK, bRegistered);
    }
    void* pNone = this;
    EXPECT_EQ(CoCreateInstance(KELVANE_RENDER_EFX_GUID, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &pNone),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(pNone, nullptr);
}

// A library that turns each sign plays, so that what went past it shows. The tuning is for eight speakers.
TEST_F(ModuleTest, WhatTheLibraryPlayedIsBitExactBehindItsLeadIn)
{
    ReplaceInTuning(",0x2,0x0,0x0,0x20,", ",0x8,0x0,0x0,0x20,");
    std::filesystem::copy_file(FAKE_NONE_FILE, machine::Folder() + strDriverFolder + "Kelvane_x64.dll",
                               std::filesystem::copy_options::overwrite_existing);
    const struct
    {
        const CLSID& oClassID;
        int iChannels;
        UINT32 u32FrameCount;
        size_t iLeadIn;                // sample frames
        std::vector<size_t> vecSource; // the stream channel that each channel carries
    } aCases[] = {
        {KELVANE_RENDER_OMFX_GUID, 1, 480, 0, {0}},
        {KELVANE_RENDER_OMFX_GUID, 2, 480, 0, {0, 1}},
        {KELVANE_RENDER_OMFX_GUID, 2, 960, 0, {0, 1}},
        {KELVANE_RENDER_OMFX_GUID, 8, 480, 0, {0, 1, 2, 3, 4, 5, 6, 7}},
        {KELVANE_RENDER_OMFX_GUID, 2, 1024, 1440, {0, 1}},
        {KELVANE_RENDER_EFX_GUID, 1, 240, 3 * 240, {0}},
        {KELVANE_RENDER_EFX_GUID, 2, 480, 3 * 480, {0, 1}},
        {KELVANE_RENDER_EFX_GUID, 4, 480, 3 * 480, {0, 1, 0, 1}},
        {KELVANE_RENDER_EFX_GUID, 2, 441, 3 * 441 + 1440, {0, 1}},
    };
    for (const auto& oCase : aCases)
    {
        SCOPED_TRACE(std::to_string(oCase.iChannels) + "x" + std::to_string(oCase.u32FrameCount) + ", lead-in " +
                     std::to_string(oCase.iLeadIn));
        CStream oStream(oCase.oClassID, static_cast<DWORD>(oCase.iChannels), 48000);
        std::vector<FLOAT32> vecIn;
        std::vector<FLOAT32> vecOut;
        Play(oStream, oCase.iChannels, oCase.u32FrameCount, 40, vecIn, vecOut);
        const auto iChannels = static_cast<size_t>(oCase.iChannels);
        size_t iWrong = 0;
        for (size_t i = 0; i < vecOut.size(); ++i)
        {
            const size_t iFrame = i / iChannels;
            const FLOAT32 f32Expected =
                iFrame < oCase.iLeadIn ? 0.0F
                                       : -vecIn[(iFrame - oCase.iLeadIn) * iChannels + oCase.vecSource[i % iChannels]];
            iWrong += vecOut[i] != f32Expected;
        }
        EXPECT_EQ(iWrong, 0U);
    }
}

TEST_F(ModuleTest, AnUnusedModuleGoes)
{
    {
        const CStream oStream(KELVANE_RENDER_OMFX_GUID, 2, 48000);
        CoFreeUnusedLibraries();
        EXPECT_EQ(CallExport("DllCanUnloadNow"), S_FALSE);
    }
    CoFreeUnusedLibraries();
    EXPECT_EQ(HostFile("/proc/self/maps").find("KelvaneAPO.dll"), std::string::npos);
}

// Amplifiers, codecs and controller all silent: each step of the life ends, an inline stream waits once, and freeing
// takes everything away but the call that is out and the code it returns to.
TEST_F(ModuleTest, SilentDevicesHoldNothingUp)
{
    DeclareMachine("<amplifier name='KELVANE_DEVICE0' hang='yes'/><amplifier name='KELVANE_DEVICE1' hang='yes'/>"
                   "<codec kind='senary' hang='yes'/><codec kind='everest' hang='yes'/>"
                   "<controller input='u64Input' hang='yes'/>");
    ReplaceInTuning("{0x0,0x1,", "{0x1,0x2,"); // codecs in use, two amplifiers

    machine::DivideTimeouts(SANITIZED ? 2 : 10);
    size_t iBefore = machine::ExpiredMilliseconds();
    const auto fStep = [&](const char* pStep)
    {
        const size_t iExpired = machine::ExpiredMilliseconds();
        EXPECT_LT(iExpired - std::exchange(iBefore, iExpired), 10000U) << pStep;
    };
    const HMODULE hModule = LoadLibraryA("KelvaneAPO");
    fStep("load");
    std::vector<FLOAT32> vecIn, vecOut;
    {
        CStream oInline(KELVANE_RENDER_OMFX_GUID, 2, 48000, hModule);
        fStep("lock");
        CStream oWorker(KELVANE_RENDER_EFX_GUID, 2, 48000, hModule);
        fStep("lock beside it");
        Play(oInline, 2, 480, 1500, vecIn, vecOut);
        fStep("three jobs that meet the controller");
        Play(oWorker, 2, 480, 1100, vecIn, vecOut);
        EXPECT_EQ(machine::Sent("controller").size(), 2U); // one of each stream
        EXPECT_EQ(oWorker.m_pConfiguration->UnlockForProcess(), S_OK);
        EXPECT_EQ(oWorker.Lock(), S_OK);
        fStep("second lock");
    }
    fStep("release");
    FreeLibrary(hModule);
    EXPECT_NE(GetProcAddress(hModule, "DllCanUnloadNow"), nullptr);
    machine::CompleteHungRequests();
    EXPECT_TRUE(WaitFor([&] { return GetProcAddress(hModule, "DllCanUnloadNow") == nullptr; }));
    fStep("free");
}
} // namespace
