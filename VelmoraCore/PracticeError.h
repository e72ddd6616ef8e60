#pragma once

#include <cstdint>
#include <exception>

namespace velmora {

// The practice rules' own failures. Deliberately without detail: every broken
// validation rule is the same `invalidData`, and callers decide what to show.
class PracticeError final : public std::exception {
public:
    enum Kind : std::uint8_t {
        invalidData,
        notSelected,
        notLoaded,
    };

    explicit PracticeError(Kind kind) noexcept
        : m_kind(kind)
    {
    }

    [[nodiscard]] Kind kind() const noexcept { return m_kind; }
    [[nodiscard]] const char* what() const noexcept override;

    bool operator==(const PracticeError& other) const noexcept { return m_kind == other.m_kind; }

private:
    Kind m_kind;
};

} // namespace velmora
