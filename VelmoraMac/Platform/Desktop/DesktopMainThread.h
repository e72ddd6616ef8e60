#pragma once

#include "VelmoraMac/Platform/GLibMainThread.h"

namespace velmora {

// The main thread of a process that runs GTK: the thread iterating GLib's
// default main context, where GTK dispatches. The library does not own
// that loop, so it learns which thread runs it:
//  - when another thread is iterating the context as the library starts,
//    that thread, from the first work it runs for us (work submitted
//    meanwhile waits for it like any other);
//  - otherwise the starting thread, which is then expected to run GTK's
//    loop: a renderer starts the library on its GTK thread, before the loop
//    or from inside it.
// Work from other threads hops there through a source of ours attached to
// the context (never g_main_context_invoke, which would run it on a caller
// when no thread holds the context).
class DesktopMainThread final : public GLibMainThread {
public:
    DesktopMainThread();
    DesktopMainThread(const DesktopMainThread&) = delete;
    DesktopMainThread& operator=(const DesktopMainThread&) = delete;
    DesktopMainThread(DesktopMainThread&&) = delete;
    DesktopMainThread& operator=(DesktopMainThread&&) = delete;
    // Work still queued is abandoned (see GLibMainThread); the library's
    // own one lives until the process ends.
    ~DesktopMainThread() override = default;
};

} // namespace velmora
