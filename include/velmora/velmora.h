/*
 * The C interface of libVelmoraNative, the practice companion that lives in
 * the tray.
 *
 * A rendering program loads the library, calls VelmoraStart() once, and then
 * polls it, typically once per rendered frame: it pulls the newest snapshot of
 * the practice with VelmoraCopyEvent(), reports noticings with
 * VelmoraNotice(), and reads the pond's input and visibility with the reader
 * functions. The library does everything else itself: the state file, the
 * tray item and its menu, the settings panel, reminders and launch at login.
 *
 * Threads
 *   Every function may be called from any thread of the program, and the
 *   program need not run an event loop: the library keeps its state on a
 *   thread of its own (its main thread) and each call except VelmoraFree()
 *   waits until that thread has done the work. A call therefore blocks for a
 *   few microseconds, or longer while the library is busy, say saving the
 *   state file. Never call from a thread that the library's main thread is
 *   waiting for (such as from inside a callback of a toolkit the library also
 *   uses); that would block both.
 *
 * Before VelmoraStart()
 *   Before a successful start every function is safe and answers as if
 *   nothing were shown: no event, 0 for the predicates, zeros from the
 *   readers, 780 for the content width; VelmoraNotice() does nothing.
 *
 * Failures
 *   No function reports an error. A start that cannot load the library's
 *   resources shows an alert and ends the process with a non-zero status; the
 *   saved practice is left as it was. A noticing that cannot be saved is
 *   shown to the user in the settings panel.
 *
 * One process at a time
 *   Only one process keeps the user's practice. On a desktop,
 *   VelmoraStart() in a second process of the same session hands over to
 *   the first, which comes forward, and then ends this process with status
 *   0 without returning: a program must not count on VelmoraStart()
 *   returning, nor hold unsaved work of its own when it calls it. See
 *   VelmoraStart().
 *
 * Out-parameters
 *   Every out-parameter is written on every path. A null out-pointer is
 *   skipped.
 *
 * Loading
 *   A program may link the library (pkg-config velmora, or the CMake
 *   package Velmora with its target Velmora::VelmoraNative) or load it at
 *   run time with dlopen("libVelmoraNative.so.0", ...) and look each
 *   function up with dlsym; the Velmora...Function types below are the
 *   types to convert those results to. The library is linked with
 *   -z nodelete: once loaded it stays in the process until the process
 *   ends, and dlclose() does not unload it (its threads, windows and tray
 *   item live on). It reads "content.json" from the folder "velmora"
 *   beside its own file, found through any symbolic link to it.
 */
#ifndef VELMORA_VELMORA_H
#define VELMORA_VELMORA_H

#include <stdint.h>

/* The version of this interface and of the library that implements it. */
#define VELMORA_VERSION_MAJOR 0
#define VELMORA_VERSION_MINOR 1
#define VELMORA_VERSION_PATCH 0
#define VELMORA_VERSION_STRING "0.1.0"
/* One number to compare: major * 10000 + minor * 100 + patch. */
#define VELMORA_VERSION (VELMORA_VERSION_MAJOR * 10000 + VELMORA_VERSION_MINOR * 100 + VELMORA_VERSION_PATCH)

/* The file to pass to dlopen(): the library's soname. */
#define VELMORA_LIBRARY_SONAME "libVelmoraNative.so.0"

#if defined(__GNUC__)
#define VELMORA_EXTERN __attribute__((visibility("default")))
#else
#define VELMORA_EXTERN
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Builds the library's objects: reads the content resource
 * "velmora/content.json" from the folder of the library's real file (any
 * symbolic links to the library resolved), loads the saved practice from
 * $XDG_DATA_HOME/app.velmora.mac/practice.json (XDG_DATA_HOME defaults to
 * ~/.local/share and is created if missing), and puts the tray item up.
 * Only the first successful call does anything; later calls, from any
 * thread, return at once.
 *
 * When the content resource is missing or unreadable, or the data folder
 * cannot be had, it shows an alert in the user's language (without a
 * desktop: three lines on standard error) and ends the process with a
 * non-zero status.
 *
 * A second instance writes nothing and does not return. On a desktop, when
 * another process of the session already runs the library, it asks that
 * one to come forward and ends this process with status 0 (its exit
 * handlers run, as when the user quits). Elsewhere, when another process
 * keeps the same data folder, it says that Velmora is already running, as
 * the alert above, and ends this process with a non-zero status.
 *
 * A program started at login through the autostart entry the library
 * writes (which sets VELMORA_LOGIN_LAUNCH=1 in its environment) comes up
 * with the pond hidden, waiting in the tray.
 */
VELMORA_EXTERN void VelmoraStart(void);

/*
 * Records one moment of noticing for a topic, such as "smoking", today.
 * `topicID` is a NUL-terminated UTF-8 string owned by the caller and only
 * read during the call. A topic that is not among the user's selected
 * topics is refused, and the settings panel shows that nothing was saved.
 * A null `topicID` is ignored. Without a successful start it does nothing.
 */
VELMORA_EXTERN void VelmoraNotice(const char* topicID);

/*
 * Takes the oldest undelivered event, a JSON text such as
 * {"version":1,"kind":"practice","payload":"<snapshot as a JSON string>"}.
 * Each event carries the complete state, so only the newest one is kept:
 * several changes between two calls give one event.
 *
 * Returns a NUL-terminated UTF-8 string that the caller owns and must
 * release with VelmoraFree(), or null when there is no event (or no
 * successful start).
 */
VELMORA_EXTERN char* VelmoraCopyEvent(void);

/*
 * Releases a string returned by VelmoraCopyEvent(). Null is allowed. Runs on
 * the calling thread and never waits for the library.
 */
VELMORA_EXTERN void VelmoraFree(char* event);

/*
 * The width of the pond window's content, in points, or 780 when there is no
 * pond window.
 */
VELMORA_EXTERN float VelmoraContentWidth(void);

/* 1 while the pond is shown to the user, otherwise 0. */
VELMORA_EXTERN int32_t VelmoraIsPondVisible(void);

/*
 * 1 while the pond takes pointer, wheel and navigation input: it is shown,
 * the application is active, the pond window has the keyboard focus, the
 * settings panel is hidden, and the window is neither minimized nor
 * changing to or from full screen. Otherwise 0.
 */
VELMORA_EXTERN int32_t VelmoraIsPondInteractive(void);

/*
 * The last pointer position over the pond: x from 0 at the left edge of its
 * content to 1 at the right edge, y from 0 at the bottom to 1 at the top;
 * outside the content below 0 or above 1. Reading does not reset it.
 */
VELMORA_EXTERN void VelmoraReadPointer(float* x, float* y);

/*
 * The pointer button: `down` is 1 when a press happened since the last call,
 * `up` is 1 when a release did, `held` is 1 while the button is held now.
 * The call consumes `down` and `up`; `held` stays as it is.
 */
VELMORA_EXTERN void VelmoraReadPointerButtons(int32_t* down, int32_t* held, int32_t* up);

/*
 * The scrolling over the pond since the last call, in points. The call
 * resets it to zero.
 */
VELMORA_EXTERN void VelmoraReadScroll(float* dx, float* dy);

/*
 * The direction the held navigation keys (W A S D and the arrow keys)
 * point, each component from -1 to 1 and of length 1 when any is held;
 * zeros while the pond does not take input (see VelmoraIsPondInteractive()).
 * Reading does not reset it.
 */
VELMORA_EXTERN void VelmoraReadNavigation(float* dx, float* dy);

/*
 * The types of the functions above, for programs that load the library
 * with dlopen() and look the functions up by name with dlsym().
 */
typedef void (*VelmoraStartFunction)(void);
typedef void (*VelmoraNoticeFunction)(const char* topicID);
typedef char* (*VelmoraCopyEventFunction)(void);
typedef void (*VelmoraFreeFunction)(char* event);
typedef float (*VelmoraContentWidthFunction)(void);
typedef int32_t (*VelmoraIsPondVisibleFunction)(void);
typedef int32_t (*VelmoraIsPondInteractiveFunction)(void);
typedef void (*VelmoraReadPointerFunction)(float* x, float* y);
typedef void (*VelmoraReadPointerButtonsFunction)(int32_t* down, int32_t* held, int32_t* up);
typedef void (*VelmoraReadScrollFunction)(float* dx, float* dy);
typedef void (*VelmoraReadNavigationFunction)(float* dx, float* dy);

#ifdef __cplusplus
}
#endif

#endif /* VELMORA_VELMORA_H */
