#pragma once

#include "worker/JobFacts.h"

namespace JobParser::Worker
{

class BodyReader;

/// The size that the comments at the beginning of a PostScript job state, as in `%%DocumentMedia: A4 595
/// 842`; 0 by 0 if they state none. Reads from the start of the body and leaves the reader there.
PageSize documentMedia(BodyReader& reader);

} // namespace JobParser::Worker
