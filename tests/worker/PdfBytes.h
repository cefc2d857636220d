#pragma once

#include <string>
#include <string_view>

namespace JobParser::Worker
{

/// A PDF of pages of 200 by 300 points, one for each content. `resources` are those of all pages. It has no
/// table of objects; readers make one.
inline std::string pdfOf(std::initializer_list<std::string_view> contents, std::string_view resources = "",
                         std::string_view objects = "")
{
    std::string kids;
    std::string pages;
    int number = 10;
    for (const std::string_view content : contents) {
        const std::string page = std::to_string(number);
        const std::string stream = std::to_string(number + 1);
        kids += page + " 0 R ";
        pages += page + " 0 obj << /Type /Page /Parent 2 0 R /MediaBox [0 0 200 300] /Contents " + stream +
                 " 0 R >> endobj\n" + stream + " 0 obj << /Length " + std::to_string(content.size()) +
                 " >> stream\n" + std::string(content) + "\nendstream endobj\n";
        number += 2;
    }
    return "%PDF-1.7\n1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj\n"
           "2 0 obj << /Type /Pages /Kids [" +
           kids + "] /Count " + std::to_string(contents.size()) + " /Resources << " + std::string(resources) +
           " >> >> endobj\n" + std::string(objects) + pages + "trailer << /Root 1 0 R >>\n%%EOF\n";
}

} // namespace JobParser::Worker
