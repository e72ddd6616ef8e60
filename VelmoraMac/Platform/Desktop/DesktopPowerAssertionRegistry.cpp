#include "DesktopPowerAssertionRegistry.h"

#include <cerrno>

namespace velmora {

std::optional<nlohmann::json> DesktopPowerAssertionRegistry::assertionsByProcess() const
{
    return nlohmann::json::object();
}

std::int32_t DesktopPowerAssertionRegistry::setAssertionLevel(std::uint32_t /*identifier*/, std::int64_t /*level*/)
{
    return ENOTSUP;
}

} // namespace velmora
