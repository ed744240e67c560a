# Adds to each staged component what Debian wants of a package and nobody else: its licence, its
# changes, compressed pages and a library without what only a debugger reads.

# CHANGELOG.md in Debian's form. Each section is "## VERSION (DATE)" with items that begin with "-".
function(write_changes FILE)
    file(READ ${CPACK_TARVANE_SOURCES}/CHANGELOG.md CHANGES)
    string(REGEX MATCH "\n## ${CPACK_PACKAGE_VERSION} \\(([0-9-]+)\\)\n\n(.*)" ITEMS "${CHANGES}")
    execute_process(COMMAND date --utc --rfc-email --date ${CMAKE_MATCH_1}
                    OUTPUT_VARIABLE DATE OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE "\n## .*" "" ITEMS "${CMAKE_MATCH_2}")
    string(REGEX REPLACE "\n([^\n])" "\n  \\1" ITEMS "\n${ITEMS}")
    string(REPLACE "\n  - " "\n  * " ITEMS "${ITEMS}")
    set(VERSION ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
    file(WRITE ${FILE} "tarvane (${VERSION}) unstable; urgency=medium\n${ITEMS}\n"
         " -- ${CPACK_PACKAGE_CONTACT}  ${DATE}\n")
endfunction()

foreach(COMPONENT PROGRAM DEVELOPMENT)
    string(TOLOWER ${COMPONENT} STAGE)
    set(DOCUMENTS usr/share/doc/${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
    set(DOCUMENTS ${CPACK_TEMPORARY_DIRECTORY}/${STAGE}/${DOCUMENTS})
    configure_file(${CPACK_TARVANE_SOURCES}/cmake/debian_copyright ${DOCUMENTS}/copyright COPYONLY)
    write_changes(${DOCUMENTS}/changelog.Debian)
endforeach()

set(STAGES ${CPACK_TEMPORARY_DIRECTORY}/*/usr)
file(GLOB TEXTS ${STAGES}/share/man/man?/* ${STAGES}/share/doc/*/changelog.Debian)
execute_process(COMMAND gzip --best --no-name ${TEXTS} COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE ARCHIVES ${CPACK_TEMPORARY_DIRECTORY}/*.a)
execute_process(COMMAND strip --strip-debug --remove-section=.comment
                              --enable-deterministic-archives ${ARCHIVES}
                COMMAND_ERROR_IS_FATAL ANY)
