#pragma once

namespace velmora {

// What the platform hands back for an installed event monitor or
// notification observer. Destroying it removes the monitor or observer; an
// implementation derives from it to hold what the removal needs.
class PlatformToken {
public:
    PlatformToken() = default;
    PlatformToken(const PlatformToken&) = delete;
    PlatformToken& operator=(const PlatformToken&) = delete;
    PlatformToken(PlatformToken&&) = delete;
    PlatformToken& operator=(PlatformToken&&) = delete;
    virtual ~PlatformToken() = default;
};

} // namespace velmora
