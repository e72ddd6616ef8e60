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
static_assert(std::is_same<decltype(&VelmoraReadPointerButtons), void (*)(int32_t*, int32_t*, int32_t*)>::value,
    "VelmoraReadPointerButtons");
static_assert(std::is_same<decltype(&VelmoraReadScroll), void (*)(float*, float*)>::value, "VelmoraReadScroll");
static_assert(std::is_same<decltype(&VelmoraReadNavigation), void (*)(float*, float*)>::value, "VelmoraReadNavigation");

// The function types for dlopen users are the functions' own.
static_assert(std::is_same<decltype(&VelmoraStart), VelmoraStartFunction>::value, "VelmoraStartFunction");
static_assert(std::is_same<decltype(&VelmoraNotice), VelmoraNoticeFunction>::value, "VelmoraNoticeFunction");
static_assert(std::is_same<decltype(&VelmoraCopyEvent), VelmoraCopyEventFunction>::value, "VelmoraCopyEventFunction");
static_assert(std::is_same<decltype(&VelmoraFree), VelmoraFreeFunction>::value, "VelmoraFreeFunction");
static_assert(
    std::is_same<decltype(&VelmoraContentWidth), VelmoraContentWidthFunction>::value, "VelmoraContentWidthFunction");
static_assert(
    std::is_same<decltype(&VelmoraIsPondVisible), VelmoraIsPondVisibleFunction>::value, "VelmoraIsPondVisibleFunction");
static_assert(std::is_same<decltype(&VelmoraIsPondInteractive), VelmoraIsPondInteractiveFunction>::value,
    "VelmoraIsPondInteractiveFunction");
static_assert(
    std::is_same<decltype(&VelmoraReadPointer), VelmoraReadPointerFunction>::value, "VelmoraReadPointerFunction");
static_assert(std::is_same<decltype(&VelmoraReadPointerButtons), VelmoraReadPointerButtonsFunction>::value,
    "VelmoraReadPointerButtonsFunction");
static_assert(
    std::is_same<decltype(&VelmoraReadScroll), VelmoraReadScrollFunction>::value, "VelmoraReadScrollFunction");
static_assert(std::is_same<decltype(&VelmoraReadNavigation), VelmoraReadNavigationFunction>::value,
    "VelmoraReadNavigationFunction");

// The version macros agree with each other and with the project's version,
// which the build reads from them. (Written out, each side is the same
// number, which is the point.)
// NOLINTNEXTLINE(misc-redundant-expression)
static_assert(VELMORA_VERSION == VELMORA_VERSION_MAJOR * 10000 + VELMORA_VERSION_MINOR * 100 + VELMORA_VERSION_PATCH,
    "VELMORA_VERSION");
// NOLINTNEXTLINE(misc-redundant-expression)
static_assert(VELMORA_VERSION_MAJOR == VELMORA_EXPECTED_VERSION_MAJOR, "the project's major version");
// NOLINTNEXTLINE(misc-redundant-expression)
static_assert(VELMORA_VERSION_MINOR == VELMORA_EXPECTED_VERSION_MINOR, "the project's minor version");
// NOLINTNEXTLINE(misc-redundant-expression)
static_assert(VELMORA_VERSION_PATCH == VELMORA_EXPECTED_VERSION_PATCH, "the project's patch version");

static constexpr bool sameText(const char* a, const char* b)
{
    return *a == *b && (*a == '\0' || sameText(a + 1, b + 1));
}
static_assert(sameText(VELMORA_VERSION_STRING, VELMORA_EXPECTED_VERSION), "VELMORA_VERSION_STRING");
static_assert(sameText(VELMORA_LIBRARY_SONAME, VELMORA_EXPECTED_SONAME), "VELMORA_LIBRARY_SONAME");
