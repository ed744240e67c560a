# What `cmake --install` puts below the GNU directories, as two components: the program, and what a
# program needs that embeds the engine. Paths in it are relative, so what is installed may be moved.
include(CMakePackageConfigHelpers)
set(TARVANE_CMAKE_FILES ${CMAKE_INSTALL_LIBDIR}/cmake/tarvane)

file(GLOB COMMAND_PAGES CONFIGURE_DEPENDS docs/*.1)
install(TARGETS tarvane COMPONENT program)
install(FILES ${COMMAND_PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
install(FILES completions/tarvane.bash RENAME tarvane COMPONENT program
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/_tarvane COMPONENT program
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)

file(GLOB LIBRARY_PAGES CONFIGURE_DEPENDS docs/*.3)
install(TARGETS tarvane_engine tarvane_host tarvane_engine_with_host EXPORT tarvane
        ARCHIVE COMPONENT development)
install(FILES engine/tarvanetransfer.h engine/tarvaneops.h engine/tarvanepane.h engine/ring_sound.h
              host/completion_bell.h
        DESTINATION ${TARVANE_INCLUDES} COMPONENT development)
install(FILES ${LIBRARY_PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)

install(EXPORT tarvane FILE tarvane-targets.cmake NAMESPACE tarvane::
        DESTINATION ${TARVANE_CMAKE_FILES} COMPONENT development)
# The interface may still change from one 0.x to the next.
write_basic_package_version_file(tarvane-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES cmake/tarvane-config.cmake ${PROJECT_BINARY_DIR}/tarvane-config-version.cmake
        DESTINATION ${TARVANE_CMAKE_FILES} COMPONENT development)

set(TARVANE_PKGCONFIG_FILES ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH HEADERS ${TARVANE_PKGCONFIG_FILES} ${CMAKE_INSTALL_FULL_INCLUDEDIR}/tarvane)
configure_file(cmake/tarvane.pc.in tarvane.pc @ONLY)
configure_file(cmake/tarvane-host.pc.in tarvane-host.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarvane.pc ${PROJECT_BINARY_DIR}/tarvane-host.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
