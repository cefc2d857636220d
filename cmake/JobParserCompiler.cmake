# How everything is compiled: hidden symbols, strict warnings, no build path in what is made.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# __FILE__ names a source from the root on, so that log messages tell nothing of the build machine.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)

# Jobs may be larger than 2 GiB where a long has 32 bits, too.
add_compile_definitions(_FILE_OFFSET_BITS=64)

# The x87 unit carries more digits than a float or a double has, so that sums would differ from those elsewhere.
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|i.86)$")
    add_compile_options(-msse2 -mfpmath=sse)
endif()

add_library(JobParserWarnings INTERFACE)
target_compile_options(JobParserWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${JOBPARSER_WERROR}>:-Werror>)

if(JOBPARSER_SANITIZE)
    add_compile_options(-fsanitize=${JOBPARSER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${JOBPARSER_SANITIZE})
endif()
if(JOBPARSER_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "JOBPARSER_FUZZ needs clang: cmake --preset fuzz")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
