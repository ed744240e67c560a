# The Debian packages that tools/package makes: the program, and what embedding the engine needs.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL program development)
set(CPACK_PACKAGE_CONTACT "The Tarvane authors <authors@tarvane.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian_files.cmake)
set(CPACK_TARVANE_SOURCES ${PROJECT_SOURCE_DIR})

# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME tarvane)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS libcanberra0)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "copy and move files with progress and questions
Transfers files, trees, links and tracks of audio CDs at a prompt or in two
panes on a full screen, shows how far it is, asks about names that are taken,
and leaves no half-written file behind when it is canceled.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtarvane-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "file-transfer engine for file managers
The engine of the program tarvane as a static library, with headers, a CMake
package and pkg-config modules. It copies and moves files, trees, links and
tracks of audio CDs on a thread while another one watches and answers.")
include(CPack)
