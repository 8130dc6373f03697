// The real-time contract: the heap blocks that the processing thread takes per period.
#include "tests/engine/engine_test.h"

#include "platform/linux/machine.h"

#include <cstdlib>
#include <new>

static thread_local int g_iBlockCount = 0;

// The array forms come here too. Never inlined, so that the compiler doesn't see through half of a pair.
[[gnu::noinline]] void* operator new(size_t iSize)
{
    ++g_iBlockCount;
    if (void* const pBlock = std::malloc(iSize != 0 ? iSize : 1))
        return pBlock;
    throw std::bad_alloc();
}

[[gnu::noinline]] void* operator new(size_t iSize, const std::nothrow_t&) noexcept
{
    ++g_iBlockCount;
    return std::malloc(iSize != 0 ? iSize : 1);
}

[[gnu::noinline]] void operator delete(void* pBlock) noexcept
{
    std::free(pBlock);
}

[[gnu::noinline]] void operator delete(void* pBlock, size_t) noexcept
{
    std::free(pBlock);
}

using RealtimeTest = EngineTest;

TEST_F(RealtimeTest, HeapBlocksPerPeriodAreThoseOfTheFrames)
{
    struct Row
    {
        int iSampleRate, iFrameCount;
        bool bInline;
        int iLimit;
    };
    // Two frames in, the worker's part on its own thread; inline one frame out and the converted block. At other rates
    // the gathered block, the converted one, and an array per channel and side of each conversion.
    const Row aRows[] = {
        {48000, 480, false, 2}, {48000, 480, true, 4}, {44100, 441, false, 10}, {44100, 441, true, 18}};
    machine::SetPowerStatus({}); // what this system's own status costs is the platform's
    for (const Row& oRow : aRows)
    {
        SCOPED_TRACE(oRow.iSampleRate);
        MakeEngine(2, oRow.iSampleRate, oRow.bInline);
        ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
        int iMost = 0;
        std::vector<float> vecOut;
        for (int i = 0; i < 600; ++i) // the mark of the periodic lines and a second of audio are among them
        {
            const std::vector<float> vecIn = Ramp(oRow.iFrameCount);
            vecOut.assign(vecIn.size(), 0.0F);
            g_iBlockCount = 0;
            Input(vecIn);
            const int iInput = g_iBlockCount;
            WaitForWorkers();
            g_iBlockCount = 0;
            m_pEngine->OutputDataFromQueue(vecOut.data(), 2, static_cast<UINT32>(oRow.iFrameCount));
            iMost = i > 3 ? std::max(iMost, iInput + g_iBlockCount) : 0;
            m_pEngine->m_iProcessCount = i % (AUDIO_PROCESS_COUNT_MAX + 1);
        }
        EXPECT_NE(vecOut[5], 0.0F);
        EXPECT_LE(iMost, oRow.iLimit);
    }
}
