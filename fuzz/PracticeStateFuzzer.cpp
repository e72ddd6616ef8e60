// Untrusted bytes through the path that load() takes with the state file:
// decoding, then validation. Every input has to end in one of three ways:
// the JSON library's error from decoding, PracticeError::invalidData from
// validation, or a record that survives its own JSON form (decoded again it
// is equal, judged valid alike, and encodes to the same bytes). Anything else,
// including any other exception, aborts, which is what the fuzzer reports.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "VelmoraCore/PracticeError.h"
#include "VelmoraCore/PracticeState.h"

namespace velmora {
namespace {

[[noreturn]] void finding(std::string_view what)
{
    std::cerr << "PracticeStateFuzzer: " << what << '\n';
    std::abort();
}

std::optional<PracticeState> decoded(std::string_view text)
{
    try {
        return PracticeState::fromJSON(text);
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

bool isValid(const PracticeState& state)
{
    try {
        state.validated();
        return true;
    } catch (const PracticeError& error) {
        if (error.kind() != PracticeError::invalidData)
            finding(std::string("validated() failed with another kind of PracticeError: ") + error.what());
        return false;
    }
}

void checkInput(std::string_view text)
{
    const std::optional<PracticeState> state = decoded(text);
    if (!state)
        return;
    const bool valid = isValid(*state);

    // Every decoded record, not only the valid ones: the JSON form has no
    // precondition, so a record it cannot carry faithfully is its own fault.
    const std::string encoded = state->toJSON();
    const std::optional<PracticeState> again = decoded(encoded);
    if (!again)
        finding("the encoding of a decoded record does not decode: " + encoded);
    if (*again != *state)
        finding("a decoded record changed on its way through its encoding: " + encoded);
    if (isValid(*again) != valid)
        finding("validation changed its verdict after encoding and decoding: " + encoded);
    if (again->toJSON() != encoded)
        finding("a second encoding gave other bytes than the first: " + encoded);
}

} // namespace
} // namespace velmora

// NOLINTNEXTLINE(readability-identifier-naming): the name libFuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try {
        velmora::checkInput(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const std::exception& error) {
        velmora::finding(std::string("unexpected exception: ") + error.what());
    } catch (...) {
        velmora::finding("unexpected exception of an unknown type");
    }
    return 0;
}
