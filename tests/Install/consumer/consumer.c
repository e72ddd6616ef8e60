/* A program that uses libVelmoraNative as installed: it prints the version it
   was built with, what the library answers before and after its start, and
   ends. Built linked to the library, or loading it at run time. */
#include <stdio.h>
#include <string.h>

#include <velmora/velmora.h>

#ifdef CONSUMER_LOADS_AT_RUN_TIME
#include <dlfcn.h>

static int lookUp(void* library, const char* name, void* function, size_t size)
{
    void* symbol = dlsym(library, name);
    if (symbol == NULL)
        return 0;
    memcpy(function, &symbol, size);
    return 1;
}
#endif

int main(void)
{
    VelmoraStartFunction start = NULL;
    VelmoraContentWidthFunction contentWidth = NULL;
    VelmoraIsPondVisibleFunction isPondVisible = NULL;
#ifdef CONSUMER_LOADS_AT_RUN_TIME
    void* library = dlopen(VELMORA_LIBRARY_SONAME, RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "consumer: %s\n", dlerror());
        return 1;
    }
    if (!lookUp(library, "VelmoraStart", &start, sizeof start)
        || !lookUp(library, "VelmoraContentWidth", &contentWidth, sizeof contentWidth)
        || !lookUp(library, "VelmoraIsPondVisible", &isPondVisible, sizeof isPondVisible)) {
        fprintf(stderr, "consumer: a function is missing\n");
        return 1;
    }
#else
    start = VelmoraStart;
    contentWidth = VelmoraContentWidth;
    isPondVisible = VelmoraIsPondVisible;
#endif
    printf("version %s %d\n", VELMORA_VERSION_STRING, VELMORA_VERSION);
    printf("before %.0f %d\n", (double)contentWidth(), (int)isPondVisible());
    start();
    printf("after %.0f %d\n", (double)contentWidth(), (int)isPondVisible());
    return 0;
}
