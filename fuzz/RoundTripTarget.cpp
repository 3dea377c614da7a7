// A document parsed without diagnostics, written with line feeds and parsed again, gives no
// diagnostics and the same tree, once adjacent text nodes are merged.
#include <cstdlib>
#include <memory>

#include "FuzzSupport.h"

namespace {

using Document = std::unique_ptr<vx::CXmlDocument>;

void Check(bool holds) {
    if (!holds) std::abort();
}

// The text of adjacent character-data nodes as one, empty text dropped: a reference expands
// to a node of its own, which the written text no longer shows.
class CTextRun {
  public:
    explicit CTextRun(const vx::CXmlListContainer& nodes) : m_nodes(nodes) {}

    // The next item at or after index: a run of text (element null) or another node.
    bool Next(int& index, vx::CVelStrW& text, const vx::CXmlBaseObject*& node) const {
        text.Clear();
        node = nullptr;
        while (index < m_nodes.GetSize()) {
            const vx::CXmlBaseObject* child = m_nodes.GetAt(index);
            if (child->GetClassType() != vx::eXmlCDataType) {
                if (!text.IsEmpty()) return true;
                node = child;
                ++index;
                return true;
            }
            text += static_cast<const vx::CXmlCData*>(child)->GetText();
            ++index;
        }
        return !text.IsEmpty();
    }

  private:
    const vx::CXmlListContainer& m_nodes;
};

void CompareElements(const vx::CXmlElement& a, const vx::CXmlElement& b);

void CompareNodes(const vx::CXmlBaseObject& a, const vx::CXmlBaseObject& b) {
    Check(a.GetClassType() == b.GetClassType());
    switch (a.GetClassType()) {
        case vx::eXmlElementType:
            CompareElements(static_cast<const vx::CXmlElement&>(a),
                            static_cast<const vx::CXmlElement&>(b));
            break;
        case vx::eXmlCDSectType:
            Check(static_cast<const vx::CXmlCDSect&>(a).GetText() ==
                  static_cast<const vx::CXmlCDSect&>(b).GetText());
            break;
        default:
            std::abort();  // the parser makes no other kind of child
    }
}

void CompareContent(const vx::CXmlListContainer& a, const vx::CXmlListContainer& b) {
    const CTextRun runsA(a), runsB(b);
    int indexA = 0, indexB = 0;
    vx::CVelStrW textA, textB;
    const vx::CXmlBaseObject *nodeA = nullptr, *nodeB = nullptr;
    for (;;) {
        const bool moreA = runsA.Next(indexA, textA, nodeA);
        Check(moreA == runsB.Next(indexB, textB, nodeB));
        if (!moreA) return;
        Check(textA == textB && (nodeA == nullptr) == (nodeB == nullptr));
        if (nodeA) CompareNodes(*nodeA, *nodeB);
    }
}

void CompareElements(const vx::CXmlElement& a, const vx::CXmlElement& b) {
    Check(a.GetName() == b.GetName());
    Check(a.GetAttCount() == b.GetAttCount());
    for (int i = 0; i < a.GetAttCount(); ++i) {
        Check(a.GetAttAt(i).GetName() == b.GetAttAt(i).GetName());
        Check(a.GetAttAt(i).GetValue() == b.GetAttAt(i).GetValue());
    }
    CompareContent(a.GetChildren(), b.GetChildren());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::RunInput([&] {
        const Document first(vx::CParse::ParseForBuf(fuzz::WideFromBytes(data, size)));
        if (!first->GetErrList().IsEmpty()) return;
        // The tree compared is the one written: its line ends become line feeds too.
        first->SetRetCode(vx::CVelStrW(u"\n"));
        first->ConvertReturnCode(vx::CVelStrW(u"\n"));
        vx::CVelStringBuffer<vx::CVelStrW> text;
        first->GetSource(text);
        const Document second(vx::CParse::ParseForBuf(text.ToString()));
        Check(second->GetErrList().IsEmpty());
        Check(first->GetVersion() == second->GetVersion());
        Check(first->GetEncoding() == second->GetEncoding());
        Check(first->GetDtd().getName() == second->GetDtd().getName());
        CompareElements(first->GetRootElement(), second->GetRootElement());
    });
    return 0;
}
