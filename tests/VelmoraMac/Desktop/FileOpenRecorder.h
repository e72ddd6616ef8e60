#pragma once

#include <stddef.h>

// Records the files the whole process opens while recording is on: the
// test program defines open(), fopen() and their kin, which every library
// it loads (the one under test among them) reaches before the C library's.
// Calls inside the C library itself are not seen.

#ifdef __cplusplus
extern "C" {
#endif

// Forgets what was recorded and starts recording.
void fileOpenRecorderStart(void);
void fileOpenRecorderStop(void);
// How many opens were recorded; more than fileOpenRecorderCapacity() are
// counted but not kept.
size_t fileOpenRecorderCount(void);
size_t fileOpenRecorderCapacity(void);
// The path of the `index`th open, as it was passed.
const char* fileOpenRecorderPath(size_t index);

#ifdef __cplusplus
}
#endif
