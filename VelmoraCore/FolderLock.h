#pragma once

#include <filesystem>
#include <memory>

namespace velmora {

// One process's exclusive claim on a folder, held for as long as the object
// lives (and so, for the library, until the process ends): an flock on the
// file "owner.lock" inside the folder. Two processes that each keep their
// own copy of a file in that folder and rewrite it whole would otherwise
// silently undo each other's changes; whoever holds the claim is the only
// writer.
//
// Guarantees and caveats:
//  - The claim ends with the process however it ends (a crash or SIGKILL
//    included), since the kernel drops the lock with the last descriptor;
//    a lock file left behind means nothing by itself.
//  - The descriptor is not inherited by programs the process starts.
//  - Claims are per open file, so a second claim from the same process is
//    refused as well.
//  - Advisory: only writers that ask respect it.
class FolderLock {
public:
    static constexpr const char* fileName = "owner.lock";

    // The claim on `folder`, which must exist; null when another holder
    // has it. Throws std::filesystem::filesystem_error when it cannot be
    // tried, such as for a folder where no file can be made.
    static std::unique_ptr<FolderLock> tryAcquire(const std::filesystem::path& folder);

    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    FolderLock(FolderLock&&) = delete;
    FolderLock& operator=(FolderLock&&) = delete;
    ~FolderLock();

private:
    explicit FolderLock(int descriptor);

    int m_descriptor;
};

} // namespace velmora
