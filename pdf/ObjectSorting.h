#pragma once

#include "pdf/Value.h"

namespace Pdf::Parser
{

struct Token;
class ValueTape;

/// Where an object of the file goes.
enum class Destination { Dropped, Embeddable, PageNodes, Pages, Catalog, Trailers };

/// Where the object with this value goes.
Destination destinationOf(const Value& value);

/// What is known of an object before it is built. Valid as long as the tape stays as it is.
struct ObjectFacts {
    const Token* type = nullptr;   ///< The value under this key, null if there is none.
    const Token* length = nullptr; ///< The same.
    bool mayBeKept = false;        ///< True in doubt; otherwise the object need not even be built.
    bool isEmbeddable = false; ///< Of a value that is a usual one; see Lexer. False in doubt, too. A stream
                               ///< behind a dictionary may change it.
};

ObjectFacts factsOf(const ValueTape& tape);

} // namespace Pdf::Parser
