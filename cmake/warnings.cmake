# The warnings that all of our targets are built with; errors where a preset asks for it.
option(TARVANE_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)

add_library(tarvane_warnings INTERFACE)
target_compile_options(tarvane_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wcast-align -Wcast-qual -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference
    -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough -Wswitch-enum -Wundef
    $<$<BOOL:${TARVANE_WARNINGS_AS_ERRORS}>:-Werror>)
