# Lets gcov see what forked children and hurried ends run: it writes its counters at exit, which
# _exit leaves out, and so does a signal that a program sends itself in its handler. Those of a
# program that a signal kills from outside are lost all the same.
add_library(tarvane_counters OBJECT ${CMAKE_CURRENT_LIST_DIR}/counters_before_exit.cpp)
link_libraries(tarvane_counters)
add_link_options(-Wl,--wrap=_exit -Wl,--wrap=raise)
