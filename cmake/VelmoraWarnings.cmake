# Every target of ours compiles with these; a warning is an error.
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
    -Werror
)
