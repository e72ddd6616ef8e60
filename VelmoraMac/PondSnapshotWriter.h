#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "PondSnapshot.h"

namespace velmora {

// Writes JSON text and its escaped form side by side, byte for byte as
// nlohmann/json's compact dump writes them. Parts that stay the same from one
// snapshot to the next are encoded once (part(), encoded()) and spliced in;
// the rest is encoded as it comes.
class PondSnapshotWriter {
public:
    // Room for `bytes` of text in each form.
    explicit PondSnapshotWriter(std::size_t bytes = 0);

    // Encoded JSON text as it stands, punctuation and member names included.
    // It must hold no raw control characters, which JSON text never does.
    void raw(std::string_view json);
    void splice(const PondSnapshot& part);
    // Throws the JSON library's type_error when `value` is not UTF-8.
    void string(std::string_view value);
    void integer(std::int64_t value);
    void number(double value);
    void boolean(bool value);

    [[nodiscard]] PondSnapshot finish() && { return std::move(m_snapshot); }

    // `json`, as for raw(), in both forms.
    [[nodiscard]] static PondSnapshot part(std::string_view json);

private:
    PondSnapshot m_snapshot;
};

} // namespace velmora
