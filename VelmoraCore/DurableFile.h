#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "FileSystemCalls.h"

namespace velmora {

// Reads and replaces small whole files so that they survive crashes.
//
// Guarantees of write():
//  - A reader, or a process that crashes or is killed at any instant, finds
//    either the old complete file or the new complete file, never a mixture
//    or a truncated file: the bytes go to a temporary file in the same
//    folder, which is flushed to the device (fsync, also when the target is
//    new) and then renamed over the target. The folder is flushed after the
//    rename so that the new name itself survives a power cut.
//  - On any failure the target is untouched and the temporary is removed.
//  - The temporary is created exclusively with mode 0600 and named
//    ".<target name>.XXXXXX", so a leftover is recognisable. It stays locked
//    (flock) until it has been renamed, so removeAbandonedTemporaries() can
//    tell a leftover of a writer that was killed from a live writer's.
//
// Caveats:
//  - A symbolic link at the target is replaced by the rename, not followed.
//  - A failure to flush the folder after the rename is not reported: the new
//    file is already in place, and some file systems cannot flush a folder.
//  - Not for concurrent writers of one target: the last rename wins. Who
//    may write is for the caller to settle (see FolderLock).
//  - write() neither makes the folder nor tidies it; callers do that once
//    (createFolders(), removeAbandonedTemporaries()), not on every write.
//
// Failures are std::filesystem::filesystem_error, naming the operation, the
// path and the system's reason.
class DurableFile {
public:
    DurableFile() = delete;

    // The whole content of the regular file at `path` (a symbolic link to
    // one is followed). Anything else (a FIFO, a device, a socket, a folder)
    // fails at once with FileError::notRegularFile, without blocking or
    // reading, and a file of more than `sizeLimit` bytes with
    // std::errc::file_too_large, without reading past the limit.
    static std::string read(
        const std::filesystem::path& path, std::uintmax_t sizeLimit = std::numeric_limits<std::uintmax_t>::max());

    // Whether something exists at `path` (following symbolic links). Throws
    // when the answer cannot be known, such as for a folder it may not search.
    static bool exists(const std::filesystem::path& path);

    // Creates `folder` and any missing parents, mode 0700. An existing folder
    // is fine; an existing file in the way is an error.
    static void createFolders(const std::filesystem::path& folder, FileSystemCalls& calls = FileSystemCalls::system());

    static void write(const std::filesystem::path& target, std::string_view bytes,
        FileSystemCalls& calls = FileSystemCalls::system());

    class Temporary;
    // write() into `temporary`, made for `target` ahead of time, so that the
    // write begins with its bytes. `beforeRename` runs once they are on the
    // device: a last check that may throw, and then the target stays as it
    // was, the temporary goes and the error passes on.
    static void write(const std::filesystem::path& target, std::unique_ptr<Temporary> temporary, std::string_view bytes,
        const std::function<void()>& beforeRename);

    // Removes the temporaries of `target` that no live writer holds: those
    // of writers that were killed. Best effort; never fails.
    static void removeAbandonedTemporaries(
        const std::filesystem::path& target, FileSystemCalls& calls = FileSystemCalls::system());

    // The prefix shared by every temporary file of `target`.
    static std::string temporaryPrefix(const std::filesystem::path& target);
};

// The temporary file of one write, created exclusively with mode 0600 and
// locked while it lives. Closed and removed when it goes, unless a write got
// as far as renaming it over its target.
class DurableFile::Temporary {
public:
    // An empty temporary beside `target`.
    static std::unique_ptr<Temporary> make(
        const std::filesystem::path& target, FileSystemCalls& calls = FileSystemCalls::system());

    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;
    Temporary(Temporary&&) = delete;
    Temporary& operator=(Temporary&&) = delete;
    ~Temporary();

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    friend class DurableFile;

    Temporary(FileSystemCalls& calls, std::string path, int descriptor);
    void writeAll(std::string_view bytes);
    void closeChecked();

    FileSystemCalls& m_calls;
    std::string m_path;
    int m_descriptor;
    // A second descriptor of the same open file, holding the lock until the
    // rename or the removal.
    int m_lock;
    bool m_renamed = false;
};

} // namespace velmora
