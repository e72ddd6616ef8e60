# Every target of ours compiles with these; a warning is an error unless a
# packager whose compiler warns of more turns that off.
option(VELMORA_WERROR "Treat compiler warnings as errors" ON)
set(VELMORA_WERROR_FLAG $<$<BOOL:${VELMORA_WERROR}>:-Werror>)

add_library(VelmoraWarnings INTERFACE)
target_compile_options(VelmoraWarnings INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wconversion
    -Wsign-conversion
    -Wnon-virtual-dtor
    -Woverloaded-virtual
    -Wold-style-cast
    -Wcast-qual
    -Wformat=2
    -Wimplicit-fallthrough
    ${VELMORA_WERROR_FLAG}
)
