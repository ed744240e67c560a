# tarvane::engine is the engine alone: the program defines the functions that tarvaneops.h,
# tarvanepane.h and ring_sound.h declare. tarvane::host is the engine with definitions of them.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/tarvane-targets.cmake)
