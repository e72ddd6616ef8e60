#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>

#include "DurableFile.h"
#include "FileSystemCalls.h"
#include "PracticeState.h"
#include "SideThread.h"

namespace velmora {

// Holds the user's one PracticeState in memory and in its JSON file, and is
// the only code that reads or writes that file.
//
// What it holds, and what it has written, always passed validated(). A failed
// load() leaves it unloaded and the file untouched (a corrupt file is never
// repaired, replaced or deleted); a failed update() leaves both the held
// state and the file as they were. Every update() that returns is on disk.
//
// The held state is shared, never copied: callers keep the pointer they are
// given, and a change makes exactly one new state.
//
// Only regular files of at most sizeLimit bytes are read, and nothing larger
// is written, so every file the store writes loads again. A century of daily
// practice takes about half a megabyte.
//
// The store does not settle who may write; one process per folder should
// (FolderLock). Main thread only; no locking.
class PracticeStore {
public:
    using Change = std::function<PracticeState(const PracticeState&)>;
    // Called with the new state, once it passed validated(), on another
    // thread while the write waits for the device, before the state is in
    // place: a caller may
    // prepare what it will publish, from that state and from values it
    // captured beforehand, but must not publish anything until update() has
    // returned. It must not throw. update() returns only once it is done.
    using WhileWriting = std::function<void(const PracticeState& upcoming)>;

    static constexpr std::uintmax_t sizeLimit = std::uintmax_t{4} * 1024 * 1024;

    // Touches no file. `calls` lets tests fail single steps of a write.
    explicit PracticeStore(std::filesystem::path url, FileSystemCalls& calls = FileSystemCalls::system());

    PracticeStore(const PracticeStore&) = delete;
    PracticeStore& operator=(const PracticeStore&) = delete;
    PracticeStore(PracticeStore&&) = delete;
    PracticeStore& operator=(PracticeStore&&) = delete;
    ~PracticeStore() = default;

    // The last state loaded or saved; null before a successful load().
    [[nodiscard]] const std::shared_ptr<const PracticeState>& state() const { return m_state; }

    // Reads the file, or gives the default state when there is none (without
    // creating it). Throws the file system's error (FileError::notRegularFile
    // for anything but a regular file, std::errc::file_too_large past
    // sizeLimit), the JSON library's decoding error, or
    // PracticeError::invalidData; the store is unloaded afterwards.
    std::shared_ptr<const PracticeState> load();

    // Applies `change` to the held state, validates the result, writes it
    // durably and only then holds it. Throws PracticeError::notLoaded
    // (without calling `change`), whatever `change` throws,
    // PracticeError::invalidData, std::errc::file_too_large for a state
    // whose file would pass sizeLimit, or an encoding or file-system error.
    // The folder is made, and leftovers of killed writers removed, on the
    // first write and again when it has gone away, not on every write.
    // Validation runs beside the write's flushes and gates its rename; the
    // next write's temporary is made on the side thread after this one, so
    // a write pays for its bytes, its flushes and its rename only.
    std::shared_ptr<const PracticeState> update(const Change& change, const WhileWriting& whileWriting = {});

private:
    void prepareFolder();
    std::unique_ptr<DurableFile::Temporary> takeTemporary();
    void makeNextTemporary();
    void write(const std::string& bytes, const std::function<void()>& beforeRename);

    std::filesystem::path m_url;
    FileSystemCalls& m_calls;
    std::shared_ptr<const PracticeState> m_state;
    bool m_folderPrepared = false;
    // Made on the side thread; touched here only once m_nextMade is ready.
    std::unique_ptr<DurableFile::Temporary> m_nextTemporary;
    std::future<void> m_nextMade;
    // Last: joined first, while what its tasks touch still exists.
    SideThread m_sideThread;
};

} // namespace velmora
