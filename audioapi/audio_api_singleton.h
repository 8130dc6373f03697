// The one form of the process-wide services: made at first use, destroyed by name.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

// T derives from CAudioSingleton<T>, has a default constructor and makes this class its friend.
template <class T> class CAudioSingleton
{
public:
    // Never null. Any thread; one load once the object exists.
    static T* Instance()
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
        std::unique_ptr<T>(m_pInstance.load(std::memory_order_acquire)).reset();
        m_pInstance.store(nullptr, std::memory_order_release);
    }

    CAudioSingleton(const CAudioSingleton&) = delete;
    CAudioSingleton& operator=(const CAudioSingleton&) = delete;

protected:
    CAudioSingleton() = default;
    ~CAudioSingleton() = default;

private:
    static T* CreateInstance()
    {
        const std::lock_guard<std::mutex> oGuard(m_oMutex);
        T* pInstance = m_pInstance.load(std::memory_order_acquire);
        if (pInstance == nullptr)
        {
            pInstance = new T;
            m_pInstance.store(pInstance, std::memory_order_release);
        }
        return pInstance;
    }

    static inline std::atomic<T*> m_pInstance{nullptr};
    static inline std::mutex m_oMutex;
};
