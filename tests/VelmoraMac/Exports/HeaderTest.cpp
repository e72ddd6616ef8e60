// The public header on its own, in C++: C linkage and the exact types.
// Compiling this file is the test.
#include <velmora/velmora.h>

#include <type_traits>

static_assert(std::is_same<decltype(&VelmoraStart), void (*)()>::value, "VelmoraStart");
static_assert(std::is_same<decltype(&VelmoraNotice), void (*)(const char*)>::value, "VelmoraNotice");
static_assert(std::is_same<decltype(&VelmoraCopyEvent), char* (*)()>::value, "VelmoraCopyEvent");
static_assert(std::is_same<decltype(&VelmoraFree), void (*)(char*)>::value, "VelmoraFree");
static_assert(std::is_same<decltype(&VelmoraContentWidth), float (*)()>::value, "VelmoraContentWidth");
static_assert(std::is_same<decltype(&VelmoraIsPondVisible), int32_t (*)()>::value, "VelmoraIsPondVisible");
static_assert(std::is_same<decltype(&VelmoraIsPondInteractive), int32_t (*)()>::value, "VelmoraIsPondInteractive");
static_assert(std::is_same<decltype(&VelmoraReadPointer), void (*)(float*, float*)>::value, "VelmoraReadPointer");
static_assert(std::is_same<decltype(&VelmoraReadPointerButtons), void (*)(int32_t*, int32_t*, int32_t*)>::value, "VelmoraReadPointerButtons");
static_assert(std::is_same<decltype(&VelmoraReadScroll), void (*)(float*, float*)>::value, "VelmoraReadScroll");
static_assert(std::is_same<decltype(&VelmoraReadNavigation), void (*)(float*, float*)>::value, "VelmoraReadNavigation");
