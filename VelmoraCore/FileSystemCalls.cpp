#include "FileSystemCalls.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora {

FileSystemCalls& FileSystemCalls::system()
{
    static FileSystemCalls calls;
    return calls;
}

int FileSystemCalls::createUniqueFile(char* pathTemplate)
{
    return ::mkostemp(pathTemplate, O_CLOEXEC);
}

ssize_t FileSystemCalls::write(int descriptor, const void* bytes, std::size_t count)
{
    return ::write(descriptor, bytes, count);
}

int FileSystemCalls::fsync(int descriptor)
{
    return ::fsync(descriptor);
}

int FileSystemCalls::close(int descriptor)
{
    return ::close(descriptor);
}

int FileSystemCalls::rename(const char* from, const char* to)
{
    return std::rename(from, to);
}

int FileSystemCalls::unlink(const char* path)
{
    return ::unlink(path);
}

int FileSystemCalls::makeFolder(const char* path, mode_t mode)
{
    return ::mkdir(path, mode);
}

int FileSystemCalls::openFolder(const char* path)
{
    return ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

} // namespace velmora
