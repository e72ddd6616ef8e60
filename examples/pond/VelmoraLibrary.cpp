#include "VelmoraLibrary.h"

#include <cstring>
#include <utility>

#include <dlfcn.h>

namespace pond {
namespace {

std::string lastError()
{
    // Called only while the program loads, on its main thread.
    const char* error = dlerror(); // NOLINT(concurrency-mt-unsafe)
    return error != nullptr ? error : "unknown error";
}

// dlsym answers with an object pointer; copying its bytes is the
// conversion to a function pointer that POSIX allows.
template <typename Function>
void lookUp(void* library, const char* name, Function& function)
{
    void* symbol = dlsym(library, name);
    if (symbol == nullptr)
        throw VelmoraLoadError(std::string("the library has no ") + name + ": " + lastError());
    static_assert(sizeof(function) == sizeof(symbol));
    std::memcpy(&function, &symbol, sizeof(function));
}

} // namespace

VelmoraLibrary::Event::Event(Event&& other) noexcept
    : m_library(other.m_library)
    , m_text(std::exchange(other.m_text, nullptr))
{
}

VelmoraLibrary::Event::~Event()
{
    if (m_text != nullptr)
        m_library->m_free(m_text);
}

VelmoraLibrary::VelmoraLibrary(const std::string& path)
{
    // Never closed: see the class comment.
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw VelmoraLoadError("cannot load " + path + ": " + lastError());
    lookUp(library, "VelmoraStart", m_start);
    lookUp(library, "VelmoraNotice", m_notice);
    lookUp(library, "VelmoraCopyEvent", m_copyEvent);
    lookUp(library, "VelmoraFree", m_free);
    lookUp(library, "VelmoraContentWidth", m_contentWidth);
    lookUp(library, "VelmoraIsPondVisible", m_isPondVisible);
    lookUp(library, "VelmoraIsPondInteractive", m_isPondInteractive);
    lookUp(library, "VelmoraReadPointer", m_readPointer);
    lookUp(library, "VelmoraReadPointerButtons", m_readPointerButtons);
    lookUp(library, "VelmoraReadScroll", m_readScroll);
    lookUp(library, "VelmoraReadNavigation", m_readNavigation);
}

PondInput VelmoraLibrary::readInput() const
{
    PondInput input;
    m_readPointer(&input.pointerX, &input.pointerY);
    m_readPointerButtons(&input.down, &input.held, &input.up);
    m_readScroll(&input.scrollX, &input.scrollY);
    m_readNavigation(&input.navigationX, &input.navigationY);
    input.contentWidth = m_contentWidth();
    input.visible = m_isPondVisible();
    input.interactive = m_isPondInteractive();
    return input;
}

} // namespace pond
