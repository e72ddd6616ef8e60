#pragma once

#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include "velmora/velmora.h"

namespace velmora::test {

// The exports this renderer calls, looked up as any renderer does.
struct NativeLibrary {
    decltype(&VelmoraStart) start = nullptr;
    decltype(&VelmoraNotice) notice = nullptr;
    decltype(&VelmoraCopyEvent) copyEvent = nullptr;
    decltype(&VelmoraFree) freeEvent = nullptr;
    decltype(&VelmoraIsPondVisible) isPondVisible = nullptr;
    decltype(&VelmoraReadPointer) readPointer = nullptr;
    decltype(&VelmoraReadPointerButtons) readPointerButtons = nullptr;

    NativeLibrary()
    {
        // Never closed: the library stays until the process ends.
        void* handle = ::dlopen(VELMORA_NATIVE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr)
            throw std::runtime_error(::dlerror()); // NOLINT(concurrency-mt-unsafe): one thread here
        lookUp(handle, "VelmoraStart", start);
        lookUp(handle, "VelmoraNotice", notice);
        lookUp(handle, "VelmoraCopyEvent", copyEvent);
        lookUp(handle, "VelmoraFree", freeEvent);
        lookUp(handle, "VelmoraIsPondVisible", isPondVisible);
        lookUp(handle, "VelmoraReadPointer", readPointer);
        lookUp(handle, "VelmoraReadPointerButtons", readPointerButtons);
    }

    template <typename Function>
    static void lookUp(void* handle, const char* name, Function& function)
    {
        function = reinterpret_cast<Function>(::dlsym(handle, name)); // NOLINT(cppcoreguidelines-pro-type-reinterpret-cast): how dlsym is used
        if (function == nullptr)
            throw std::runtime_error(std::string("missing ") + name);
    }
};

} // namespace velmora::test
