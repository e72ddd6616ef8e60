// The process's own open(), in front of the C library's (see
// FileOpenRecorder.h). Written in C, without the C library's fortified
// inline wrappers, so that these definitions are the plain functions.

#undef _FORTIFY_SOURCE
#define _GNU_SOURCE

#include "FileOpenRecorder.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>

enum { capacity = 256, longestPath = 512 };

static atomic_bool recording;
static atomic_size_t recorded;
static char paths[capacity][longestPath];

static void record(const char* path)
{
    if (!atomic_load(&recording))
        return;
    const size_t index = atomic_fetch_add(&recorded, 1);
    if (index < capacity && path != NULL) {
        strncpy(paths[index], path, longestPath - 1);
        paths[index][longestPath - 1] = '\0';
    }
}

// The next definition after ours (the C library's, or a sanitizer's), in
// `function`, through the object pointer dlsym() gives, as POSIX advises.
static void next(const char* name, void* function)
{
    void* symbol = dlsym(RTLD_NEXT, name);
    memcpy(function, &symbol, sizeof symbol);
}

static mode_t modeOf(int flags, va_list arguments)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? (mode_t)va_arg(arguments, int) : 0;
}

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    record(path);
    int (*real)(const char*, int, ...) = NULL;
    next("open", (void*)&real);
    return real(path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    record(path);
    int (*real)(const char*, int, ...) = NULL;
    next("open64", (void*)&real);
    return real(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    record(path);
    int (*real)(int, const char*, int, ...) = NULL;
    next("openat", (void*)&real);
    return real(folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    record(path);
    int (*real)(int, const char*, int, ...) = NULL;
    next("openat64", (void*)&real);
    return real(folder, path, flags, mode);
}

FILE* fopen(const char* path, const char* mode)
{
    record(path);
    FILE* (*real)(const char*, const char*) = NULL;
    next("fopen", (void*)&real);
    return real(path, mode);
}

FILE* fopen64(const char* path, const char* mode)
{
    record(path);
    FILE* (*real)(const char*, const char*) = NULL;
    next("fopen64", (void*)&real);
    return real(path, mode);
}

DIR* opendir(const char* path)
{
    record(path);
    DIR* (*real)(const char*) = NULL;
    next("opendir", (void*)&real);
    return real(path);
}

// A temporary file: its name is only known once it has been made.
int mkostemp(char* pathTemplate, int flags)
{
    int (*real)(char*, int) = NULL;
    next("mkostemp", (void*)&real);
    const int descriptor = real(pathTemplate, flags);
    record(pathTemplate);
    return descriptor;
}

int mkostemp64(char* pathTemplate, int flags)
{
    int (*real)(char*, int) = NULL;
    next("mkostemp64", (void*)&real);
    const int descriptor = real(pathTemplate, flags);
    record(pathTemplate);
    return descriptor;
}

void fileOpenRecorderStart(void)
{
    atomic_store(&recorded, 0);
    atomic_store(&recording, 1);
}

void fileOpenRecorderStop(void)
{
    atomic_store(&recording, 0);
}

size_t fileOpenRecorderCount(void)
{
    return atomic_load(&recorded);
}

size_t fileOpenRecorderCapacity(void)
{
    return capacity;
}

const char* fileOpenRecorderPath(size_t index)
{
    return index < capacity && index < atomic_load(&recorded) ? paths[index] : "";
}
