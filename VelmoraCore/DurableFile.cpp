#include "DurableFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "FileError.h"

namespace velmora {

namespace fs = std::filesystem;

namespace {

constexpr mode_t privateFolderMode = 0700;
constexpr std::string_view uniqueSuffix = "XXXXXX";

[[noreturn]] void fail(const std::string& operation, const fs::path& path, int error)
{
    throw fs::filesystem_error(operation, path, std::error_code(error, std::system_category()));
}

fs::path folderOf(const fs::path& target)
{
    fs::path folder = target.parent_path();
    return folder.empty() ? fs::path(".") : folder;
}

// Closes a descriptor of ours when it goes out of scope.
class ScopedDescriptor {
public:
    explicit ScopedDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ScopedDescriptor(const ScopedDescriptor&) = delete;
    ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;
    ScopedDescriptor(ScopedDescriptor&&) = delete;
    ScopedDescriptor& operator=(ScopedDescriptor&&) = delete;
    ~ScopedDescriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    [[nodiscard]] int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace

DurableFile::Temporary::Temporary(FileSystemCalls& calls, std::string path, int descriptor)
    : m_calls(calls)
    , m_path(std::move(path))
    , m_descriptor(descriptor)
    , m_lock(::dup(descriptor))
{
    // Marks the temporary as in use for removeAbandonedTemporaries(), through
    // a descriptor of its own: the data descriptor is closed (and its close
    // checked) before the rename, and a lock lives as long as any descriptor
    // of the open file, so the temporary stays locked until it has its final
    // name. Without the lock another writer's sweep may remove it, and then
    // our rename fails cleanly, so a failure here is not worth failing for.
    if (m_lock >= 0)
        ::flock(m_lock, LOCK_EX | LOCK_NB);
}

DurableFile::Temporary::~Temporary()
{
    if (m_descriptor >= 0)
        m_calls.close(m_descriptor); // Failing anyway; its result adds nothing.
    if (!m_renamed)
        m_calls.unlink(m_path.c_str()); // Best effort; a leftover is removed by a later sweep.
    // Released last, after the rename or the removal.
    if (m_lock >= 0)
        ::close(m_lock);
}

std::unique_ptr<DurableFile::Temporary> DurableFile::Temporary::make(const fs::path& target, FileSystemCalls& calls)
{
    std::string pathTemplate = (folderOf(target) / (temporaryPrefix(target) + std::string(uniqueSuffix))).string();
    const int descriptor = calls.createUniqueFile(pathTemplate.data());
    if (descriptor < 0)
        fail("create temporary file", pathTemplate, errno);
    return std::unique_ptr<Temporary>(new Temporary(calls, std::move(pathTemplate), descriptor));
}

void DurableFile::Temporary::writeAll(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = m_calls.write(m_descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            fail("write temporary file", m_path, errno);
        }
        if (written == 0)
            fail("write temporary file", m_path, EIO);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void DurableFile::Temporary::closeChecked()
{
    const int descriptor = m_descriptor;
    m_descriptor = -1; // Closed even when close() reports an error: never close twice.
    if (m_calls.close(descriptor) != 0)
        fail("close temporary file", m_path, errno);
}

std::string DurableFile::temporaryPrefix(const fs::path& target)
{
    // Appended piece by piece: GCC 12 at -O3 reports a false -Wrestrict for
    // the chained operator+ form.
    std::string prefix = ".";
    prefix += target.filename().string();
    prefix += '.';
    return prefix;
}

bool DurableFile::exists(const fs::path& path)
{
    struct stat status { };
    if (::stat(path.c_str(), &status) == 0)
        return true;
    if (errno == ENOENT || errno == ENOTDIR)
        return false;
    fail("look for file", path, errno);
}

std::string DurableFile::read(const fs::path& path, std::uintmax_t sizeLimit)
{
    // Non-blocking, so that opening a FIFO does not wait for a writer; it
    // changes nothing for a regular file.
    const ScopedDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.get() < 0)
        fail("open file", path, errno);
    struct stat status { };
    if (::fstat(file.get(), &status) != 0)
        fail("look at file", path, errno);
    if (!S_ISREG(status.st_mode))
        throw fs::filesystem_error("read file", path, make_error_code(FileError::notRegularFile));
    if (static_cast<std::uintmax_t>(status.st_size) > sizeLimit)
        fail("read file", path, EFBIG);

    // The size is only a hint: the file may change while it is read. One
    // byte more than the limit tells a file that grew past it.
    std::string content;
    std::size_t capacity = static_cast<std::size_t>(status.st_size) + 1;
    const auto ceiling = static_cast<std::size_t>(std::min<std::uintmax_t>(sizeLimit, SIZE_MAX - 1)) + 1;
    for (;;) {
        capacity = std::min(std::max(capacity, content.size() + 1), ceiling);
        const std::size_t used = content.size();
        content.resize(capacity);
        const ssize_t count = ::read(file.get(), content.data() + used, capacity - used);
        if (count < 0) {
            content.resize(used);
            if (errno == EINTR)
                continue;
            fail("read file", path, errno);
        }
        content.resize(used + static_cast<std::size_t>(count));
        if (content.size() > sizeLimit)
            fail("read file", path, EFBIG);
        if (count == 0)
            return content;
        if (content.size() == capacity)
            capacity *= 2;
    }
}

void DurableFile::createFolders(const fs::path& folder, FileSystemCalls& calls)
{
    fs::path partial;
    for (const fs::path& component : folder) {
        partial /= component;
        struct stat status { };
        if (::stat(partial.c_str(), &status) == 0) {
            if (!S_ISDIR(status.st_mode))
                fail("create folder", partial, ENOTDIR);
            continue;
        }
        if (calls.makeFolder(partial.c_str(), privateFolderMode) != 0 && errno != EEXIST)
            fail("create folder", partial, errno);
    }
}

void DurableFile::removeAbandonedTemporaries(const fs::path& target, FileSystemCalls& calls)
{
    const fs::path folder = folderOf(target);
    const std::string prefix = temporaryPrefix(target);
    // Errors only end the tidying: a folder that cannot be listed is reported
    // by the write itself if it matters, and a leftover only costs a few bytes.
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.size() != prefix.size() + uniqueSuffix.size() || !name.starts_with(prefix))
            continue;
        // A live writer holds a lock on its temporary until it is renamed,
        // so one that can be locked has no writer any more.
        const ScopedDescriptor leftover(::open(entry->path().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (leftover.get() >= 0 && ::flock(leftover.get(), LOCK_EX | LOCK_NB) == 0)
            calls.unlink(entry->path().c_str()); // Best effort, as above.
    }
}

void DurableFile::write(const fs::path& target, std::string_view bytes, FileSystemCalls& calls)
{
    write(target, Temporary::make(target, calls), bytes, [] {});
}

void DurableFile::write(const fs::path& target, std::unique_ptr<Temporary> temporary, std::string_view bytes,
    const std::function<void()>& beforeRename)
{
    FileSystemCalls& calls = temporary->m_calls;
    temporary->writeAll(bytes);
    if (calls.fsync(temporary->m_descriptor) != 0)
        fail("flush temporary file", temporary->path(), errno);
    temporary->closeChecked();
    beforeRename();
    if (calls.rename(temporary->path().c_str(), target.c_str()) != 0)
        fail("replace file", target, errno);
    temporary->m_renamed = true;

    // The new content is in place under its name; flushing the folder makes
    // the rename itself durable. Its failure is deliberately not reported:
    // nothing can be undone and some file systems cannot flush folders.
    const int folder = calls.openFolder(folderOf(target).c_str());
    if (folder >= 0) {
        calls.fsync(folder);
        calls.close(folder);
    }
}

} // namespace velmora
