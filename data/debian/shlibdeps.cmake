# Run by CPack once the package's files are laid out, before they are packed:
# adds the libraries its programs link, as dpkg-shlibdeps names them, to
# Depends. CPack's own option does the same but also puts ldconfig calls into
# the maintainer scripts whenever a shared object lies under /usr/lib, here
# the program's private skin engine, which ldconfig never reads.
set(work "${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps")
file(REMOVE_RECURSE "${work}")
# dpkg-shlibdeps looks for debian/control; an empty one does.
file(WRITE "${work}/debian/control" "")

file(GLOB_RECURSE staged LIST_DIRECTORIES false "${CPACK_TEMPORARY_DIRECTORY}/*")
set(programs)
foreach(path IN LISTS staged)
    if(NOT IS_SYMLINK "${path}")
        file(READ "${path}" magic LIMIT 4 HEX)
        if(magic STREQUAL "7f454c46")
            list(APPEND programs "${path}")
        endif()
    endif()
endforeach()

execute_process(COMMAND dpkg-shlibdeps -O ${programs}
    WORKING_DIRECTORY "${work}"
    OUTPUT_VARIABLE found ERROR_VARIABLE problems RESULT_VARIABLE status
    OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT status EQUAL 0 OR NOT found MATCHES "^shlibs:Depends=(.+)$")
    message(FATAL_ERROR "dpkg-shlibdeps failed on ${programs}: ${problems}")
endif()
set(CPACK_DEBIAN_PACKAGE_DEPENDS "${CPACK_DEBIAN_PACKAGE_DEPENDS}, ${CMAKE_MATCH_1}")
file(REMOVE_RECURSE "${work}")
