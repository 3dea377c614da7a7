// From the productions to the document model. Comments and processing instructions do not
// survive into the tree, and every reference is replaced by its expansion.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>

#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlDocument.h"
#include "vx/parse/GrammarSteps.h"
#include "vx/platform/Package.h"

namespace vx {

using namespace grammar;

namespace {

// The nodes and the element depth of a content tree.
struct CTreeSize {
    std::int64_t nodes = 0;
    int depth = 0;
};

// Recurses no deeper than the limit: every content tree the parser keeps was checked by
// AppendEntity before it was built.
void Measure(const CXmlListContainer& nodes, int level, CTreeSize& size) {
    for (int i = 0; i < nodes.GetSize(); ++i) {
        ++size.nodes;
        const CXmlBaseObject* node = nodes.GetAt(i);
        if (node->GetClassType() != eXmlElementType) continue;
        size.depth = std::max(size.depth, level + 1);
        Measure(static_cast<const CXmlElement*>(node)->GetChildren(), level + 1, size);
    }
}

[[noreturn]] void ThrowUnknown(int line, const char* what) {
    vel::LogFailure("Parse", line, "CParse::SetElementContentInfo", "%s", what);
    throw std::runtime_error("CParse::SetElementContentInfo()");
}

}  // namespace

bool CParse::MakeXmlTree(CXmlDocument& document) {
    return RunPublic(__LINE__, "CParse::MakeXmlTree", [&] {
        CVelStrW value;
        if (m_xmlDecl.GetVersion(value)) document.SetVersion(value);
        if (m_xmlDecl.GetEncording(value)) document.SetEncoding(value);
        // GetStandard finds nothing in an accepted declaration, so standalone never arrives.
        if (m_xmlDecl.GetStandard(value)) document.SetStandard(value);
        // The single-pass reader has built the root in place already, but for what the
        // productions matched after it stopped.
        const bool built = m_rootRead && m_readTarget == &document.GetRootElement()
                               ? BuildReadTails()
                               : SetElementInfo(document.GetRootElement(), m_root);
        // The external parsed entities are offered to the host through the document.
        for (const auto& [name, entity] : m_dtd->getExternalGEContents()) {
            if (entity) document.SetParsedEntity(name, *entity);
        }
        return built;
    });
}

[[gnu::always_inline]] inline bool CParse::FillElement(CXmlElement& element,
                                                       CParseElement& source) {
    // Counts the levels that external entities add to the tree; see AppendEntity.
    CNestingScope level(*this);
    const CParseTag* tag = nullptr;
    switch (source.GetForm()) {
        case CParseElement::eEmptyElemTag:
            tag = source.GetEmptyElemTag();
            break;
        case CParseElement::eSTagContent:
            tag = source.GetSTag();
            break;
        case CParseElement::eNone:
            break;
    }
    if (!tag) {
        AddError(CParseError::eErrUnknownElemType);
        return false;
    }
    element.SetName(tag->GetName());
    // The tag refused duplicate names, so what SetAtt would search for is never there.
    element.ReserveAtt(tag->GetAttributes().GetSize());
    for (const CParseAttribute& attribute : tag->GetAttributes()) {
        CXmlAttribute& node = element.AppendAtt();
        node.SetName(attribute.GetName());
        node.SetValue(attribute.GetAttValue().GetValue());
    }
    if (source.GetForm() == CParseElement::eEmptyElemTag) return true;
    if (!SetElementContentInfo(&element.GetChildren(), source.GetContent())) return false;
    source.ClearContent();
    return true;
}

// In document order, as SetElementInfo would have come to each; the first failure ends the tree
// there.
bool CParse::BuildReadTails() {
    for (CReadTail& tail : m_readTails) {
        const CDepthAt inside(*this, tail.depth);
        if (!SetElementContentInfo(&tail.element->GetChildren(), tail.content.get())) {
            // The element is unfinished, and so is each around it: taken out, but the root.
            for (CXmlElement* element = tail.element; element != m_readTarget;) {
                auto* siblings = static_cast<CXmlListContainer*>(element->GetParent());
                element = static_cast<CXmlElement*>(siblings->GetParent());
                siblings->Erase(siblings->GetSize() - 1);
            }
            return false;
        }
        tail.content.reset();
    }
    return true;
}

// One node per item, adjacent text not merged. A failure leaves the tree cut where it
// happened, without the unfinished elements around it. Each item is released as soon as it
// is in the tree, so that the production tree shrinks while the document grows.
[[gnu::always_inline]] inline bool CParse::FillContent(CXmlListContainer* target,
                                                       CParseContent* content) {
    if (!content) return true;
    const CExpressionList& items = content->GetList();
    target->Reserve(target->GetSize() + items.GetSize());
    for (int i = 0; i < items.GetSize(); ++i) {
        if (!items[i]) continue;  // taken over by an earlier run
        if (!AppendItem(*target, *items[i])) return false;
        content->ReleaseChild(i);
    }
    return true;
}

bool CParse::SetElementInfo(CXmlElement& element, CParseElement& source) {
    return RunLogged(__LINE__, "CParse::SetElementInfo",
                     [&] { return FillElement(element, source); });
}

bool CParse::SetElementContentInfo(CXmlListContainer* target, CParseContent* content) {
    return RunLogged(__LINE__, "CParse::SetElementContentInfo",
                     [&] { return FillContent(target, content); });
}

bool CParse::AppendItem(CXmlListContainer& target, CAbstractExpression& item) {
    switch (item.GetClassType()) {
        case eParseCharData:
            AppendText<CXmlCData>(target, static_cast<CParseCharData&>(item).TakeCharData());
            return true;
        case eParseElement:
            return AppendElement(target, static_cast<CParseElement&>(item));
        case eParseComment:
        case eParsePI:
            return true;
        case eParseReference:
            return AppendReference(target, static_cast<const CParseReference&>(item));
        case eParseCDSect:
            AppendText<CXmlCDSect>(target, static_cast<CParseCDSect&>(item).TakeCData());
            return true;
        default:
            ThrowUnknown(__LINE__, "不明なクラス");
    }
}

// Filled where it lands, so that its nodes are made once; an element whose filling fails is
// taken out again, and the tree keeps only what was finished.
bool CParse::AppendElement(CXmlListContainer& target, CParseElement& source) {
    if (SetElementInfo(*target.PushBack(std::make_unique<CXmlElement>(nullptr)), source)) {
        return true;
    }
    target.Erase(target.GetSize() - 1);
    return false;
}

bool CParse::AppendReference(CXmlListContainer& target, const CParseReference& reference) {
    switch (reference.GetKind()) {
        case CParseReference::eCharRef: {
            // Shared without a string of its own first, which would only be garbage.
            char16_t unit = 0;
            const int length = reference.GetCharRef().ToUnits(unit);
            AppendText<CXmlCData>(target, m_texts.Get(&unit, length));
            return true;
        }
        case CParseReference::eEntityRef:
            return AppendEntity(target, reference.GetEntityRef().GetName());
        case CParseReference::eNone:
            break;
    }
    ThrowUnknown(__LINE__, "不明なエンティティタイプ\n");
}

// A predefined entity, then an internal general entity (its text as it stands, not parsed
// again), then an external parsed one (its content); anything else is code 62.
bool CParse::AppendEntity(CXmlListContainer& target, const CVelStrW& name) {
    if (const CVelStrW* text = FindPredefinedEntity(name, 0, name.GetLength())) {
        AppendText<CXmlCData>(target, *text);
    } else if (m_dtd->hasInternalGE(name)) {
        AppendText<CXmlCData>(target, m_dtd->getInternalGE(name));
    } else if (m_dtd->hasExternalGE(name)) {
        if (const CXmlParsedEntity* entity = m_dtd->getExternalGEContent(name)) {
            // Each reference copies the entity's tree, which may hold copies of others: its
            // depth counts where it lands and its nodes against the parse's allowance, so that
            // entities of entities can neither nest past the limit nor multiply without end.
            CTreeSize size;
            Measure(entity->GetContent(), 0, size);
            if (m_depth + size.depth > GetNestingLimit()) throw std::runtime_error("dummy");
            if (!ChargeExpansion(size.nodes * kNodeUnits)) {
                AddError(CParseError::eErrNoMemory);
                return false;
            }
            target.PushBack(entity->GetContent());
        }
    } else {
        AddError(CParseError::eErrUndefinedEntity);
        return false;
    }
    return true;
}

}  // namespace vx
