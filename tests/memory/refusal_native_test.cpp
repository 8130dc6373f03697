// Lives of the module, from load to unload, each with one heap block refused: the next one in every life.
// Native only: who asks for a block is told by the loader.
#include "apo/kelvane/apo_kelvane_guid.h"
#include "tests/platform/machine_file.h"
#include "tests/support/apo_connections.h"
#include "tests/support/machine_test.h"
#include "tests/support/own_heap.h"

#include <dlfcn.h>
#include <execinfo.h>

#include <cstring>
#include <filesystem>
#include <utility>

namespace
{
enum Side
{
    CALLER, // the thread that calls the module
    WORKERS // all others
};

// Of the side that is counted: the blocks asked for in this life, the first that may be refused (0: none), and the one
// that was: the first of the module's from there on.
std::atomic<Side> g_iSide{CALLER};
std::atomic<long> g_iAsked{0};
std::atomic<long> g_iDue{0};
std::atomic<long> g_iRefused{0};
thread_local Side g_iOwnSide = WORKERS;
thread_local bool g_bExempt = false; // not counted: the test's own blocks

// Whether the module wants the block, by itself or through a library's code; not the layer, for the platform has memory
// of its own, and not the protection library.
bool IsForModule()
{
    void* aFrames[48];
    const int iFrames = backtrace(aFrames, 48);
    for (int i = 0; i < iFrames; ++i)
    {
        Dl_info stInfo{};
        if (dladdr(aFrames[i], &stInfo) == 0 || stInfo.dli_fname == nullptr)
            continue;
        if (std::strstr(stInfo.dli_fname, "KelvaneAPO.dll") != nullptr)
            return true;
        if (std::strstr(stInfo.dli_fname, "libkelvane_platform") != nullptr ||
            std::strstr(stInfo.dli_fname, "Kelvane_x64.dll") != nullptr)
            return false;
    }
    return false;
}
} // namespace

static bool IsBlockRefused(size_t)
{
    if (g_bExempt || g_iOwnSide != g_iSide)
        return false;
    const long iBlock = ++g_iAsked;
    if (g_iDue == 0 || iBlock < g_iDue || g_iRefused != 0)
        return false;
    g_bExempt = true; // the look may take blocks too
    const bool bForModule = IsForModule();
    g_bExempt = false;
    long iNone = 0;
    return bForModule && g_iRefused.compare_exchange_strong(iNone, iBlock);
}

namespace
{
class RefusalTest : public MachineTest
{
protected:
    // The default machine without its devices' delays, with a tuning file of one set, and every line of the log on.
    void SetUp() override
    {
        MachineTest::SetUp();
        const std::string strDriver = "C:\\windows\\system32\\ZVAudioDriver\\";
        const std::string strKey = "HKEY_LOCAL_MACHINE\\SOFTWARE\\ZVAudio\\";
        std::filesystem::copy(KELVANE_MACHINE_FOLDER, machine::Folder(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
        DeclareMachine("<amplifier name='KELVANE_DEVICE0' late='0'/><controller input='u64Input'/>");
        PutFile(strDriver + "Kelvane_x64.dll", HostFile(KELVANE_LIBRARY));
        std::string strTuning = GetFile(strDriver + "audio_kelvane_params_default.xml");
        const size_t iSecond = strTuning.find("<NV ", strTuning.find("<NV ") + 1);
        strTuning.erase(iSecond, strTuning.find("</VENDOR>") - iSecond);
        PutFile(strDriver + "audio_kelvane_params_default.xml", strTuning);
        SetRegistry(strKey + "Volume\\Speaker", "VolumeNum", 0);
        SetRegistry(strKey + "Debug", "DebugLevel", 1);
        SetRegistry(strKey + "Debug", "DebugNum", 2);
        MakeFolder("C:\\ProgramData\\ZVAudio\\KelvaneAPO");
        g_iOwnSide = CALLER;
        g_bExempt = true;
    }
    void TearDown() override
    {
        g_iDue = 0;
        g_bExempt = false;
        MachineTest::TearDown();
    }

    // A call of the module: its blocks count.
    template <class Call> static auto Ask(Call fCall)
    {
        g_bExempt = false;
        const auto tResult = fCall();
        g_bExempt = true;
        return tResult;
    }

    // What failed for want of memory goes when there is some.
    template <class Call> static void Insist(const char* pStep, Call fCall)
    {
        if (Ask(fCall) == S_OK)
            return;
        g_iDue = 0;
        EXPECT_EQ(Ask(fCall), S_OK) << pStep;
    }

    static void Live(const CLSID& oClassID)
    {
        g_iAsked = 0;
        const HMODULE hModule = Ask([] { return LoadLibraryA("KelvaneAPO"); });
        m_iLoadBlocks = g_iAsked;
        const auto pExport = reinterpret_cast<HRESULT (*)(const CLSID&, const IID&, void**)>(
            reinterpret_cast<void (*)()>(GetProcAddress(hModule, "DllGetClassObject")));
        void* pMade = nullptr;
        Insist("factory", [&] { return pExport(oClassID, IID_IClassFactory, &pMade); });
        const auto pFactory = static_cast<IClassFactory*>(pMade);
        Insist("object", [&] { return pFactory->CreateInstance(nullptr, IID_IAudioProcessingObject, &pMade); });
        const auto pObject = static_cast<IAudioProcessingObject*>(pMade);
        BYTE aInit[sizeof(APOInitSystemEffects2)] = {};
        Insist("initialize", [&] { return pObject->Initialize(sizeof(aInit), aInit); });
        IAudioProcessingObjectRT* pRT = nullptr;
        IAudioProcessingObjectConfiguration* pConfiguration = nullptr;
        pObject->QueryInterface(IID_IAudioProcessingObjectRT, reinterpret_cast<void**>(&pRT));
        pObject->QueryInterface(IID_IAudioProcessingObjectConfiguration, reinterpret_cast<void**>(&pConfiguration));
        CFormatPair oFormats(2, 44100);
        Insist("lock", [&] { return oFormats.Lock(*pConfiguration); });
        for (int i = 0; i < 10; ++i)
        {
            CPeriod oPeriod(2, 441);
            Ask([&] { return oPeriod.Run(*pRT), 0; });
            EXPECT_EQ(oPeriod.m_oOutput.u32ValidFrameCount, 441u);
            EXPECT_NE(oPeriod.m_oOutput.u32BufferFlags, CPeriod::iUntouched);
        }
        Insist("unlock", [&] { return pConfiguration->UnlockForProcess(); });
        pConfiguration->Release();
        pRT->Release();
        Ask([&] { return pObject->Release(); });
        pFactory->Release();
        EXPECT_TRUE(Ask([&] { return FreeLibrary(hModule); }));
        const std::vector<BYTE> vecLow = {0, 0, 0, 0, 2, 0, 0, 0};
        std::vector<BYTE> vecLast = vecLow; // an amplifier without an object was never set active
        for (const machine::SentItem& oItem : machine::Sent("KELVANE_DEVICE0"))
            vecLast = oItem.strWhat == "request" ? oItem.vecData : vecLast;
        EXPECT_EQ(vecLast, vecLow) << "block " << g_iRefused;
        machine::ForgetSent();
    }

    static inline long m_iLoadBlocks = 0; // of the last life, on the side that was counted
};

TEST_F(RefusalTest, EachBlockInTurnCostsNoCrashNoLeakAndNoObject)
{
    long iLives = 0;
    constexpr long STEP = SANITIZED ? 12 : 1; // the sanitizers take their time
    for (const Side iSide : {CALLER, WORKERS})
    {
        g_iSide = iSide;
        long iFirst = 1; // the second variant's load is the first one's
        for (const CLSID& oClassID : {KELVANE_RENDER_EFX_GUID, KELVANE_RENDER_OMFX_GUID})
        {
            g_iDue = 0;
            Live(oClassID);
            Live(oClassID); // what settles once is there
            long iLive = g_iLiveBlocks;
            for (long iDue = iFirst; !HasFailure(); iDue += STEP, ++iLives)
            {
                g_iRefused = 0;
                g_iDue = iDue;
                Live(oClassID);
                if (g_iRefused == 0)
                    break; // nobody asked for that many
                iDue = g_iRefused;
                if (std::exchange(iLive, g_iLiveBlocks) == iLive)
                    continue;
                g_iRefused = 0; // a leak comes again, a thread more in the platform's pool doesn't
                Live(oClassID);
                EXPECT_EQ(g_iLiveBlocks, iLive) << "block " << iDue << " of side " << iSide;
            }
            iFirst = m_iLoadBlocks;
        }
    }
    EXPECT_GT(iLives, 500 / STEP);
}
} // namespace
