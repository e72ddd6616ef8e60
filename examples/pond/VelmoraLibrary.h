#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "PondInput.h"

namespace pond {

// The library could not be loaded, or lacks one of its functions.
class VelmoraLoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// libVelmoraNative, loaded at run time, and its eleven functions. The
// library stays loaded until the process ends: its own threads may still
// run, and it promises nothing about being unloaded.
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

    void start() const { m_start(); }
    void notice(const std::string& topicID) const { m_notice(topicID.c_str()); }
    [[nodiscard]] Event copyEvent() const { return {*this, m_copyEvent()}; }
    // Every reader but the event, in one go: what a frame needs to know.
    [[nodiscard]] PondInput readInput() const;

private:
    void (*m_start)() = nullptr;
    void (*m_notice)(const char*) = nullptr;
    char* (*m_copyEvent)() = nullptr;
    void (*m_free)(char*) = nullptr;
    float (*m_contentWidth)() = nullptr;
    std::int32_t (*m_isPondVisible)() = nullptr;
    std::int32_t (*m_isPondInteractive)() = nullptr;
    void (*m_readPointer)(float*, float*) = nullptr;
    void (*m_readPointerButtons)(std::int32_t*, std::int32_t*, std::int32_t*) = nullptr;
    void (*m_readScroll)(float*, float*) = nullptr;
    void (*m_readNavigation)(float*, float*) = nullptr;
};

} // namespace pond
