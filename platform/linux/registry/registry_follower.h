// Follows the registry's file on behalf of watches: wakes its owner when another process or an editor changed it.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

class CRegistryFollower
{
public:
    // The function is called on the follower's thread after each change. It gives the time in milliseconds after which
    // it wants to be called again even without one, or -1.
    explicit CRegistryFollower(std::function<int()> fnChanged);
    CRegistryFollower(const CRegistryFollower&) = delete;
    CRegistryFollower& operator=(const CRegistryFollower&) = delete;

    // Follows the files of this folder from now on, and of no other. Starts the thread the first time.
    // Where the system can't tell of changes, the function is called every 50 ms. One caller at a time.
    void Follow(const std::string& strFolder);

    // The first makes the second, and all that Follow does, come to an end; the second waits for the thread.
    // Between the two the caller gives up what the function needs.
    void Stop();
    void Join();

private:
    void Run();
    // Takes what the system has to tell. False if there is nothing that concerns the file.
    bool TakeEvents();
    int TellChange() const;
    void Wake() const;

    std::function<int()> m_fnChanged;
    int m_iNotify = -1; // the system's file of change events
    int m_iWake = -1;   // wakes the thread for the owner
    int m_iWatch = -1;  // the folder's mark in m_iNotify
    std::string m_strFolder;
    std::atomic<bool> m_bBlind{false}; // the system tells nothing of the folder
    std::atomic<bool> m_bStop{false};
    std::thread m_oThread;
};
