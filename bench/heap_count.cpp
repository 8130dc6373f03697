// The program's operator new, which the module's calls reach too, counts per thread.
#include "bench/heap_count.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local int64_t t_i64Blocks = 0;

void* Allocate(size_t iBytes)
{
    ++t_i64Blocks;
    return std::malloc(iBytes > 0 ? iBytes : 1);
}

} // namespace

int64_t ThreadHeapBlocks()
{
    return t_i64Blocks;
}

void* operator new(size_t iBytes)
{
    if (void* pBlock = Allocate(iBytes))
        return pBlock;
    throw std::bad_alloc();
}

void* operator new(size_t iBytes, const std::nothrow_t&) noexcept
{
    return Allocate(iBytes);
}

void operator delete(void* pBlock) noexcept
{
    std::free(pBlock);
}

void operator delete(void* pBlock, size_t) noexcept
{
    std::free(pBlock);
}
