#include <string>
#include <utility>

#include "Commands.h"
#include "Document.h"
#include "Output.h"

namespace vxml {
namespace {

// Longer texts are cut to this many UTF-16 units and end in an ellipsis.
constexpr int kShownTextLength = 40;

bool IsBlank(const vx::CVelStrW& text) {
    for (int i = 0; i < text.GetLength(); ++i) {
        const char16_t ch = text[i];
        if (ch != u' ' && ch != u'\t' && ch != u'\n' && ch != u'\r') return false;
    }
    return true;
}

vx::CVelStrW Shortened(const vx::CVelStrW& text) {
    if (text.GetLength() <= kShownTextLength) return text;
    vx::CVelStrW cut = text.SubStr(0, kShownTextLength - 1);
    cut += u"…";
    return cut;
}

// Escaped as in JSON, so that one node stays on one line.
std::string Quoted(const vx::CVelStrW& text) {
    return JsonString(ToUtf8(Shortened(text)));
}

class Outline {
  public:
    void Document(const vx::CXmlDocument& document) {
        Declaration(document);
        Children(document.GetPrologContent(), 0);
        Element(document.GetRootElement(), 0);
        Children(document.GetEpilogContent(), 0);
    }

    const std::string& Text() const { return m_text; }

  private:
    void Declaration(const vx::CXmlDocument& document) {
        std::string line;
        const std::pair<const char*, vx::CVelStrW> values[] = {
            {"version", document.GetVersion()},
            {"encoding", document.GetEncoding()},
            {"standard", document.GetStandard()},
        };
        for (const auto& [name, value] : values) {
            if (!value.IsEmpty()) AppendPair(line, name, value);
        }
        if (!line.empty()) Line(0, "<?xml" + line + "?>");
    }

    void Element(const vx::CXmlElement& element, int depth) {
        std::string line = ToUtf8(element.GetName());
        for (int i = 0; i < element.GetAttCount(); ++i) {
            const vx::CXmlAttribute& attribute = element.GetAttAt(i);
            AppendPair(line, ToUtf8(attribute.GetName()), attribute.GetValue());
        }
        Line(depth, line);
        Children(element.GetChildren(), depth + 1);
    }

    static void AppendPair(std::string& line, const std::string& name, const vx::CVelStrW& value) {
        line += " " + name + "=" + Quoted(value);
    }

    void Line(int depth, const std::string& text) {
        m_text.append(2 * depth, ' ');
        m_text += text + "\n";
    }

    void Children(const vx::CXmlListContainer& children, int depth) {
        for (int i = 0; i < children.GetSize(); ++i) {
            Node(*children.GetAt(i), depth);
        }
    }

    void Node(const vx::CXmlBaseObject& node, int depth) {
        switch (node.GetClassType()) {
            case vx::eXmlElementType:
                Element(static_cast<const vx::CXmlElement&>(node), depth);
                break;
            case vx::eXmlCDataType: {
                const vx::CVelStrW text = static_cast<const vx::CXmlCData&>(node).GetText();
                if (!IsBlank(text)) Line(depth, Quoted(text));
                break;
            }
            case vx::eXmlCDSectType:
                Line(depth, "CDATA " + Quoted(static_cast<const vx::CXmlCDSect&>(node).GetText()));
                break;
            case vx::eXmlEntityType:
                Line(depth, ToUtf8(static_cast<const vx::CXmlEntity&>(node).GetText()));
                break;
            case vx::eXmlListContainerType:  // the content of an external entity
                Line(depth, "(external entity)");
                Children(static_cast<const vx::CXmlListContainer&>(node), depth + 1);
                break;
            default:
                Line(depth, "(node of kind " + std::to_string(node.GetClassType()) + ")");
        }
    }

    std::string m_text;
};

}  // namespace

int RunTree(const Options& options) {
    return ShowDocument(options, [](vx::CXmlDocument& document) {
        Outline outline;
        outline.Document(document);
        Write(stdout, outline.Text());
    });
}

}  // namespace vxml
