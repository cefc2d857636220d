# Debian packages, one a component of the installation: `./dev package`, or cpack in a build whose prefix is /usr.

set(JOBPARSER_MAINTAINER "JobParser developers <root@localhost>" CACHE STRING
    "Who answers for the packages, as NAME <ADDRESS>")

# What every package says.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME jobparser)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# Each has words of its own; these would stand before them.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT ${JOBPARSER_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 0)
# Folders of a package are readable to all, whatever the umask of who made it.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Dependencies on other libraries are read from what the binaries need.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Tells programs that are linked to the library, when they are packed, which package that is.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/JobParserPackDocuments.cmake)

set(noticesDir ${PROJECT_BINARY_DIR}/notices)

# write_notices(NAME PACKAGE...): the file of Debian that says whose code is in a package, with the notices of what
# our binary contains, as its package brings them.
function(write_notices name)
    set(text "JobParser ${PROJECT_VERSION}, package ${name}\n\n"
        "Copyright (C) 2026 JobParser developers\n"
        "Source: where this package came from; ask ${JOBPARSER_MAINTAINER}\n\n"
        "What it uses of others, and under which licences, is told by third-party.md beside this file.\n")
    foreach(package ${ARGN})
        set(notice /usr/share/doc/${package}/copyright)
        if(EXISTS ${notice})
            file(READ ${notice} said)
            string(APPEND text "\n---- Contained, from ${package} ----\n\n${said}")
        else()
            message(STATUS "No notice of ${package} in the package ${name}: ${notice} is not there")
        endif()
    endforeach()
    file(WRITE ${noticesDir}/${name}/copyright "${text}")
endfunction()

set(sameVersion "(= ${PROJECT_VERSION})")
set(libraryPackage libjobparser${PROJECT_VERSION_MAJOR})

# add_package(COMPONENT NAME SECTION SHORT LONG [FIELD VALUE]...): the fields are those of CPack's DEB generator. The
# field CONTAINS names the packages of Debian whose code is in the binary.
macro(add_package component name section short long)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${short}\n${long}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(fields ${ARGN})
    set(notices)
    while(fields)
        list(POP_FRONT fields field value)
        if(field STREQUAL CONTAINS)
            string(REPLACE " " ";" notices "${value}")
        else()
            set(CPACK_DEBIAN_${upper}_PACKAGE_${field} "${value}")
        endif()
    endwhile()
    # Everything that has a folder of its own there tells whose code is in it.
    write_notices(${name} ${notices})
    install(FILES docs/third-party.md ${noticesDir}/${name}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
        COMPONENT ${component} EXCLUDE_FROM_ALL)
    install(FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} RENAME changelog
        COMPONENT ${component} EXCLUDE_FROM_ALL)
endmacro()

set(CPACK_COMPONENTS_ALL)
# Everywhere libcrypto is loaded when the first encrypted job is read, so that no binary names it.
add_package(library ${libraryPackage} libs
    "${PROJECT_DESCRIPTION}"
    "This is the shared library, for programs in C++, C and other languages."
    RECOMMENDS libssl3
    CONTAINS "libsimdjson-dev libsimpleini-dev")
add_package(development libjobparser-dev libdevel
    "Headers of JobParser, which learns what a spooled print job is"
    "Headers, CMake package, pkg-config file, manual of the C interface, JSON\nschemas and a sample configuration."
    DEPENDS "${libraryPackage} ${sameVersion}"
    SHLIBDEPS OFF)
if(TARGET jobparser)
    # It opens the shared library by its path when it is to read JSON, and shares its types with it.
    add_package(tool jobparser utils
        "Tells what a spooled print job is, and rewrites it"
        "The command line tool of JobParser, with its manual page and completion for\nbash and zsh."
        DEPENDS "${libraryPackage} ${sameVersion}"
        RECOMMENDS libssl3
        SUGGESTS jobparser-worker
        CONTAINS "libre2-dev libminizip-dev zlib1g-dev libsimdjson-dev libsimpleini-dev libc6-dev")
endif()
if(TARGET ZemJobProcessor)
    add_package(worker jobparser-worker utils
        "Counts and converts the pages of print jobs for JobParser"
        "A process that JobParser asks for pages, paper and orientation. It contains\nMuPDF and uses Ghostscript, which are under the AGPL."
        DEPENDS libgs10 # Loaded when the first PostScript job comes.
        RECOMMENDS libssl3
        ENHANCES "jobparser, ${libraryPackage}"
        CONTAINS "libmupdf-dev libsimdjson-dev libsimpleini-dev")
endif()
add_package(python python3-jobparser python
    "Tells what a spooled print job is: Python module"
    "A typed module over the C interface of JobParser."
    DEPENDS "python3 (>= 3.10), ${libraryPackage} ${sameVersion}"
    ARCHITECTURE all
    SHLIBDEPS OFF)
# They compile the module when it comes, and remove that when it goes.
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/packages/postinst ${PROJECT_SOURCE_DIR}/cmake/packages/prerm)

include(CPack)
