#pragma once

namespace velmora {

// What the shell puts into a window it creates: a model of the content that
// the platform's implementation knows how to present (each implementation
// recognises the kinds it can draw). The window keeps it alive.
// Main thread only.
class WindowContent {
public:
    WindowContent() = default;
    WindowContent(const WindowContent&) = delete;
    WindowContent& operator=(const WindowContent&) = delete;
    WindowContent(WindowContent&&) = delete;
    WindowContent& operator=(WindowContent&&) = delete;
    virtual ~WindowContent() = default;

    // The window came on screen: ordered in or brought back from the Dock,
    // or given this content while on screen.
    virtual void didAppear() { }
};

} // namespace velmora
