// CXmlElement::ParseFromMemory belongs to the element but needs the parser, so it lives here.
#include <memory>

#include "vx/dom/XmlDocument.h"
#include "vx/dom/XmlElement.h"
#include "vx/parse/GrammarSteps.h"

namespace vx {

using namespace grammar;

// The declaration in front tells the parser that the buffer is already wide text.
bool CXmlElement::ParseFromMemory(const CVelStrW& text, CParseErrorList* errors) {
    CVelStrW buffer = Keywords().fragmentDecl;
    buffer += text;
    const std::unique_ptr<CXmlDocument> document(CParse::ParseForBuf(buffer));
    const CParseErrorList found = document->GetErrList();
    if (errors) *errors = found;
    if (!found.IsEmpty()) return false;
    *this = document->GetRootElement();
    return true;
}

}  // namespace vx
