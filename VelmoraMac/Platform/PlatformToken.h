#pragma once

#include <functional>
#include <utility>

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

// A token that runs its removal once, when it goes: what the headless
// registries of monitors and observers hand out. The removal must hold its
// registry weakly, since a token may outlive it.
class RemovalToken final : public PlatformToken {
public:
    explicit RemovalToken(std::function<void()> removal)
        : m_removal(std::move(removal))
    {
    }
    RemovalToken(const RemovalToken&) = delete;
    RemovalToken& operator=(const RemovalToken&) = delete;
    RemovalToken(RemovalToken&&) = delete;
    RemovalToken& operator=(RemovalToken&&) = delete;
    ~RemovalToken() override
    {
        if (m_removal)
            m_removal();
    }

private:
    std::function<void()> m_removal;
};

} // namespace velmora
