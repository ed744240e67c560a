# Lets gcov see what forked children and hurried ends run: it writes its counters at exit, which
# _exit leaves out, and so does a signal that a program sends itself in its handler. Those of a
# program that a signal kills from outside are lost all the same.
add_library(tarvane_counters OBJECT ${CMAKE_CURRENT_LIST_DIR}/counters_before_exit.cpp)
set_target_properties(tarvane_counters PROPERTIES POSITION_INDEPENDENT_CODE ON)
target_compile_definitions(tarvane_counters PRIVATE TARVANE_COUNTERS="${CMAKE_BINARY_DIR}/counters")
# Not in static libraries, which are installed and linked whole by programs that are not measured.
set(IS_LINKED $<NOT:$<STREQUAL:$<TARGET_PROPERTY:TYPE>,STATIC_LIBRARY>>)
link_libraries($<BUILD_INTERFACE:$<${IS_LINKED}:tarvane_counters>>)
add_link_options(-Wl,--wrap=_exit -Wl,--wrap=raise)
