#include "FolderLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace velmora {

namespace fs = std::filesystem;

namespace {

constexpr mode_t privateFileMode = 0600;

} // namespace

FolderLock::FolderLock(int descriptor)
    : m_descriptor(descriptor)
{
}

FolderLock::~FolderLock()
{
    ::close(m_descriptor); // Releases the claim; nothing else depends on it.
}

std::unique_ptr<FolderLock> FolderLock::tryAcquire(const fs::path& folder)
{
    const fs::path path = folder / fileName;
    // No O_NOFOLLOW: a lock file that is a link still gives every process
    // the same file to lock.
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOCTTY | O_CLOEXEC, privateFileMode);
    if (descriptor < 0)
        throw fs::filesystem_error("open the lock file", path, std::error_code(errno, std::system_category()));
    int result = 0;
    do {
        result = ::flock(descriptor, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result == 0)
        return std::unique_ptr<FolderLock>(new FolderLock(descriptor));
    const int error = errno;
    ::close(descriptor);
    if (error == EWOULDBLOCK)
        return nullptr;
    throw fs::filesystem_error("lock the folder", path, std::error_code(error, std::system_category()));
}

} // namespace velmora
