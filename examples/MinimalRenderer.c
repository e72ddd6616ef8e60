/*
 * A minimal rendering program for libVelmoraNative. Instead of drawing the
 * pond it prints it: it loads the library at run time, starts it, and from
 * a render thread of its own polls it 60 times a second as a real renderer
 * would, printing every new snapshot's topics and their growth. Each line
 * typed on standard input is a topic ID to notice. At the end of the input
 * it lets a few more frames run, so the last snapshot shows, and quits.
 *
 * Usage: MinimalRenderer [path of libVelmoraNative.so]
 */
#define _POSIX_C_SOURCE 200809L

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <velmora/velmora.h>

/* ---- The library's functions, looked up at run time ---- */

typedef struct {
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
} Velmora;

/* ISO C has no conversion from dlsym's object pointer to a function
   pointer; copying the bytes is the portable way POSIX allows. */
static int lookUp(void* library, const char* name, void* function, size_t size)
{
    void* symbol = dlsym(library, name);
    if (symbol == NULL) {
        /* Only the main thread loads, before the render thread starts. */
        fprintf(stderr, "MinimalRenderer: %s is missing: %s\n", name, dlerror()); /* NOLINT(concurrency-mt-unsafe) */
        return 0;
    }
    memcpy(function, &symbol, size);
    return 1;
}

#define LOOK_UP(library, velmora, field, name) lookUp(library, name, &(velmora)->field, sizeof((velmora)->field))

static int loadVelmora(const char* path, Velmora* velmora)
{
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "MinimalRenderer: cannot load %s: %s\n", path, dlerror()); /* NOLINT(concurrency-mt-unsafe) */
        return 0;
    }
    return LOOK_UP(library, velmora, start, "VelmoraStart") && LOOK_UP(library, velmora, notice, "VelmoraNotice")
        && LOOK_UP(library, velmora, copyEvent, "VelmoraCopyEvent")
        && LOOK_UP(library, velmora, freeEvent, "VelmoraFree")
        && LOOK_UP(library, velmora, contentWidth, "VelmoraContentWidth")
        && LOOK_UP(library, velmora, isPondVisible, "VelmoraIsPondVisible")
        && LOOK_UP(library, velmora, isPondInteractive, "VelmoraIsPondInteractive")
        && LOOK_UP(library, velmora, readPointer, "VelmoraReadPointer")
        && LOOK_UP(library, velmora, readPointerButtons, "VelmoraReadPointerButtons")
        && LOOK_UP(library, velmora, readScroll, "VelmoraReadScroll")
        && LOOK_UP(library, velmora, readNavigation, "VelmoraReadNavigation");
}

/* ---- Just enough JSON to read an event ---- */

typedef enum { JSON_NULL, JSON_BOOLEAN, JSON_NUMBER, JSON_STRING, JSON_ARRAY, JSON_OBJECT } JsonKind;

typedef struct JsonValue {
    JsonKind kind;
    double number;
    int boolean;
    char* string;
    /* Elements of an array, or values of an object with their keys. */
    struct JsonValue* items;
    char** keys;
    size_t count;
} JsonValue;

typedef struct {
    const char* next;
    int depth;
} JsonReader;

enum { maximumDepth = 32 };

static void freeJson(JsonValue* value)
{
    size_t i;
    for (i = 0; i < value->count; ++i) {
        freeJson(&value->items[i]);
        if (value->keys != NULL)
            free(value->keys[i]);
    }
    free(value->items);
    free(value->keys);
    free(value->string);
    memset(value, 0, sizeof *value);
}

static void skipSpace(JsonReader* reader)
{
    while (*reader->next == ' ' || *reader->next == '\t' || *reader->next == '\n' || *reader->next == '\r')
        ++reader->next;
}

static int hexDigits(const char* text, unsigned* code)
{
    int i;
    *code = 0;
    for (i = 0; i < 4; ++i) {
        char c = text[i];
        unsigned digit;
        if (c >= '0' && c <= '9')
            digit = (unsigned)(c - '0');
        else if (c >= 'a' && c <= 'f')
            digit = (unsigned)(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            digit = (unsigned)(c - 'A' + 10);
        else
            return 0;
        *code = *code * 16 + digit;
    }
    return 1;
}

static size_t putUtf8(char* out, unsigned code)
{
    if (code < 0x80) {
        out[0] = (char)code;
        return 1;
    }
    if (code < 0x800) {
        out[0] = (char)(0xC0 | (code >> 6));
        out[1] = (char)(0x80 | (code & 0x3F));
        return 2;
    }
    if (code < 0x10000) {
        out[0] = (char)(0xE0 | (code >> 12));
        out[1] = (char)(0x80 | ((code >> 6) & 0x3F));
        out[2] = (char)(0x80 | (code & 0x3F));
        return 3;
    }
    out[0] = (char)(0xF0 | (code >> 18));
    out[1] = (char)(0x80 | ((code >> 12) & 0x3F));
    out[2] = (char)(0x80 | ((code >> 6) & 0x3F));
    out[3] = (char)(0x80 | (code & 0x3F));
    return 4;
}

/* Reads a string at the opening quote into a new NUL-terminated buffer. An
   escape never produces more bytes than it takes, so the input's length
   bounds the output's. */
static char* readString(JsonReader* reader)
{
    const char* end = reader->next + 1;
    char* text;
    size_t length = 0;
    while (*end != '"') {
        if (*end == '\0')
            return NULL;
        end += (*end == '\\' && end[1] != '\0') ? 2 : 1;
    }
    text = malloc((size_t)(end - reader->next));
    if (text == NULL)
        return NULL;
    ++reader->next;
    while (*reader->next != '"') {
        char c = *reader->next++;
        unsigned code;
        if (c != '\\') {
            text[length++] = c;
            continue;
        }
        c = *reader->next++;
        switch (c) {
        case 'b':
            text[length++] = '\b';
            break;
        case 'f':
            text[length++] = '\f';
            break;
        case 'n':
            text[length++] = '\n';
            break;
        case 'r':
            text[length++] = '\r';
            break;
        case 't':
            text[length++] = '\t';
            break;
        case 'u':
            if (!hexDigits(reader->next, &code))
                goto malformed;
            reader->next += 4;
            if (code >= 0xD800 && code <= 0xDBFF) {
                unsigned low;
                if (reader->next[0] != '\\' || reader->next[1] != 'u' || !hexDigits(reader->next + 2, &low)
                    || low < 0xDC00 || low > 0xDFFF)
                    goto malformed;
                reader->next += 6;
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            }
            length += putUtf8(text + length, code);
            break;
        default:
            text[length++] = c;
            break;
        }
    }
    ++reader->next;
    text[length] = '\0';
    return text;
malformed:
    free(text);
    return NULL;
}

static int readValue(JsonReader* reader, JsonValue* value);

/* Appends one element (and its key, for objects) to a container. */
static int readMember(JsonReader* reader, JsonValue* container, int withKey)
{
    JsonValue* items = realloc(container->items, (container->count + 1) * sizeof *items);
    char* key = NULL;
    if (items == NULL)
        return 0;
    container->items = items;
    memset(&items[container->count], 0, sizeof *items);
    if (withKey) {
        char** keys = realloc(container->keys, (container->count + 1) * sizeof *keys);
        if (keys == NULL)
            return 0;
        container->keys = keys;
        skipSpace(reader);
        if (*reader->next != '"' || (key = readString(reader)) == NULL)
            return 0;
        skipSpace(reader);
        if (*reader->next++ != ':') {
            free(key);
            return 0;
        }
        keys[container->count] = key;
    }
    ++container->count;
    return readValue(reader, &items[container->count - 1]);
}

static int readContainer(JsonReader* reader, JsonValue* value, JsonKind kind, char close)
{
    value->kind = kind;
    ++reader->next;
    if (++reader->depth > maximumDepth)
        return 0;
    skipSpace(reader);
    if (*reader->next == close) {
        ++reader->next;
        --reader->depth;
        return 1;
    }
    for (;;) {
        if (!readMember(reader, value, kind == JSON_OBJECT))
            return 0;
        skipSpace(reader);
        if (*reader->next == close) {
            ++reader->next;
            --reader->depth;
            return 1;
        }
        if (*reader->next++ != ',')
            return 0;
    }
}

static int readValue(JsonReader* reader, JsonValue* value)
{
    skipSpace(reader);
    switch (*reader->next) {
    case '{':
        return readContainer(reader, value, JSON_OBJECT, '}');
    case '[':
        return readContainer(reader, value, JSON_ARRAY, ']');
    case '"':
        value->kind = JSON_STRING;
        value->string = readString(reader);
        return value->string != NULL;
    case 't':
    case 'f':
    case 'n': {
        const char* word = *reader->next == 't' ? "true" : *reader->next == 'f' ? "false" : "null";
        if (strncmp(reader->next, word, strlen(word)) != 0)
            return 0;
        reader->next += strlen(word);
        value->kind = *word == 'n' ? JSON_NULL : JSON_BOOLEAN;
        value->boolean = *word == 't';
        return 1;
    }
    default: {
        char* end;
        errno = 0;
        value->kind = JSON_NUMBER;
        value->number = strtod(reader->next, &end);
        if (end == reader->next || errno != 0)
            return 0;
        reader->next = end;
        return 1;
    }
    }
}

/* Parses a whole text; false (with nothing to free) when it is not JSON. */
static int parseJson(const char* text, JsonValue* value)
{
    JsonReader reader;
    reader.next = text;
    reader.depth = 0;
    memset(value, 0, sizeof *value);
    if (readValue(&reader, value)) {
        skipSpace(&reader);
        if (*reader.next == '\0')
            return 1;
    }
    freeJson(value);
    return 0;
}

static const JsonValue* member(const JsonValue* object, const char* key, JsonKind kind)
{
    size_t i;
    if (object->kind != JSON_OBJECT)
        return NULL;
    for (i = 0; i < object->count; ++i) {
        if (strcmp(object->keys[i], key) == 0)
            return object->items[i].kind == kind ? &object->items[i] : NULL;
    }
    return NULL;
}

/* ---- The pond, printed ---- */

/* An event is an envelope whose payload is the snapshot, itself JSON text. */
static void printSnapshot(const char* event, unsigned number)
{
    JsonValue envelope;
    JsonValue snapshot;
    const JsonValue* payload;
    const JsonValue* topics;
    const JsonValue* days;
    size_t i;
    if (!parseJson(event, &envelope)) {
        printf("event %u: not JSON\n", number);
        return;
    }
    payload = member(&envelope, "payload", JSON_STRING);
    if (payload == NULL || !parseJson(payload->string, &snapshot)) {
        printf("event %u: no snapshot in it\n", number);
        freeJson(&envelope);
        return;
    }
    topics = member(&snapshot, "topics", JSON_ARRAY);
    days = member(&snapshot, "daysLabel", JSON_STRING);
    printf("snapshot %u: %s\n", number, days != NULL ? days->string : "");
    for (i = 0; topics != NULL && i < topics->count; ++i) {
        const JsonValue* id = member(&topics->items[i], "id", JSON_STRING);
        const JsonValue* moments = member(&topics->items[i], "moments", JSON_NUMBER);
        const JsonValue* growth = member(&topics->items[i], "growthMoments", JSON_NUMBER);
        printf("  %-18s moments %4.0f  growth %2.0f/14\n", id != NULL ? id->string : "?",
            moments != NULL ? moments->number : 0.0, growth != NULL ? growth->number : 0.0);
    }
    fflush(stdout);
    freeJson(&snapshot);
    freeJson(&envelope);
}

typedef struct {
    int32_t visible;
    int32_t interactive;
    float width;
} PondView;

typedef struct {
    const Velmora* velmora;
    atomic_int running;
} RenderThread;

/* One frame's polling: what a renderer reads before it draws. */
static void renderFrame(const Velmora* velmora, PondView* shown, unsigned* snapshots)
{
    /* A renderer would move its camera and react to clicks with these. */
    float x = 0;
    float y = 0;
    float scrollX = 0;
    float scrollY = 0;
    float navigationX = 0;
    float navigationY = 0;
    int32_t down = 0;
    int32_t held = 0;
    int32_t up = 0;
    PondView now;
    char* event = NULL;

    velmora->readPointer(&x, &y);
    velmora->readPointerButtons(&down, &held, &up);
    velmora->readScroll(&scrollX, &scrollY);
    velmora->readNavigation(&navigationX, &navigationY);
    now.width = velmora->contentWidth();
    now.visible = velmora->isPondVisible();
    now.interactive = velmora->isPondInteractive();
    if (now.visible != shown->visible || now.interactive != shown->interactive || now.width != shown->width) {
        printf("pond: %s, %s, %.0f points wide\n", now.visible ? "shown" : "hidden",
            now.interactive ? "interactive" : "not interactive", (double)now.width);
        fflush(stdout);
        *shown = now;
    }
    if (down)
        printf("pointer pressed at %.2f, %.2f\n", (double)x, (double)y);

    event = velmora->copyEvent();
    if (event != NULL) {
        printSnapshot(event, ++*snapshots);
        velmora->freeEvent(event);
    }
}

static void* render(void* argument)
{
    RenderThread* thread = argument;
    const long frame = 1000000000L / 60;
    PondView shown = {-1, -1, -1.0f};
    unsigned snapshots = 0;
    struct timespec due;
    clock_gettime(CLOCK_MONOTONIC, &due);
    while (atomic_load(&thread->running)) {
        renderFrame(thread->velmora, &shown, &snapshots);
        /* Absolute deadlines keep the rate at 60 whatever a frame costs. */
        due.tv_nsec += frame;
        if (due.tv_nsec >= 1000000000L) {
            due.tv_nsec -= 1000000000L;
            ++due.tv_sec;
        }
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, NULL) == EINTR) { }
    }
    return NULL;
}

int main(int argc, char** argv)
{
    const char* path = argc > 1 ? argv[1] : VELMORA_LIBRARY_SONAME;
    Velmora velmora;
    RenderThread thread;
    pthread_t renderer;
    char* line = NULL;
    size_t capacity = 0;
    const struct timespec lastFrames = {0, 500000000L};

    if (!loadVelmora(path, &velmora))
        return EXIT_FAILURE;
    velmora.start();

    thread.velmora = &velmora;
    atomic_init(&thread.running, 1);
    if (pthread_create(&renderer, NULL, render, &thread) != 0) {
        fprintf(stderr, "MinimalRenderer: cannot start the render thread\n");
        return EXIT_FAILURE;
    }

    while (getline(&line, &capacity, stdin) != -1) {
        line[strcspn(line, "\r\n")] = '\0';
        if (line[0] == '\0')
            continue;
        printf("noticing %s\n", line);
        fflush(stdout);
        velmora.notice(line);
    }
    free(line);

    nanosleep(&lastFrames, NULL);
    atomic_store(&thread.running, 0);
    pthread_join(renderer, NULL);
    return EXIT_SUCCESS;
}
