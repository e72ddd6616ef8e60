#pragma once

#include <cstddef>
#include <sys/types.h>

namespace velmora {

// The system calls of a durable write, one virtual function each, so that a
// test can make any single step fail and check that nothing was lost.
// This class itself simply makes the POSIX calls. Every function returns what
// its system call returns and leaves errno set on failure.
class FileSystemCalls {
public:
    FileSystemCalls() = default;
    FileSystemCalls(const FileSystemCalls&) = delete;
    FileSystemCalls& operator=(const FileSystemCalls&) = delete;
    FileSystemCalls(FileSystemCalls&&) = delete;
    FileSystemCalls& operator=(FileSystemCalls&&) = delete;
    virtual ~FileSystemCalls() = default;

    // The process-wide instance that makes the real calls.
    static FileSystemCalls& system();

    // Creates and opens a new file, mode 0600, replacing the trailing
    // "XXXXXX" of `pathTemplate` with a unique name (mkostemp).
    virtual int createUniqueFile(char* pathTemplate);
    virtual ssize_t write(int descriptor, const void* bytes, std::size_t count);
    virtual int fsync(int descriptor);
    virtual int close(int descriptor);
    virtual int rename(const char* from, const char* to);
    virtual int unlink(const char* path);
    virtual int makeFolder(const char* path, mode_t mode);
    virtual int openFolder(const char* path);
};

} // namespace velmora
