// An object that its owner makes while other threads already look for it.
#pragma once

#include <atomic>
#include <new>

// Reads as a pointer: null before Make and after Reset, which the owner calls once each. While the object is being
// destroyed it is still found, for its own workers report through it.
template <class T> class CAudioPublished
{
public:
    CAudioPublished() = default;
    ~CAudioPublished() { Reset(); }
    CAudioPublished(const CAudioPublished&) = delete;
    CAudioPublished& operator=(const CAudioPublished&) = delete;

    // Any thread, one load.
    operator T*() const { return m_pObject.load(std::memory_order_acquire); }
    T* operator->() const { return *this; }

    // Null without memory. What the owner wrote before is seen by whoever finds the object.
    T* Make()
    {
        T* const pObject = new (std::nothrow) T;
        m_pObject.store(pObject, std::memory_order_release);
        return pObject;
    }
    void Reset()
    {
        delete static_cast<T*>(*this);
        m_pObject.store(nullptr, std::memory_order_release);
    }

private:
    std::atomic<T*> m_pObject{nullptr};
};
