#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include <glib.h>
#include <gtest/gtest.h>

#include "VelmoraMac/Platform/Desktop/DesktopMainThread.h"

namespace velmora {
namespace {

// A thread running a loop on GLib's default context, as GTK's main loop
// does; `atStart` runs on it once the loop runs.
class DefaultLoopThread {
public:
    explicit DefaultLoopThread(std::function<void()> atStart = {})
        : m_atStart(std::move(atStart))
        , m_loop(g_main_loop_new(nullptr, FALSE))
    {
        std::future<void> running = m_running.get_future();
        m_thread = std::thread([this] {
            g_idle_add(
                [](gpointer self) {
                    auto* thread = static_cast<DefaultLoopThread*>(self);
                    if (thread->m_atStart)
                        thread->m_atStart();
                    thread->m_running.set_value();
                    return G_SOURCE_REMOVE;
                },
                this);
            g_main_loop_run(m_loop);
        });
        running.get();
    }
    DefaultLoopThread(const DefaultLoopThread&) = delete;
    DefaultLoopThread& operator=(const DefaultLoopThread&) = delete;
    DefaultLoopThread(DefaultLoopThread&&) = delete;
    DefaultLoopThread& operator=(DefaultLoopThread&&) = delete;
    ~DefaultLoopThread()
    {
        g_main_loop_quit(m_loop);
        m_thread.join();
        g_main_loop_unref(m_loop);
    }

    [[nodiscard]] std::thread::id id() const { return m_thread.get_id(); }

private:
    std::function<void()> m_atStart;
    std::promise<void> m_running;
    GMainLoop* m_loop;
    std::thread m_thread;
};

std::thread::id runningThread(MainThread& mainThread)
{
    return mainThread.runSync([&mainThread] {
        EXPECT_TRUE(mainThread.isMainThread());
        return std::this_thread::get_id();
    });
}

TEST(DesktopMainThread, StartedWhileAnotherThreadRunsTheLoop_LearnsThatThread)
{
    const DefaultLoopThread gtk;
    DesktopMainThread mainThread;
    EXPECT_FALSE(mainThread.isMainThread());
    EXPECT_EQ(runningThread(mainThread), gtk.id());
    EXPECT_FALSE(mainThread.isMainThread());
}

TEST(DesktopMainThread, StartedFromInsideTheLoop_IsThatThread)
{
    std::unique_ptr<DesktopMainThread> mainThread;
    bool mainThereAndThen = false;
    const DefaultLoopThread gtk([&] {
        mainThread = std::make_unique<DesktopMainThread>();
        mainThereAndThen = mainThread->isMainThread();
        // Inline on the main thread, or this would wait for itself.
        mainThread->submitSync([] {});
    });
    EXPECT_TRUE(mainThereAndThen);
    EXPECT_EQ(runningThread(*mainThread), gtk.id());
}

} // namespace
} // namespace velmora
