// From the productions to the document model. Comments and processing instructions do not
// survive into the tree, and every reference is replaced by its expansion.
#include <stdexcept>

#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlDocument.h"
#include "vx/parse/Parse.h"

namespace vx {

namespace {

void AppendText(CXmlListContainer& target, const CVelStrW& text) {
    CXmlCData node(nullptr);
    node.SetText(text);
    target.PushBack(node);
}

void AppendCDSect(CXmlListContainer& target, const CVelStrW& text) {
    CXmlCDSect node(nullptr);
    node.SetText(text);
    target.PushBack(node);
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
        const bool built = SetElementInfo(document.GetRootElement(), m_root);
        // The external parsed entities are offered to the host through the document.
        for (const auto& [name, entity] : m_dtd->getExternalGEContents()) {
            if (entity) document.SetParsedEntity(name, *entity);
        }
        return built;
    });
}

bool CParse::SetElementInfo(CXmlElement& element, CParseElement& source) {
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
    for (const CParseAttribute& attribute : tag->GetAttributes()) {
        CXmlAttribute node(nullptr);
        node.SetName(attribute.GetName());
        node.SetValue(attribute.GetAttValue().GetValue());
        element.SetAtt(attribute.GetName(), node);
    }
    if (source.GetForm() == CParseElement::eEmptyElemTag) return true;
    if (!SetElementContentInfo(&element.GetChildren(), source.GetContent())) return false;
    source.ClearContent();
    return true;
}

// One node per item, adjacent text not merged. A failure leaves the tree cut where it
// happened: an element is appended before it is filled.
bool CParse::SetElementContentInfo(CXmlListContainer* target, CParseContent* content) {
    if (!content) return true;
    for (CAbstractExpression* item : content->GetList()) {
        switch (item->GetClassType()) {
            case eParseCharData:
                AppendText(*target, static_cast<const CParseCharData*>(item)->GetCharData());
                break;
            case eParseElement:
                if (!SetElementInfo(*target->PushBack(CXmlElement(nullptr)),
                                    *static_cast<CParseElement*>(item))) {
                    return false;
                }
                break;
            case eParseComment:
            case eParsePI:
                break;
            case eParseReference:
                if (!AppendReference(*target, *static_cast<const CParseReference*>(item))) {
                    return false;
                }
                break;
            case eParseCDSect:
                AppendCDSect(*target, static_cast<const CParseCDSect*>(item)->GetCData());
                break;
            default:
                ThrowUnknown(__LINE__, "不明なクラス");
        }
    }
    return true;
}

bool CParse::AppendReference(CXmlListContainer& target, const CParseReference& reference) {
    switch (reference.GetKind()) {
        case CParseReference::eCharRef:
            AppendText(target, reference.GetCharRef().ToStr());
            return true;
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
        AppendText(target, *text);
    } else if (m_dtd->hasInternalGE(name)) {
        AppendText(target, m_dtd->getInternalGE(name));
    } else if (m_dtd->hasExternalGE(name)) {
        if (const CXmlParsedEntity* entity = m_dtd->getExternalGEContent(name)) {
            target.PushBack(entity->GetContent());
        }
    } else {
        AddError(CParseError::eErrUndefinedEntity);
        return false;
    }
    return true;
}

}  // namespace vx
