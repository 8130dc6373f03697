// The program's heap with a say in each block; for one source of a program. Every form that the module uses, for a
// sanitizer's runtime has array forms of its own.
#pragma once

#include "platform/compiler.h"

#include <atomic>
#include <cstdlib>
#include <new>

// The program's own: whether this block of so many bytes is refused.
static bool IsBlockRefused(size_t iSize);

static std::atomic<long> g_iLiveBlocks{0};

KELVANE_NOINLINE void* operator new(size_t iSize, const std::nothrow_t&) noexcept
{
    void* const pBlock = IsBlockRefused(iSize) ? nullptr : std::malloc(iSize != 0 ? iSize : 1);
    g_iLiveBlocks += pBlock != nullptr ? 1 : 0;
    return pBlock;
}
KELVANE_NOINLINE void* operator new(size_t iSize)
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
KELVANE_NOINLINE void operator delete(void* pBlock) noexcept
{
    g_iLiveBlocks -= pBlock != nullptr ? 1 : 0;
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
// For an object whose constructor throws behind a nothrow new.
void operator delete(void* pBlock, const std::nothrow_t&) noexcept
{
    operator delete(pBlock);
}
void operator delete[](void* pBlock, const std::nothrow_t&) noexcept
{
    operator delete(pBlock);
}
