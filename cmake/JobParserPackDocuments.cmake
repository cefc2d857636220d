# Runs before the staged files are packed: manual pages and changelogs are compressed, as Debian wants them, the
# same whenever it is done. An installation that is not packed keeps them as they are.
find_program(GZIP gzip REQUIRED)
file(GLOB_RECURSE documents
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/man*/*
    ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/doc/*/changelog)
foreach(document IN LISTS documents)
    execute_process(COMMAND ${GZIP} -9n ${document} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
