# Lets gcov see what forked children and hurried ends run: it writes its counters at exit, which
# _exit leaves out. Those of a program that a signal kills are lost all the same.
add_library(tarvane_counters OBJECT ${CMAKE_CURRENT_LIST_DIR}/counters_before_exit.cpp)
link_libraries(tarvane_counters)
add_link_options(-Wl,--wrap=_exit)
