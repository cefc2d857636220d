include(CMakePackageConfigHelpers)

# Each component becomes a package, see JobParserPackages.cmake.
set(configDir ${CMAKE_INSTALL_LIBDIR}/cmake/JobParser)

install(TARGETS JobParser EXPORT JobParserTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT JobParserTargets NAMESPACE JobParser:: DESTINATION ${configDir} COMPONENT development)

configure_package_config_file(cmake/JobParserConfig.cmake.in ${PROJECT_BINARY_DIR}/JobParserConfig.cmake
    INSTALL_DESTINATION ${configDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/JobParserConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/JobParserConfig.cmake
    ${PROJECT_BINARY_DIR}/JobParserConfigVersion.cmake
    DESTINATION ${configDir}
    COMPONENT development)

# pkg-config finds the prefix from its own place, so that an installed tree can be moved.
file(RELATIVE_PATH prefixFromPc
    /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" prefixFromPc "${prefixFromPc}")
configure_file(cmake/jobparser.pc.in ${PROJECT_BINARY_DIR}/jobparser.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/jobparser.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

set(JOBPARSER_PYTHON_DIR lib/python3/dist-packages CACHE STRING "Where the Python module goes, from the prefix")
install(DIRECTORY python/jobparser DESTINATION ${JOBPARSER_PYTHON_DIR} COMPONENT python
    FILES_MATCHING PATTERN "*.py" PATTERN py.typed PATTERN __pycache__ EXCLUDE)

install(FILES docs/config.ini DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(FILES docs/schema/record.schema.json docs/schema/metadata.schema.json
    DESTINATION ${CMAKE_INSTALL_DATADIR}/jobparser/schema
    COMPONENT development)
install(FILES docs/man/JobParserC.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
install(FILES docs/man/ZemJobProcessor.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT worker)

if(TARGET jobparser)
    install(TARGETS jobparser RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
    install(FILES ${PROJECT_BINARY_DIR}/manual/jobparser.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
    install(FILES ${PROJECT_BINARY_DIR}/manual/jobparser
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        COMPONENT tool)
    install(FILES ${PROJECT_BINARY_DIR}/manual/_jobparser
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions
        COMPONENT tool)
endif()
if(TARGET ZemJobProcessor)
    install(TARGETS ZemJobProcessor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT worker)
endif()
