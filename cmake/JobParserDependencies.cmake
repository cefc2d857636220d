find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(Boost 1.81 REQUIRED)
find_package(simdjson REQUIRED)
find_package(ZLIB REQUIRED)
pkg_check_modules(re2 REQUIRED IMPORTED_TARGET re2)

# Its pkg-config file puts headers named like those of the system into the search path.
find_path(MINIZIP_INCLUDE_DIR minizip/unzip.h REQUIRED)
find_library(MINIZIP_LIBRARY minizip REQUIRED)
mark_as_advanced(MINIZIP_INCLUDE_DIR MINIZIP_LIBRARY)
add_library(minizip::minizip UNKNOWN IMPORTED)
set_target_properties(minizip::minizip PROPERTIES
    IMPORTED_LOCATION ${MINIZIP_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${MINIZIP_INCLUDE_DIR})

# Only the headers are used: the library is loaded when the first file is decrypted.
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
add_library(OpenSslHeaders INTERFACE IMPORTED)
target_include_directories(OpenSslHeaders INTERFACE ${OPENSSL_INCLUDE_DIR})

# Only the header is used: the library beside it is for wide characters and brings ICU along.
find_path(SIMPLEINI_INCLUDE_DIR SimpleIni.h REQUIRED)
mark_as_advanced(SIMPLEINI_INCLUDE_DIR)
add_library(SimpleIni::SimpleIni INTERFACE IMPORTED)
target_include_directories(SimpleIni::SimpleIni INTERFACE ${SIMPLEINI_INCLUDE_DIR})

# For programs only: these archives are not made for shared libraries.
find_library(RE2_ARCHIVE libre2.a REQUIRED)
find_library(MINIZIP_ARCHIVE libminizip.a REQUIRED)
find_library(ZLIB_ARCHIVE libz.a REQUIRED)
mark_as_advanced(RE2_ARCHIVE MINIZIP_ARCHIVE ZLIB_ARCHIVE)
