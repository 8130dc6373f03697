// Follows the registry's file on behalf of watches: wakes its owner when another process or an editor changed it.
#include "registry/registry_follower.h"

#include <cstdint>
#include <cstring>
#include <exception>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace
{
constexpr int c_iBlindPeriodMs = 50;
constexpr uint32_t c_u32Mask = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_DELETE_SELF;
} // namespace

CRegistryFollower::CRegistryFollower(std::function<int()> fnChanged)
    : m_fnChanged(std::move(fnChanged)),
      m_iNotify(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      m_iWake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

void CRegistryFollower::Stop()
{
    m_bStop = true;
    Wake();
}

void CRegistryFollower::Join()
{
    if (m_oThread.joinable())
        m_oThread.join();
}

void CRegistryFollower::Follow(const std::string& strFolder)
{
    if (m_bStop)
        return;
    if (strFolder != m_strFolder)
    {
        m_strFolder = strFolder;
        if (m_iWatch >= 0)
            inotify_rm_watch(m_iNotify, m_iWatch);
        m_iWatch = inotify_add_watch(m_iNotify, strFolder.c_str(), c_u32Mask);
        m_bBlind = m_iWatch < 0 || m_iWake < 0;
        Wake();
    }
    if (!m_oThread.joinable())
        m_oThread = std::thread([this] { Run(); });
}

void CRegistryFollower::Wake() const
{
    const uint64_t u64One = 1;
    // It can fail only if the counter is full, and then the thread wakes anyway.
    [[maybe_unused]] const ssize_t iWritten = write(m_iWake, &u64One, sizeof(u64One));
}

void CRegistryFollower::Run()
{
    int iAgainMs = -1;
    while (!m_bStop)
    {
        const bool bBlind = m_bBlind;
        const int iWaitMs = bBlind ? c_iBlindPeriodMs : iAgainMs;
        pollfd oFiles[] = {{m_iWake, POLLIN, 0}, {m_iNotify, POLLIN, 0}};
        const int iReady = poll(oFiles, 2, iWaitMs);
        uint64_t u64Count = 0;
        [[maybe_unused]] const ssize_t iRead = read(m_iWake, &u64Count, sizeof(u64Count));
        const bool bChanged = TakeEvents();
        if (!m_bStop && (bChanged || iReady == 0))
            iAgainMs = TellChange();
    }
}

// No exception leaves the thread: what couldn't be done for want of memory is tried again.
int CRegistryFollower::TellChange() const
{
    try
    {
        return m_fnChanged();
    }
    catch (const std::exception&)
    {
        return c_iBlindPeriodMs;
    }
}

bool CRegistryFollower::TakeEvents()
{
    bool bConcerns = false;
    alignas(inotify_event) char cBuf[4096];
    for (ssize_t iLen = 0; (iLen = read(m_iNotify, cBuf, sizeof(cBuf))) > 0;)
    {
        for (ssize_t iPos = 0; iPos < iLen;)
        {
            inotify_event oEvent;
            memcpy(&oEvent, cBuf + iPos, sizeof(oEvent));
            const char* pName = oEvent.len > 0 ? cBuf + iPos + sizeof(oEvent) : "";
            if ((oEvent.mask & IN_DELETE_SELF) != 0)
                m_bBlind = true;
            bConcerns = bConcerns || (oEvent.mask & (IN_Q_OVERFLOW | IN_DELETE_SELF)) != 0 ||
                        strcmp(pName, "registry.reg") == 0;
            iPos += static_cast<ssize_t>(sizeof(oEvent) + oEvent.len);
        }
    }
    return bConcerns;
}
