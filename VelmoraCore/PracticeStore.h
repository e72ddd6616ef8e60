#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "FileSystemCalls.h"
#include "PracticeState.h"

namespace velmora {

// Holds the user's one PracticeState in memory and in its JSON file, and is
// the only code that reads or writes that file.
//
// What it holds, and what it has written, always passed validated(). A failed
// load() leaves it unloaded and the file untouched (a corrupt file is never
// repaired, replaced or deleted); a failed update() leaves both the held
// state and the file as they were. Every update() that returns is on disk.
//
// Main thread only; no locking.
class PracticeStore {
public:
    using Change = std::function<PracticeState(PracticeState)>;

    // Touches no file. `calls` lets tests fail single steps of a write.
    explicit PracticeStore(std::filesystem::path url, FileSystemCalls& calls = FileSystemCalls::system());

    PracticeStore(const PracticeStore&) = delete;
    PracticeStore& operator=(const PracticeStore&) = delete;
    PracticeStore(PracticeStore&&) = delete;
    PracticeStore& operator=(PracticeStore&&) = delete;
    ~PracticeStore() = default;

    // The last state loaded or saved; none before a successful load().
    [[nodiscard]] const std::optional<PracticeState>& state() const { return m_state; }

    // Reads the file, or gives the default state when there is none (without
    // creating it). Throws the file system's error, the JSON library's
    // decoding error, or PracticeError::invalidData; the store is unloaded
    // afterwards.
    PracticeState load();

    // Applies `change` to a copy of the held state, validates the result,
    // writes it durably and only then holds it. Throws
    // PracticeError::notLoaded (without calling `change`), whatever `change`
    // throws, PracticeError::invalidData, or an encoding or file-system error.
    PracticeState update(const Change& change);

private:
    std::filesystem::path m_url;
    FileSystemCalls& m_calls;
    std::optional<PracticeState> m_state;
};

} // namespace velmora
