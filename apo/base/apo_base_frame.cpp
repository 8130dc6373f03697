// The ring of frames and the float cache.
#include "apo/base/apo_base_frame.h"

#include <algorithm>
#include <new>
#include <utility>

std::unique_ptr<FLOAT32[]> NewFloats(int iDataLen)
{
    return std::unique_ptr<FLOAT32[]>(new (std::nothrow) FLOAT32[static_cast<size_t>(std::max(iDataLen, 0))]);
}

bool CAudioFrameQueue::Push(CAudioFrame oFrame) noexcept
{
    if (static_cast<size_t>(m_iCount) == m_vecFrame.size() && !Grow())
        return false;
    m_vecFrame[(m_iFirst + static_cast<size_t>(m_iCount)) % m_vecFrame.size()] = std::move(oFrame);
    m_iCount = m_iCount + 1;
    return true;
}

bool CAudioFrameQueue::Grow() noexcept
try
{
    const size_t iSlotCount = m_vecFrame.size();
    std::vector<CAudioFrame> vecFrame(iSlotCount * 2);
    for (size_t i = 0; i < iSlotCount; ++i)
        vecFrame[i] = std::move(m_vecFrame[(m_iFirst + i) % iSlotCount]);
    m_vecFrame = std::move(vecFrame);
    m_iFirst = 0;
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

CAudioFrame CAudioFrameQueue::Pop()
{
    if (m_iCount == 0)
        return {};
    CAudioFrame oFrame = std::move(m_vecFrame[m_iFirst]);
    m_iFirst = (m_iFirst + 1) % m_vecFrame.size();
    m_iCount = m_iCount - 1;
    return oFrame;
}

void CAudioFrameQueue::Clear()
{
    while (!Empty())
        Pop();
}

void CAudioFloatCache::Allocate(int iDataLen)
{
    Release();
    m_pData.reset(new (std::nothrow) FLOAT32[static_cast<size_t>(iDataLen)]());
    m_iCapacity = m_pData != nullptr ? iDataLen : 0;
}

bool CAudioFloatCache::Grow(int iDataLen, int iKeepDataLen)
{
    CAudioFloatCache oLonger;
    oLonger.Allocate(iDataLen);
    if (oLonger == nullptr)
        return false;
    std::copy_n(m_pData.get(), m_pData != nullptr ? iKeepDataLen : 0, oLonger.m_pData.get());
    *this = std::move(oLonger);
    return true;
}

void CAudioFloatCache::Release()
{
    m_pData.reset();
    m_iCapacity = 0;
}
