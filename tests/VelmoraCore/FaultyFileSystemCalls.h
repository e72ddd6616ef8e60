#pragma once

#include <cerrno>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VelmoraCore/FileSystemCalls.h"

namespace velmora::test {

// Makes real system calls, except that one chosen step fails with a chosen
// error, and records the order of the steps.
class FaultyFileSystemCalls final : public FileSystemCalls {
public:
    enum class Step {
        createUniqueFile,
        write,
        shortWriteThenWrite,
        fsyncFile,
        close,
        rename,
        openFolder,
        fsyncFolder,
    };

    void failAt(Step step, int error)
    {
        m_failingStep = step;
        m_error = error;
    }
    // The next write is interrupted by a signal before writing anything.
    void interruptNextWrite() { m_interruptNextWrite = true; }

    // A store makes its next temporary on a thread of its own: the steps are
    // recorded from both.
    [[nodiscard]] std::vector<std::string> steps() const
    {
        const std::scoped_lock lock(m_stepsMutex);
        return m_steps;
    }
    // Runs just before the rename, with the temporary's path: another
    // process's view of the folder in the middle of a write.
    void beforeRename(std::function<void(const char* temporary)> hook) { m_beforeRename = std::move(hook); }

    int createUniqueFile(char* pathTemplate) override
    {
        record("create");
        if (failing(Step::createUniqueFile))
            return -1;
        return FileSystemCalls::createUniqueFile(pathTemplate);
    }

    ssize_t write(int descriptor, const void* bytes, std::size_t count) override
    {
        record("write");
        if (m_interruptNextWrite) {
            m_interruptNextWrite = false;
            errno = EINTR;
            return -1;
        }
        if (m_failingStep == Step::shortWriteThenWrite && !m_shortWriteDone && count > 1) {
            m_shortWriteDone = true;
            return FileSystemCalls::write(descriptor, bytes, count / 2);
        }
        if (failing(Step::write) || (m_shortWriteDone && failing(Step::shortWriteThenWrite)))
            return -1;
        return FileSystemCalls::write(descriptor, bytes, count);
    }

    int fsync(int descriptor) override
    {
        const bool folder = descriptor == m_folderDescriptor;
        record(folder ? "fsync folder" : "fsync");
        if (failing(folder ? Step::fsyncFolder : Step::fsyncFile))
            return -1;
        return FileSystemCalls::fsync(descriptor);
    }

    int close(int descriptor) override
    {
        const bool folder = descriptor == m_folderDescriptor;
        record(folder ? "close folder" : "close");
        if (!folder && failing(Step::close)) {
            FileSystemCalls::close(descriptor); // A failing close still releases the descriptor.
            errno = m_error;
            return -1;
        }
        if (folder)
            m_folderDescriptor = -1; // The number is free for the next file again.
        return FileSystemCalls::close(descriptor);
    }

    int rename(const char* from, const char* to) override
    {
        if (m_beforeRename)
            m_beforeRename(from);
        record("rename");
        if (failing(Step::rename))
            return -1;
        return FileSystemCalls::rename(from, to);
    }

    int makeFolder(const char* path, mode_t mode) override
    {
        record("make folder");
        return FileSystemCalls::makeFolder(path, mode);
    }

    int openFolder(const char* path) override
    {
        record("open folder");
        if (failing(Step::openFolder))
            return -1;
        m_folderDescriptor = FileSystemCalls::openFolder(path);
        return m_folderDescriptor;
    }

private:
    void record(std::string step)
    {
        const std::scoped_lock lock(m_stepsMutex);
        m_steps.push_back(std::move(step));
    }

    bool failing(Step step)
    {
        if (m_failingStep != step)
            return false;
        errno = m_error;
        return true;
    }

    std::optional<Step> m_failingStep;
    int m_error = 0;
    bool m_interruptNextWrite = false;
    bool m_shortWriteDone = false;
    int m_folderDescriptor = -1;
    mutable std::mutex m_stepsMutex;
    std::vector<std::string> m_steps;
    std::function<void(const char*)> m_beforeRename;
};

} // namespace velmora::test
