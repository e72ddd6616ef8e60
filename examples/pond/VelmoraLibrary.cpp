#include "VelmoraLibrary.h"

#include <utility>

namespace pond {

VelmoraLibrary::Event::Event(Event&& other) noexcept
    : m_library(other.m_library)
    , m_text(std::exchange(other.m_text, nullptr))
{
}

VelmoraLibrary::Event::~Event()
{
    if (m_text != nullptr)
        m_library->m_functions.freeEvent(m_text);
}

VelmoraLibrary::VelmoraLibrary(const std::string& path)
    : m_functions(VelmoraFunctions::load(path))
{
}

PondInput VelmoraLibrary::readInput() const
{
    PondInput input;
    m_functions.readPointer(&input.pointerX, &input.pointerY);
    m_functions.readPointerButtons(&input.down, &input.held, &input.up);
    m_functions.readScroll(&input.scrollX, &input.scrollY);
    m_functions.readNavigation(&input.navigationX, &input.navigationY);
    input.contentWidth = m_functions.contentWidth();
    input.visible = m_functions.isPondVisible();
    input.interactive = m_functions.isPondInteractive();
    return input;
}

} // namespace pond
