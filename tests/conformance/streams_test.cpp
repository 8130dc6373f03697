// Periods on every path, and rounds without end: nothing faults, grows or leaves a sample that isn't a number.
#include "platform/control/machine.h"
#include "tests/conformance/module_fixture.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>

using namespace published;

namespace
{
constexpr UINT32 MOST_FRAMES = 4096;
constexpr UINT32 MOST_CHANNELS = 16;

constexpr size_t GROWTH = 1 << 20; // bytes in a thousand lives

class StreamsTest : public ModuleFixture
{
protected:
    // Memory for the largest period; a period's records over it, in place or not.
    void Process(IRealtime& oRealtime, UINT32 u32Frames, int iFlags, bool bInPlace)
    {
        m_oInput = {reinterpret_cast<UINT_PTR>(m_vecInput.data()), u32Frames, iFlags, 0x41435053};
        m_oOutput = {reinterpret_cast<UINT_PTR>(bInPlace ? m_vecInput.data() : m_vecOutput.data()), 0, 0, 0x41435053};
        Property* pInput = &m_oInput;
        Property* pOutput = &m_oOutput;
        oRealtime.Process(1, &pInput, 1, &pOutput);
    }

    std::vector<FLOAT> m_vecInput = std::vector<FLOAT>(MOST_FRAMES * MOST_CHANNELS, 0.25F);
    std::vector<FLOAT> m_vecOutput = std::vector<FLOAT>(MOST_FRAMES * MOST_CHANNELS);
    Property m_oInput{};
    Property m_oOutput{};
};

// A stream at each rate, from its lead-in to its audio, and what is played when a bypass or a missing library takes the
// processing away. A call leaves the buffer as it was, when a worker is behind or the period is silent, or writes all.
TEST_F(StreamsTest, WhatIsWrittenIsWholeAndFinite)
{
    constexpr FLOAT f32Infinity = std::numeric_limits<FLOAT>::infinity();
    const auto fRun = [&](const CLSID& oClassID, FLOAT f32Rate, bool bInPlace)
    {
        const ComPtr<IObject> pObject = CreateInitialized(oClassID);
        const ComPtr<IConfiguration> pConfiguration = Query<IConfiguration>(pObject.get(), CONFIGURATION);
        const ComPtr<IRealtime> pRealtime = Query<IRealtime>(pObject.get(), REALTIME);
        CConnection oConnection(2, f32Rate);
        ASSERT_EQ(oConnection.Lock(*pConfiguration), OK);
        const auto u32Frames = static_cast<UINT32>(f32Rate / 50);
        const std::vector<FLOAT>& vecWritten = bInPlace ? m_vecInput : m_vecOutput;
        const auto itEnd = vecWritten.begin() + 2 * u32Frames;
        const auto fCall = [&](int iFlags)
        {
            std::fill(m_vecInput.begin(), m_vecInput.end(), 0.25F);
            std::fill(m_vecOutput.begin(), m_vecOutput.end(), f32Infinity);
            Process(*pRealtime, u32Frames, iFlags, bInPlace);
            EXPECT_EQ(m_oOutput.u32ValidFrameCount, u32Frames);
            EXPECT_EQ(*itEnd, bInPlace ? 0.25F : f32Infinity) << "nothing is written behind the period";
            const auto iFinite = std::count_if(vecWritten.begin(), itEnd, [](FLOAT f32) { return std::isfinite(f32); });
            EXPECT_TRUE(iFinite == 0 || iFinite == itEnd - vecWritten.begin()) << iFinite;
            return iFinite != 0;
        };
        EXPECT_TRUE(fCall(1)) << "the first call of all";
        EXPECT_EQ(m_oOutput.iFlags, 1);
        int iAudible = 0; // periods behind the lead-in
        EXPECT_TRUE(WaitFor([&] { return (iAudible += fCall(1) && vecWritten[0] != 0) == 4; }));
        for (int i = 0; i < 3; ++i)
            fCall(2);
    };
    for (const char* pMissing : {"", "Kelvane_x64.dll"})
    {
        Free();
        if (*pMissing != 0)
            DeleteFileA((std::string("C:\\windows\\system32\\ZVAudioDriver\\") + pMissing).c_str());
        Load();
        for (const CLSID* pClassID : CLASSES)
            for (const FLOAT f32Rate : {11025.0F, 16000.0F, 22050.0F, 32000.0F, 44100.0F, 48000.0F, 96000.0F})
                for (const bool bInPlace : {false, true})
                {
                    SCOPED_TRACE(std::to_string(f32Rate) + pMissing + (bInPlace ? ", in place" : ""));
                    fRun(*pClassID, f32Rate, bInPlace);
                }
    }
}

// In any order, good and bad alike, each call ends in a code that it is known for, and leaves nothing behind.
TEST_F(StreamsTest, RandomCallsEndInACodeWithoutGrowth)
{
    constexpr DWORD aChannels[] = {0, 1, 2, 2, 2, 3, 4, 6, 8, MOST_CHANNELS};
    constexpr FLOAT aRates[] = {8000, 11025, 16000, 22050, 32000, 44100, 48000, 48000, 48000, 96000, 192000, 0};
    const std::set<HRESULT> aLockCodes = {OK, NOT_INITIALIZED, FORMAT_NOT_SUPPORTED, BAD_CONNECTION_FORMAT, LOCKED};
    BYTE aInit[128] = {};
    Free();
    const size_t iObjects = machine::GetFootprint().iObjects;
    Load();
    // The pool's threads go when they have had nothing to do for a while.
    const auto fReload = [&]
    {
        EXPECT_EQ(CanUnload(), OK);
        Free();
        EXPECT_TRUE(WaitFor([&] { return machine::GetFootprint().iObjects <= iObjects; }, 30000));
        const size_t iBytes = machine::GetFootprint().iBytes;
        Load();
        return iBytes;
    };
    const unsigned uSeeds = SANITIZED ? 400 : 2000;
    size_t iSettled = 0;
    for (unsigned uSeed = 0; uSeed < uSeeds; ++uSeed)
    {
        SCOPED_TRACE(uSeed);
        if (uSeed % 20 == 0 && uSeed <= uSeeds / 2)
            iSettled = fReload();
        std::mt19937 oRandom(uSeed);
        const auto fBelow = [&](size_t iEnd) { return static_cast<UINT32>(oRandom() % iEnd); };
        const bool bInline = fBelow(2) == 0;
        const ComPtr<IObject> pObject = Create<IObject>(bInline ? RENDER_OMFX : RENDER_EFX);
        const ComPtr<IConfiguration> pConfiguration = Query<IConfiguration>(pObject.get(), CONFIGURATION);
        const ComPtr<IRealtime> pRealtime = Query<IRealtime>(pObject.get(), REALTIME);
        pObject->Initialize(fBelow(4) != 0 ? 88 : 87, aInit);
        UINT32 u32Block = 1;
        for (UINT32 u32Calls = fBelow(16); u32Calls > 0; --u32Calls)
            switch (fBelow(6))
            {
            case 0:
            {
                CConnection oConnection(aChannels[fBelow(std::size(aChannels))], aRates[fBelow(std::size(aRates))]);
                CConnection oOther(2, 44100);
                Descriptor** const ppOutput = &(fBelow(10) != 0 ? oConnection : oOther).m_pDescriptor;
                const HRESULT hResult = pConfiguration->Lock(1, &oConnection.m_pDescriptor, 1, ppOutput);
                EXPECT_EQ(aLockCodes.count(hResult), 1U) << std::hex << hResult;
                const FLOAT f32Rate = oConnection.m_oType.m_oFormat.f32Rate;
                u32Block = hResult == OK ? static_cast<UINT32>(f32Rate / (f32Rate == 22050 ? 50 : 100)) : u32Block;
                break;
            }
            case 1:
                pConfiguration->Unlock();
                break;
            default: // an inline stream has a block to give for each call
                Process(*pRealtime, bInline ? u32Block * (1 + fBelow(MOST_FRAMES / u32Block)) : fBelow(MOST_FRAMES + 1),
                        static_cast<int>(fBelow(4)), fBelow(2) == 0);
            }
    }
    EXPECT_LT(SANITIZED ? 0 : fReload(), iSettled + GROWTH);
}
} // namespace
