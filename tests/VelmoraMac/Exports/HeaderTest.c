/* The public header on its own, in strict C: it must need no other include,
   survive a second inclusion, and declare each function with exactly the
   type a renderer binds to (an assignment between different function
   pointer types is an error here). Compiling this file is the test. */
#include <velmora/velmora.h>

void velmoraHeaderTest(void);

void velmoraHeaderTest(void)
{
    void (*start)(void) = VelmoraStart;
    void (*notice)(const char*) = VelmoraNotice;
    char* (*copyEvent)(void) = VelmoraCopyEvent;
    void (*freeEvent)(char*) = VelmoraFree;
    float (*contentWidth)(void) = VelmoraContentWidth;
    int32_t (*isPondVisible)(void) = VelmoraIsPondVisible;
    int32_t (*isPondInteractive)(void) = VelmoraIsPondInteractive;
    void (*readPointer)(float*, float*) = VelmoraReadPointer;
    void (*readPointerButtons)(int32_t*, int32_t*, int32_t*) = VelmoraReadPointerButtons;
    void (*readScroll)(float*, float*) = VelmoraReadScroll;
    void (*readNavigation)(float*, float*) = VelmoraReadNavigation;
    (void)start;
    (void)notice;
    (void)copyEvent;
    (void)freeEvent;
    (void)contentWidth;
    (void)isPondVisible;
    (void)isPondInteractive;
    (void)readPointer;
    (void)readPointerButtons;
    (void)readScroll;
    (void)readNavigation;
}
