#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "tests/support/ZipBytes.h"

namespace JobParser::Worker
{

/// An XPS document of pages of 480 by 960 units, of which 96 make an inch, one for each content.
inline std::string xpsOf(std::initializer_list<std::string_view> contents)
{
    constexpr std::string_view schema = "http://schemas.microsoft.com/xps/2005/06";
    const std::string space = " xmlns=\"" + std::string(schema) + "\">";
    std::string pages;
    ZipBytes package;
    int number = 0;
    for (const std::string_view content : contents) {
        const std::string name = "page" + std::to_string(++number) + ".fpage";
        pages += "<PageContent Source=\"" + name + "\"/>";
        package.part(name, "<FixedPage Width=\"480\" Height=\"960\"" + space + std::string(content) +
                               "</FixedPage>");
    }
    return package
        .part("_rels/.rels",
              "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
              "<Relationship Id=\"r\" Target=\"/doc.fdseq\" Type=\"" +
                  std::string(schema) + "/fixedrepresentation\"/></Relationships>")
        .part("doc.fdseq", "<FixedDocumentSequence" + space +
                               "<DocumentReference Source=\"doc.fdoc\"/></FixedDocumentSequence>")
        .part("doc.fdoc", "<FixedDocument" + space + pages + "</FixedDocument>")
        .str();
}

} // namespace JobParser::Worker
