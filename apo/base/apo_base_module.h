// What the whole module shares: the two counters that keep it loaded, and the result of a caught exception.
#pragma once

#include <unknwn.h>
#include <windows.h>

#include <atomic>
#include <new>

// Live processing objects, and locks that clients of the factories hold. Any thread.
inline std::atomic<LONG> g_lObjectCount{0};
inline std::atomic<LONG> g_lServerLocks{0};

// The result code of the exception that is being handled; call it inside a catch block only.
inline HRESULT CaughtResult() noexcept
{
    try
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    catch (...)
    {
        return E_FAIL;
    }
}
