// The real-time contract of one call, counted: heap blocks on the processing thread, with the log off.
#include "apo/kelvane/apo_kelvane_factory.h"
#include "apo/kelvane/apo_kelvane_postefx.h"
#include "platform/control/control.h"
#include "tests/engine/engine_test.h"
#include "tests/support/apo_connections.h"

#include <cstdlib>
#include <new>

static thread_local int iTaken = 0;    // blocks that this thread took
static thread_local int iRefused = -1; // the one that it doesn't get

// Every form that the module uses, for a sanitizer's runtime has array forms of its own.
[[gnu::noinline]] void* operator new(size_t iSize, const std::nothrow_t&) noexcept
{
    if (iTaken++ == iRefused)
        return nullptr;
    return std::malloc(iSize != 0 ? iSize : 1);
}
[[gnu::noinline]] void* operator new(size_t iSize)
{
    if (void* const pBlock = operator new(iSize, std::nothrow))
        return pBlock;
    throw std::bad_alloc();
}
void* operator new[](size_t iSize, const std::nothrow_t&) noexcept
{
    return operator new(iSize, std::nothrow);
}
void* operator new[](size_t iSize)
{
    return operator new(iSize);
}
[[gnu::noinline]] void operator delete(void* pBlock) noexcept
{
    std::free(pBlock);
}
void operator delete(void* pBlock, size_t) noexcept
{
    operator delete(pBlock);
}
void operator delete[](void* pBlock) noexcept
{
    operator delete(pBlock);
}
void operator delete[](void* pBlock, size_t) noexcept
{
    operator delete(pBlock);
}

using RealtimeTest = EngineTest;

TEST_F(RealtimeTest, ACallTakesABlockForEachFrameItQueuesAndBuildsNoText)
{
    const struct
    {
        const char* pName;
        const APO_REG_PROPERTIES* pProperties;
        FLOAT32 f32Rate;
        UINT32 u32FrameCount;
        int iMost; // heap blocks that the dearest call takes
    } aCases[] = {
        {"EFX: two standard frames", CKelvaneClassFactory::KelvanePostEFX_Property, 48000, 480, 2},
        {"EFX 44.1 kHz", CKelvaneClassFactory::KelvanePostEFX_Property, 44100, 441, 10},
        {"OMFX: frames in, block, frame out", CKelvaneClassFactory::KelvanePostOMFX_Property, 48000, 480, 4},
        {"OMFX 44.1 kHz", CKelvaneClassFactory::KelvanePostOMFX_Property, 44100, 441, 18},
    };
    control::SetPowerStatus({1, 0, 100, 0, 0, 0}); // the real one costs the layer blocks of its own
    for (const auto& oCase : aCases)
    {
        SCOPED_TRACE(oCase.pName);
        const auto pObject = OpenObject(new CKelvanePostEFX(nullptr, oCase.pProperties), 2, oCase.f32Rate);
        CPeriod oPeriod(2, oCase.u32FrameCount);
        int iMost = 0;
        for (int i = 0; i < 520; ++i) // a whole round of the periodic lines
        {
            iTaken = 0;
            oPeriod.Run(*pObject);
            const int iTakenHere = iTaken;
            if (oCase.pProperties == CKelvaneClassFactory::KelvanePostEFX_Property)
                WaitForWorkers();
            iMost = i < 8 ? 0 : std::max(iMost, iTakenHere); // behind lead-in and caches
        }
        EXPECT_EQ(iMost, oCase.iMost);
        EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecOutput, 1));
    }
}

// Each block of a lock and its first periods in turn can't be had: no call is lost on it, nor the object.
TEST_F(RealtimeTest, ARefusedBlockCostsALockOrAPeriodAtMost)
{
    StartLog(AUDIO_LEVEL_INFO);
    CFormatPair oFormats(2, 44100);
    for (const APO_REG_PROPERTIES* pProperties :
         {CKelvaneClassFactory::KelvanePostEFX_Property, CKelvaneClassFactory::KelvanePostOMFX_Property})
    {
        int iMet = 1;
        for (int iBlock = 0; iBlock < iMet; ++iBlock)
        {
            SCOPED_TRACE(iBlock);
            const auto pObject = OpenObject(new CKelvanePostEFX(nullptr, pProperties), 2, 44100);
            EXPECT_EQ(pObject->UnlockForProcess(), S_OK);
            iMet = 0;
            const auto fnRefuse = [&](const auto& fnCall)
            {
                iTaken = iMet;
                iRefused = iBlock;
                fnCall();
                iRefused = -1;
                iMet = iTaken;
            };
            HRESULT hLock = S_OK;
            fnRefuse([&] { hLock = oFormats.Lock(*pObject); });
            ASSERT_TRUE(hLock == S_OK || (hLock == E_OUTOFMEMORY && oFormats.Lock(*pObject) == S_OK));
            CPeriod oPeriod(2, 441), oLater(2, 441);
            for (int i = 0; i < 6; ++i)
            {
                oPeriod.m_oOutput.u32ValidFrameCount = 0;
                fnRefuse([&] { oPeriod.Run(*pObject); });
                ASSERT_EQ(oPeriod.m_oOutput.u32ValidFrameCount, 441U);
            }
            EXPECT_EQ(pObject->UnlockForProcess(), S_OK);
            ASSERT_EQ(oFormats.Lock(*pObject), S_OK);
            for (int i = 0; i < 5; ++i, WaitForWorkers())
                oLater.Run(*pObject);
            ASSERT_TRUE(CPeriod::IsAll(oLater.m_vecOutput, 1));
        }
        EXPECT_GT(iMet, 50);
    }
}
