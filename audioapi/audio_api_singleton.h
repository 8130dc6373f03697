// The one form of the process-wide services: made at first use, destroyed by name.
#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <new>

// T derives from CAudioSingleton<T>, has a default constructor that takes no memory, and makes this class its friend.
// The object lives in storage of the module, so that there is one without memory too: the log's callers rest on that.
template <class T> class CAudioSingleton
{
public:
    // Never null. Any thread; one load once the object exists.
    static T* Instance() noexcept
    {
        T* pInstance = m_pInstance.load(std::memory_order_acquire);
        return pInstance != nullptr ? pInstance : CreateInstance();
    }

    // Nobody may use the object any more but what its destructor stops. The pointer stays until the object is gone, so
    // that the object's own workers still reach it.
    static void DeleteInstance()
    {
        if (m_pInstance.load(std::memory_order_acquire) == nullptr)
            return;
        const std::lock_guard<std::mutex> oGuard(m_oMutex);
        if (T* const pInstance = m_pInstance.load(std::memory_order_acquire))
            pInstance->~T();
        m_pInstance.store(nullptr, std::memory_order_release);
    }

    CAudioSingleton(const CAudioSingleton&) = delete;
    CAudioSingleton& operator=(const CAudioSingleton&) = delete;

protected:
    CAudioSingleton() = default;
    ~CAudioSingleton() = default;

private:
    static T* CreateInstance() noexcept
    {
        alignas(T) static std::byte aStorage[sizeof(T)];
        const std::lock_guard<std::mutex> oGuard(m_oMutex);
        T* pInstance = m_pInstance.load(std::memory_order_acquire);
        if (pInstance == nullptr)
        {
            pInstance = new (aStorage) T;
            m_pInstance.store(pInstance, std::memory_order_release);
        }
        return pInstance;
    }

    static inline std::atomic<T*> m_pInstance{nullptr};
    static inline std::mutex m_oMutex;
};
