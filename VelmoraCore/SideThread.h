#pragma once

#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <thread>

namespace velmora {

// One thread that runs one task at a time beside its owner's thread, so
// that work which does not depend on a slow system call can be done while
// the owner waits in it. Started by the first task and kept, since starting
// a thread costs about as much as the work it would take over; joined when
// the object goes.
//
// run() and the destructor are for the owner's thread only.
class SideThread {
public:
    SideThread() = default;
    SideThread(const SideThread&) = delete;
    SideThread& operator=(const SideThread&) = delete;
    SideThread(SideThread&&) = delete;
    SideThread& operator=(SideThread&&) = delete;
    ~SideThread();

    // Starts `task` on the side thread; the future tells when it is done
    // and carries what it threw. The previous task must be done.
    std::future<void> run(std::function<void()> task);

private:
    void serve();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<std::packaged_task<void()>> m_task;
    bool m_stopping = false;
    // Last: started once everything above exists.
    std::thread m_thread;
};

} // namespace velmora
