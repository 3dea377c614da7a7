#pragma once
// Helpers shared by the GetSource and ConvertReturnCode members of the node classes.
#include <string_view>

#include "vx/dom/XmlBaseObject.h"

namespace vx::output {

inline void AppendLiteral(CVelStringBuffer<CVelStrW>& out, std::u16string_view text) {
    out.Append(text.data(), static_cast<int>(text.size()));
}

// Where a failed line-end conversion is reported from.
struct Site {
    const char* unit;
    int line;
    const char* function;
};

// text's line ends rewritten in place as lineEnd; a failure is logged from site and thrown as
// std::runtime_error("<function> : 改行コード変換エラー"). The chain of line-end steps is
// described in text/LineEnds.cpp.
void ConvertLineEnds(CVelStrW& text, const CVelStrW& lineEnd, const Site& site);
// text as node writes it: with the document's line ends when node is in a document.
CVelStrW TextInDocument(const CXmlBaseObject& node, const CVelStrW& text, const Site& site);

// Attribute values: & " < blank tab CR LF become character references.
void AppendEscapedAttValue(CVelStringBuffer<CVelStrW>& out, const CVelStrW& text);
// Character data: & < > become character references.
void AppendEscapedCharData(CVelStringBuffer<CVelStrW>& out, const CVelStrW& text);
// CDATA section text: every "]]>" becomes "&#x5D;]>".
void AppendEscapedCDSect(CVelStringBuffer<CVelStrW>& out, const CVelStrW& text);

}  // namespace vx::output
