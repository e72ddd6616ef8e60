/* The public header on its own, in strict C: it must need no other include,
   survive a second inclusion, and declare each function with exactly the
   type a renderer binds to (initialising a pointer of another function type
   is an error here). Compiling this file is the test. */
#include <velmora/velmora.h>

struct VelmoraInterface {
    void (*start)(void);
    void (*notice)(const char*);
    char* (*copyEvent)(void);
    void (*freeEvent)(char*);
    float (*contentWidth)(void);
    int32_t (*isPondVisible)(void);
    int32_t (*isPondInteractive)(void);
    void (*readPointer)(float*, float*);
    void (*readPointerButtons)(int32_t*, int32_t*, int32_t*);
    void (*readScroll)(float*, float*);
    void (*readNavigation)(float*, float*);
};

extern const struct VelmoraInterface velmoraHeaderTest;
const struct VelmoraInterface velmoraHeaderTest = {VelmoraStart, VelmoraNotice, VelmoraCopyEvent, VelmoraFree,
    VelmoraContentWidth, VelmoraIsPondVisible, VelmoraIsPondInteractive, VelmoraReadPointer, VelmoraReadPointerButtons,
    VelmoraReadScroll, VelmoraReadNavigation};

/* The same with the function types the header gives dlopen users. */
struct VelmoraLoaded {
    VelmoraStartFunction start;
    VelmoraNoticeFunction notice;
    VelmoraCopyEventFunction copyEvent;
    VelmoraFreeFunction freeEvent;
    VelmoraContentWidthFunction contentWidth;
    VelmoraIsPondVisibleFunction isPondVisible;
    VelmoraIsPondInteractiveFunction isPondInteractive;
    VelmoraReadPointerFunction readPointer;
    VelmoraReadPointerButtonsFunction readPointerButtons;
    VelmoraReadScrollFunction readScroll;
    VelmoraReadNavigationFunction readNavigation;
};

extern const struct VelmoraLoaded velmoraHeaderTestLoaded;
const struct VelmoraLoaded velmoraHeaderTestLoaded = {VelmoraStart, VelmoraNotice, VelmoraCopyEvent, VelmoraFree,
    VelmoraContentWidth, VelmoraIsPondVisible, VelmoraIsPondInteractive, VelmoraReadPointer, VelmoraReadPointerButtons,
    VelmoraReadScroll, VelmoraReadNavigation};

/* The version is a number a preprocessor can compare. */
#if VELMORA_VERSION < 100
#error "VELMORA_VERSION is not a number of the form major * 10000 + minor * 100 + patch"
#endif
