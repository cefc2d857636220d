# What the worker is made of. JOBPARSER_WORKER says whether it is built: by default if all of it is there.
# MuPDF and Ghostscript are used by this program alone, never by the library or the tool.
find_path(MUPDF_INCLUDE_DIR mupdf/fitz.h)
find_library(MUPDF_LIBRARY libmupdf.a)
find_library(MUPDF_THIRD_LIBRARY libmupdf-third.a)
find_path(GHOSTSCRIPT_INCLUDE_DIR ghostscript/iapi.h)
find_library(GHOSTSCRIPT_LIBRARY gs)
mark_as_advanced(MUPDF_INCLUDE_DIR MUPDF_LIBRARY MUPDF_THIRD_LIBRARY GHOSTSCRIPT_INCLUDE_DIR GHOSTSCRIPT_LIBRARY)
pkg_check_modules(jpeg QUIET IMPORTED_TARGET libjpeg)
pkg_check_modules(tiff QUIET IMPORTED_TARGET libtiff-4)
# MuPDF comes as an archive, which does not tell what it needs.
pkg_check_modules(mupdfNeeds QUIET IMPORTED_TARGET freetype2 harfbuzz libopenjp2 jbig2dec gumbo zlib libcrypto)
find_library(MUJS_LIBRARY mujs)
mark_as_advanced(MUJS_LIBRARY)

set(JOBPARSER_WORKER_FOUND OFF)
if(MUPDF_INCLUDE_DIR AND MUPDF_LIBRARY AND MUPDF_THIRD_LIBRARY AND MUJS_LIBRARY AND mupdfNeeds_FOUND
        AND GHOSTSCRIPT_INCLUDE_DIR AND GHOSTSCRIPT_LIBRARY AND jpeg_FOUND AND tiff_FOUND)
    set(JOBPARSER_WORKER_FOUND ON)
endif()
option(JOBPARSER_WORKER "Build the worker ZemJobProcessor (needs MuPDF and Ghostscript)" ${JOBPARSER_WORKER_FOUND})
if(NOT JOBPARSER_WORKER)
    return()
endif()
if(NOT JOBPARSER_WORKER_FOUND)
    message(FATAL_ERROR "JOBPARSER_WORKER needs libmupdf-dev and what it needs, libgs-dev, libjpeg-dev and "
        "libtiff-dev. ./dev setup installs them; -DJOBPARSER_WORKER=OFF builds all else.")
endif()

add_library(MuPdf::MuPdf INTERFACE IMPORTED)
target_include_directories(MuPdf::MuPdf INTERFACE ${MUPDF_INCLUDE_DIR})
target_link_libraries(MuPdf::MuPdf INTERFACE
    ${MUPDF_LIBRARY} ${MUPDF_THIRD_LIBRARY} ${MUJS_LIBRARY} PkgConfig::mupdfNeeds PkgConfig::jpeg m)
# The library is loaded when the first PostScript job comes.
add_library(Ghostscript::Headers INTERFACE IMPORTED)
target_include_directories(Ghostscript::Headers INTERFACE ${GHOSTSCRIPT_INCLUDE_DIR})
