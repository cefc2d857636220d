# Puts style and script into the page and writes the page as C++, cut where the job goes in.
#
# cmake -DFOLDER=tools/show -DOUT=ShowPageParts.cpp -P EmbedPage.cmake

# The form that a page's policy wants a checksum in; CMake only knows the hexadecimal one.
function(base64_of_hex hex result)
    set(digits "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
    set(text "")
    string(LENGTH "${hex}" length)
    foreach(place RANGE 0 ${length} 6)
        string(SUBSTRING "${hex}" ${place} 6 group)
        string(LENGTH "${group}" size)
        if(size EQUAL 0)
            break()
        endif()
        string(SUBSTRING "${group}000000" 0 6 padded)
        math(EXPR bits "0x${padded}")
        math(EXPR count "${size} * 4 / 6")
        foreach(index RANGE 0 ${count})
            math(EXPR digit "(${bits} >> (18 - 6 * ${index})) & 63")
            if(index LESS 4)
                string(SUBSTRING "${digits}" ${digit} 1 letter)
                string(APPEND text "${letter}")
            endif()
        endforeach()
    endforeach()
    math(EXPR rest "${length} % 6")
    if(rest EQUAL 2)
        string(APPEND text "==")
    elseif(rest EQUAL 4)
        string(APPEND text "=")
    endif()
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# Semicolons and brackets of a text stay as they are only in what is read as hexadecimal digits.
function(hex_of_text text result)
    file(WRITE ${OUT}.part "${text}")
    file(READ ${OUT}.part hex HEX)
    file(REMOVE ${OUT}.part)
    set(${result} "${hex}" PARENT_SCOPE)
endfunction()

function(replace_in_hex hex placeholder replacement result)
    hex_of_text("${placeholder}" wanted)
    string(REPLACE "${wanted}" "${replacement}" hex "${hex}")
    set(${result} "${hex}" PARENT_SCOPE)
endfunction()

# Its text and its checksum.
macro(put name file)
    file(READ ${FOLDER}/${file} content HEX)
    file(SHA256 ${FOLDER}/${file} checksum)
    base64_of_hex(${checksum} checksum)
    hex_of_text("${checksum}" checksum)
    replace_in_hex("${page}" "@${name}_HASH@" "${checksum}" page)
    replace_in_hex("${page}" "@${name}@" "${content}" page)
endmacro()

file(READ ${FOLDER}/page.html page HEX)
put(STYLE style.css)
put(SCRIPT script.js)

hex_of_text("@JOB@" mark)
string(FIND "${page}" "${mark}" place)
string(LENGTH "${mark}" length)
math(EXPR behind "${place} + ${length}")
string(SUBSTRING "${page}" 0 ${place} head)
string(SUBSTRING "${page}" ${behind} -1 tail)

function(array_of_hex name hex result)
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${hex}")
    string(REGEX REPLACE "((......,){24})" "\\1\n" bytes "${bytes}")
    set(${result} "constexpr char ${name}[] = {\n${bytes}\n};\n" PARENT_SCOPE)
endfunction()

array_of_hex(head "${head}" head)
array_of_hex(tail "${tail}" tail)
file(WRITE ${OUT} "// Made by tools/show/EmbedPage.cmake.
#include \"tools/ShowPageParts.h\"

namespace JobParser::Tool
{
namespace
{
${head}
${tail}
} // namespace

const std::string_view showPageHead(head, sizeof head);
const std::string_view showPageTail(tail, sizeof tail);

} // namespace JobParser::Tool
")
