#pragma once
// Expansion of the references of an attribute value, which needs the document's general
// entities and so lives with the parser.
#include "vx/text/VelStr.h"

namespace vx {

class CXmlDtd;

// Replaces every reference of text: character references, the five predefined entities and
// the internal general entities of dtd (may be null). A replacement text is not scanned again.
// False, with result untouched and a log line, for an entity that is not declared (external
// entities count as undeclared) or a reference without ";".
bool ConvertReferenceForString(CVelStrW& result, const CVelStrW& text, const CXmlDtd* dtd);

}  // namespace vx
