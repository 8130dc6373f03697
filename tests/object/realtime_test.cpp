// The real-time contract of one call, counted: heap blocks on the processing thread, and no text for a level that is
// off.
#include "tests/object/object_fixture.h"

#include "apo/kelvane/apo_kelvane_postefx.h"
#include "platform/linux/machine.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace
{
// Blocks that this thread took and gave back.
thread_local int iTaken = 0;
thread_local int iFreed = 0;
} // namespace

// Every form that the module uses, for a sanitizer's runtime has array forms of its own.
[[gnu::noinline]] void* operator new(size_t iSize, const std::nothrow_t&) noexcept
{
    ++iTaken;
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
    ++iFreed;
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

namespace
{
// A protection library that hands two channels through.
int32_t CopyFrame(void*, void*, KelvaneDataStruct* pData)
{
    for (int i = 0; i < 2; ++i)
        std::memcpy(pData->psDataOut[i], pData->psDataIn[i], sizeof(float) * static_cast<size_t>(pData->iFrameLen));
    return 0;
}

class RealtimeTest : public ObjectTest
{
protected:
    void SetUp() override
    {
        ObjectTest::SetUp();
        CKelvaneManager& oManager = *CKelvaneManager::Instance();
        oManager.m_fAudioKelvaneGetSize = [](KelvaneMemSize* pMemSize)
        {
            pMemSize->iRunBufSize = pMemSize->iScratchSize = 64;
            return 0;
        };
        oManager.m_fAudioKelvaneInit = [](void*, void*) { return 0; };
        oManager.m_fAudioKelvaneApply = CopyFrame;
        oManager.m_fAudioKelvaneSetPara = [](void*, void*, const KelvaneStruParam*) { return 0; };
        oManager.m_fAudioKelvaneSetBatteryInfo = [](void*, int32_t) { return 0; };
        auto pParam = std::make_unique<KelvaneStruParam>();
        pParam->sChannelNum = 8;
        oManager.m_mapAlgoParam["30000"] = std::move(pParam);
        oManager.m_vecVolumeRange = {0, 20, 40, 60, 80, 100};
        oManager.m_bLoadDLL = TRUE;
        machine::SetPowerStatus({1, 0, 100, 0, 0, 0}); // the real one costs the layer blocks of its own
    }
};

TEST_F(RealtimeTest, ACallTakesABlockForEachFrameItQueuesAndBuildsNoTextThatIsOff)
{
    const struct
    {
        const char* pName;
        const APO_REG_PROPERTIES* pProperties;
        FLOAT32 f32Rate;
        UINT32 u32FrameCount;
        int iMost; // heap blocks a call may take
    } aCases[] = {
        {"EFX: two standard frames", CKelvaneClassFactory::KelvanePostEFX_Property, 48000, 480, 2},
        {"EFX 44.1 kHz", CKelvaneClassFactory::KelvanePostEFX_Property, 44100, 441, 10},
        {"OMFX: frames in, block, frame out", CKelvaneClassFactory::KelvanePostOMFX_Property, 48000, 480, 4},
        {"OMFX 44.1 kHz", CKelvaneClassFactory::KelvanePostOMFX_Property, 44100, 441, 18},
    };
    for (const auto& oCase : aCases)
    {
        SCOPED_TRACE(oCase.pName);
        auto* const pObject = new CKelvanePostEFX(nullptr, oCase.pProperties);
        BYTE aInit[sizeof(APOInitSystemEffects)] = {};
        ASSERT_EQ(pObject->Initialize(sizeof(aInit), aInit), S_OK);
        ASSERT_EQ(CFormatPair(2, oCase.f32Rate).Lock(*pObject), S_OK);
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, 0);
        ASSERT_TRUE(WaitFor([] { return !CAudioLog::Instance()->IsRecorded(AUDIO_LEVEL_FATA); }));
        CPeriod oPeriod(2, oCase.u32FrameCount);
        int iMost = 0;
        int iTakenInAll = 0;
        int iFreedInAll = 0;
        for (int i = 0; i < 520; ++i) // a whole round of the periodic lines
        {
            iTaken = iFreed = 0;
            oPeriod.Run(*pObject);
            const int iTakenHere = iTaken;
            const int iFreedHere = iFreed;
            WaitForWorkers();
            if (i < 8)
                continue; // lead-in and caches
            iMost = std::max(iMost, iTakenHere);
            iTakenInAll += iTakenHere;
            iFreedInAll += iFreedHere;
        }
        EXPECT_LE(iMost, oCase.iMost);
        EXPECT_GT(iTakenInAll, 0);
        EXPECT_GT(iFreedInAll, 0);
        EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecOutput, 1));
        pObject->NonDelegatingRelease();
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, 1);
        ASSERT_TRUE(WaitFor([] { return CAudioLog::Instance()->IsRecorded(AUDIO_LEVEL_TRACE); }));
    }
}
} // namespace
