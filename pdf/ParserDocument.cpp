// What becomes of the objects of a file: they are sorted while it is read, and put together at its end.

#include <algorithm>
#include <type_traits>
#include <utility>
#include <variant>

#include "pdf/DocumentInfo.h"
#include "pdf/Lexer.h"
#include "pdf/Numbers.h"
#include "pdf/ObjectKeeper.h"
#include "pdf/ObjectSorting.h"
#include "pdf/PageAttributes.h"
#include "pdf/PageTree.h"
#include "pdf/Parser.h"
#include "pdf/TrailerNotFoundException.h"
#include "pdf/ValueTape.h"

namespace Pdf::Parser
{

std::shared_ptr<DocumentInfo> Parser::parse(bool walkPages)
{
    document = std::make_shared<DocumentInfo>();
    m_isFile = walkPages;
    parseValue<void>();
    chooseTrailer(walkPages);
    if (walkPages) {
        prepareTrailerForUpdate();
        completePages();
        document->clearEmbeddable();
    }
    return document;
}

void Parser::processObject(const unsigned long long& offset, const Object& object)
{
    keep(static_cast<std::int64_t>(offset), Object(object));
    m_keeper->finish();
}

void Parser::keep(std::int64_t offset, Object&& object)
{
    if (document == nullptr)
        document = std::make_shared<DocumentInfo>();
    const Reference reference = object.reference;
    maxObjectNumber = std::max(maxObjectNumber, reference.number);
    switch (destinationOf(object.value)) {
    case Destination::Dropped: break;
    case Destination::Embeddable:
        if (reference.generation == 0)
            document->removeEmbeddableText(reference.number);
        m_keeper->put(document->embeddable, std::move(object));
        break;
    case Destination::PageNodes: pageNodes[reference] = std::move(object.value); break;
    case Destination::Pages: m_keeper->put(document->pages, std::move(object)); break;
    case Destination::Catalog: document->catalog = std::move(object); break;
    case Destination::Trailers: trailers[offset] = std::move(object.value); break;
    }
}

void Parser::keepText(std::uint32_t number, std::string_view text)
{
    maxObjectNumber = std::max(maxObjectNumber, number);
    document->addEmbeddableText(number, text);
}

// The text of a summary has one trailer and points to none.
void Parser::chooseTrailer(bool walkPages)
{
    if (startxref == 0) {
        if (walkPages || trailers.size() != 1)
            throw PdfParserException("No startxref found in the document");
        document->trailer = trailers.begin()->second;
        return;
    }
    const auto place = trailers.find(startxref);
    if (place == trailers.end())
        throw TrailerNotFoundException(static_cast<int>(startxref));
    document->trailer = place->second;
}

void Parser::prepareTrailerForUpdate()
{
    Value& trailer = document->trailer;
    trailer["Prev"] = static_cast<double>(startxref);
    Value& size = trailer["Size"];
    if (toUnsigned32(std::get<double>(size)) <= maxObjectNumber)
        size = static_cast<double>(maxObjectNumber) + 1;
}

Reference Parser::findPageTree() const
{
    Value root = document->trailer["Root"];
    if (const auto* reference = std::get_if<Reference>(&root)) {
        if (*reference != document->catalog.reference)
            throw PdfParserException("Trailer root is not catalog");
        root = Value();
    }
    if (std::holds_alternative<None>(root))
        root = document->catalog.value;
    const auto tree = std::get<Reference>(root["Pages"]);
    if (!pageNodes.contains(tree))
        throw PdfParserException("Catalog pages not found in tree");
    return tree;
}

void Parser::completePages()
{
    const Reference tree = findPageTree();
    document->pages = PageTree(pageNodes, document->pages).walkPageTree(tree);
    PageAttributes attributes(*document, pageNodes);
    for (auto& [reference, page] : document->pages)
        attributes.complete(page);
}

} // namespace Pdf::Parser
