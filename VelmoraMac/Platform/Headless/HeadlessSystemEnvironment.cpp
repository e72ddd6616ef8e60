#include "HeadlessSystemEnvironment.h"

#include <utility>

namespace velmora {

HeadlessSystemEnvironment::HeadlessSystemEnvironment(
    Instant now, UserCalendar calendar, std::vector<std::string> preferredLanguages)
    : m_now(now)
    , m_calendar(std::move(calendar))
    , m_preferredLanguages(std::move(preferredLanguages))
{
}

Instant HeadlessSystemEnvironment::now() const
{
    const std::scoped_lock lock(m_mutex);
    return m_now;
}

UserCalendar HeadlessSystemEnvironment::currentCalendar() const
{
    const std::scoped_lock lock(m_mutex);
    return m_calendar;
}

std::vector<std::string> HeadlessSystemEnvironment::preferredLanguages() const
{
    const std::scoped_lock lock(m_mutex);
    return m_preferredLanguages;
}

void HeadlessSystemEnvironment::setNow(Instant now)
{
    const std::scoped_lock lock(m_mutex);
    m_now = now;
}

void HeadlessSystemEnvironment::advance(std::chrono::milliseconds duration)
{
    const std::scoped_lock lock(m_mutex);
    m_now += duration;
}

void HeadlessSystemEnvironment::setCalendar(UserCalendar calendar)
{
    const std::scoped_lock lock(m_mutex);
    m_calendar = std::move(calendar);
}

void HeadlessSystemEnvironment::setPreferredLanguages(std::vector<std::string> languages)
{
    const std::scoped_lock lock(m_mutex);
    m_preferredLanguages = std::move(languages);
}

} // namespace velmora
