#pragma once
// One text for everything a host can observe of a parse: the tree (every node's kind, order,
// name, attributes in order, value and text, and its parent link), the document's fields, its
// DTD model and parsed entities, the parser's external entities, the error list and the
// exception. Two reading paths agree when their dumps are equal. Shared by the differential
// fuzz target and the corpus test.
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "vx/vx.h"

namespace dump {

inline void Text(std::string& out, const vx::CVelStrW& text) {
    out += '"';
    for (int i = 0; i < text.GetLength(); ++i) {
        const char16_t unit = text[i];
        if (unit >= 0x20 && unit < 0x7F && unit != u'"' && unit != u'\\') {
            out += static_cast<char>(unit);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(unit));
            out += escaped;
        }
    }
    out += '"';
}

inline void Line(std::string& out, int depth, const char* label) {
    out.append(static_cast<std::size_t>(depth) * 2, ' ');
    out += label;
}

inline void Nodes(std::string& out, const vx::CXmlListContainer& nodes, int depth);

inline void Element(std::string& out, const vx::CXmlElement& element, int depth) {
    Line(out, depth, "element ");
    Text(out, element.GetName());
    out += '\n';
    for (int i = 0; i < element.GetAttCount(); ++i) {
        const vx::CXmlAttribute& attribute = element.GetAttAt(i);
        Line(out, depth + 1, attribute.GetParent() == &element ? "@" : "@(orphan)");
        Text(out, attribute.GetName());
        out += '=';
        Text(out, attribute.GetValue());
        out += '\n';
    }
    Nodes(out, element.GetChildren(), depth + 1);
}

inline void Nodes(std::string& out, const vx::CXmlListContainer& nodes, int depth) {
    for (int i = 0; i < nodes.GetSize(); ++i) {
        const vx::CXmlBaseObject* node = nodes.GetAt(i);
        if (node->GetParent() != &nodes) Line(out, depth, "(orphan)\n");
        switch (node->GetClassType()) {
            case vx::eXmlElementType:
                Element(out, *static_cast<const vx::CXmlElement*>(node), depth);
                break;
            case vx::eXmlListContainerType:
                Line(out, depth, "container\n");
                Nodes(out, *static_cast<const vx::CXmlListContainer*>(node), depth + 1);
                break;
            default:
                Line(out, depth, "kind ");
                out += std::to_string(node->GetClassType()) + ' ';
                Text(out, static_cast<const vx::CXmlTextObject*>(node)->GetText());
                out += '\n';
                break;
        }
    }
}

inline void Errors(std::string& out, const vx::CParseErrorList& errors) {
    for (int i = 0; i < errors.GetSize(); ++i) {
        const vx::CParseError& error = errors.GetAt(i);
        out += "error " + std::to_string(error.GetErrCode()) + " level " +
               std::to_string(error.GetErrLevel()) + " at " +
               (error.HasPosition()
                    ? std::to_string(error.GetLine()) + ':' + std::to_string(error.GetColumn())
                    : std::string("-")) +
               ' ';
        Text(out, error.GetErrMsg());
        out += '\n';
    }
}

inline void Document(std::string& out, const vx::CXmlDocument& document, const vx::CParse& parser) {
    out += "version ";
    Text(out, document.GetVersion());
    out += "\nencoding ";
    Text(out, document.GetEncoding());
    out += "\nstandard ";
    Text(out, document.GetStandard());
    out += "\nreturn code ";
    Text(out, document.GetRetCode());
    out += "\ndtd ";
    Text(out, document.GetDtd().getName());
    Text(out, document.GetDtd().getExternalID().getSystemLiteral());
    Text(out, document.GetDtd().getExternalID().getPublicLiteral());
    out += "\nprolog\n";
    Nodes(out, document.GetPrologContent(), 1);
    out += "root\n";
    Element(out, document.GetRootElement(), 1);
    out += "epilog\n";
    Nodes(out, document.GetEpilogContent(), 1);
    // The parsed-entity map has no listing of its own: the parser's external entities name it.
    for (const auto& [name, entity] : parser.GetDtd()->getExternalGEContents()) {
        out += "external entity ";
        Text(out, name);
        out += entity ? " with content\n" : " without content\n";
        if (const vx::CXmlParsedEntity* parsed = document.GetParsedEntity(name)) {
            Line(out, 1, "parsed entity\n");
            Nodes(out, parsed->GetContent(), 2);
        }
    }
    Errors(out, document.GetErrList());
}

// Parses text (read from fileName, when not empty) with the single-pass reader on or off and
// dumps what came out; the setting is on again afterwards.
inline std::string ParseAndDump(const vx::CVelStrW& text, bool singlePass,
                                const vx::CVelStr& fileName = vx::CVelStr()) {
    std::string out;
    vx::SetSinglePassReading(singlePass);
    try {
        vx::CParse parser;
        const std::unique_ptr<vx::CXmlDocument> document(parser.ParseForBuf(text, fileName));
        Document(out, *document, parser);
    } catch (const std::exception& error) {
        out += std::string("exception ") + error.what() + '\n';
    }
    vx::SetSinglePassReading(true);
    return out;
}

}  // namespace dump
