#pragma once

#include <deque>
#include <functional>
#include <memory>

#include <glib.h>

#include "VelmoraMac/Platform/GLibPointer.h"

namespace velmora {

// Work put off to the next iteration of a GLib context. The status item
// answers a tray host's D-Bus call first and only then runs what the click
// means, so that the action (which may pop up a menu and run a nested main
// loop, or rebuild the menu being served) never runs inside GDBus's or
// libdbusmenu's own dispatch.
//
// Work still queued when the queue goes is dropped, so a task may hold a
// raw pointer to the queue's owner. An exception escaping a task ends the
// process, as one escaping the main thread's own work does: nobody is left
// to report it to, and carrying on would hide the fault.
// Main thread only: the thread iterating the context.
class StatusNotifierIdleQueue {
public:
    using Task = std::function<void()>;

    explicit StatusNotifierIdleQueue(GMainContext* context);
    StatusNotifierIdleQueue(const StatusNotifierIdleQueue&) = delete;
    StatusNotifierIdleQueue& operator=(const StatusNotifierIdleQueue&) = delete;
    StatusNotifierIdleQueue(StatusNotifierIdleQueue&&) = delete;
    StatusNotifierIdleQueue& operator=(StatusNotifierIdleQueue&&) = delete;
    ~StatusNotifierIdleQueue();

    // Runs `task` on a later iteration, after the tasks posted before it.
    void post(Task task);

private:
    using SourcePointer = GLibPointer<GSource, g_source_ref, g_source_unref>;

    static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer userData);
    void runQueued() noexcept;

    SourcePointer m_source;
    std::deque<Task> m_tasks;
    // Cleared when the queue goes, for the loop running its tasks.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace velmora
