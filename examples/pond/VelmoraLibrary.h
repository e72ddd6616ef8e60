#pragma once

#include <string>

#include <velmora/velmora.h>

#include "PondInput.h"
#include "VelmoraFunctions.h"

namespace pond {

// libVelmoraNative, loaded at run time, and its eleven functions. The
// library stays loaded until the process ends: it is linked never to be
// unloaded (velmora.h), and its own threads may still run.
//
// Any thread may call; each call but the event's release waits for the
// library's main thread (see velmora.h), so a frame makes its calls in one
// burst.
class VelmoraLibrary {
public:
    // The event text as the library allocated it, released through the
    // library.
    class Event {
    public:
        Event(const VelmoraLibrary& library, char* text)
            : m_library(&library)
            , m_text(text)
        {
        }
        Event(const Event&) = delete;
        Event& operator=(const Event&) = delete;
        Event(Event&& other) noexcept;
        Event& operator=(Event&& other) = delete;
        ~Event();

        explicit operator bool() const { return m_text != nullptr; }
        [[nodiscard]] const char* text() const { return m_text; }

    private:
        const VelmoraLibrary* m_library;
        char* m_text;
    };

    // Loads `path` (a file name alone goes through the dynamic loader's
    // search) and looks up every function. Throws VelmoraLoadError.
    explicit VelmoraLibrary(const std::string& path);

    void start() const { m_functions.start(); }
    void notice(const std::string& topicID) const { m_functions.notice(topicID.c_str()); }
    [[nodiscard]] Event copyEvent() const { return {*this, m_functions.copyEvent()}; }
    // Whether the pond is shown: all a resting pond asks.
    [[nodiscard]] bool isPondVisible() const { return m_functions.isPondVisible() != 0; }
    // Every reader but the event, in one go: what a frame needs to know.
    [[nodiscard]] PondInput readInput() const;

private:
    VelmoraFunctions m_functions;
};

} // namespace pond
