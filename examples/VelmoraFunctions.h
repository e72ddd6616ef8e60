#pragma once

// The library's eleven functions, looked up at run time as a renderer looks
// them up. Every program of ours written in C++ that loads the library (the
// pond, the tests that play a renderer, the start-up probe) loads it here;
// the minimal renderer keeps its own few lines, being plain C.

#include <cstring>
#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "velmora/velmora.h"

// The library could not be loaded, or lacks one of its functions.
class VelmoraLoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct VelmoraFunctions {
    VelmoraStartFunction start = nullptr;
    VelmoraNoticeFunction notice = nullptr;
    VelmoraCopyEventFunction copyEvent = nullptr;
    VelmoraFreeFunction freeEvent = nullptr;
    VelmoraContentWidthFunction contentWidth = nullptr;
    VelmoraIsPondVisibleFunction isPondVisible = nullptr;
    VelmoraIsPondInteractiveFunction isPondInteractive = nullptr;
    VelmoraReadPointerFunction readPointer = nullptr;
    VelmoraReadPointerButtonsFunction readPointerButtons = nullptr;
    VelmoraReadScrollFunction readScroll = nullptr;
    VelmoraReadNavigationFunction readNavigation = nullptr;

    // Loads `path` (a file name alone goes through the dynamic loader's
    // search) and looks up every function. The library is never closed: it
    // is linked never to be unloaded (velmora.h), and its own threads may
    // still run. Throws VelmoraLoadError. Call it before the library's
    // threads exist, as dlerror is not thread-safe.
    static VelmoraFunctions load(const std::string& path)
    {
        void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            throw VelmoraLoadError("cannot load " + path + ": " + lastError());
        VelmoraFunctions functions;
        lookUp(library, "VelmoraStart", functions.start);
        lookUp(library, "VelmoraNotice", functions.notice);
        lookUp(library, "VelmoraCopyEvent", functions.copyEvent);
        lookUp(library, "VelmoraFree", functions.freeEvent);
        lookUp(library, "VelmoraContentWidth", functions.contentWidth);
        lookUp(library, "VelmoraIsPondVisible", functions.isPondVisible);
        lookUp(library, "VelmoraIsPondInteractive", functions.isPondInteractive);
        lookUp(library, "VelmoraReadPointer", functions.readPointer);
        lookUp(library, "VelmoraReadPointerButtons", functions.readPointerButtons);
        lookUp(library, "VelmoraReadScroll", functions.readScroll);
        lookUp(library, "VelmoraReadNavigation", functions.readNavigation);
        return functions;
    }

    // The next event as text, released at once; "null" when there is none.
    [[nodiscard]] std::string takeEvent() const
    {
        char* event = copyEvent();
        if (event == nullptr)
            return "null";
        std::string text(event);
        freeEvent(event);
        return text;
    }

private:
    static std::string lastError()
    {
        const char* error = ::dlerror(); // NOLINT(concurrency-mt-unsafe): see load()
        return error != nullptr ? error : "unknown error";
    }

    // dlsym answers with an object pointer; copying its bytes is the
    // conversion to a function pointer that POSIX allows.
    template <typename Function> static void lookUp(void* library, const char* name, Function& function)
    {
        void* symbol = ::dlsym(library, name);
        if (symbol == nullptr)
            throw VelmoraLoadError(std::string("the library has no ") + name + ": " + lastError());
        static_assert(sizeof(function) == sizeof(symbol));
        std::memcpy(&function, &symbol, sizeof(function));
    }
};
