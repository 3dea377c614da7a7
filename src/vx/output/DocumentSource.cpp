// The XML text of documents, parsed entities and the DOCTYPE line.
#include <stdexcept>

#include "vx/dom/XmlDocument.h"
#include "vx/dom/XmlDtd.h"
#include "vx/output/NodeOutput.h"

namespace vx {

using output::AppendLiteral;

namespace {

void AppendQuoted(CVelStringBuffer<CVelStrW>& out, const CVelStrW& literal) {
    out.Append(u'"');
    out.Append(literal);
    out.Append(u'"');
}

}  // namespace

// The SYSTEM form ends with a blank, the PUBLIC form does not; kept as readers expect it.
void CXmlDtdExternalID::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    if (m_systemLiteral.IsEmpty()) return;
    if (m_kind == eSystem) {
        AppendLiteral(out, u"SYSTEM ");
        AppendQuoted(out, m_systemLiteral);
        out.Append(u' ');
    } else {
        AppendLiteral(out, u"PUBLIC ");
        AppendQuoted(out, m_publicLiteral);
        out.Append(u' ');
        AppendQuoted(out, m_systemLiteral);
    }
}

// The internal subset is always written empty.
void CXmlDtd::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    if (m_name.IsEmpty()) return;
    AppendLiteral(out, u"<!DOCTYPE ");
    out.Append(m_name);
    out.Append(u' ');
    m_externalID.GetSource(out);
    AppendLiteral(out, u"[]>");
}

void CXmlParsedEntity::GetSource(CVelStringBuffer<CVelStrW>&) const {
    throw std::runtime_error("未作成");
}

void CXmlParsedEntity::ConvertReturnCode(const CVelStrW& lineEnd) {
    m_content.ConvertReturnCode(lineEnd);
}

namespace {

// Written only when one of the values is set. The third key is "standard", as readers of
// these files expect, not the XML name.
void AppendXmlDecl(CVelStringBuffer<CVelStrW>& out, const CXmlDocument& document) {
    const struct {
        const char16_t* key;
        CVelStrW value;
    } entries[] = {{u"version", document.GetVersion()},
                   {u"encoding", document.GetEncoding()},
                   {u"standard", document.GetStandard()}};
    bool any = false;
    for (const auto& entry : entries)
        any = any || !entry.value.IsEmpty();
    if (!any) return;
    AppendLiteral(out, u"<?xml");
    for (const auto& entry : entries) {
        if (entry.value.IsEmpty()) continue;
        CXmlAttribute attribute(nullptr);
        attribute.SetName(entry.key);
        attribute.SetValue(entry.value);
        out.Append(u' ');
        attribute.GetSource(out);
    }
    AppendLiteral(out, u"?>");
    out.Append(document.GetRetCode());
}

}  // namespace

void CXmlDocument::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    AppendXmlDecl(out, *this);
    if (!m_dtd->getName().IsEmpty()) {
        m_dtd->GetSource(out);
        out.Append(m_retCode);
    }
    m_prolog.GetSource(out);
    m_root.GetSource(out);
    m_epilog.GetSource(out);
}

void CXmlDocument::ConvertReturnCode(const CVelStrW& lineEnd) {
    m_prolog.ConvertReturnCode(lineEnd);
    m_root.ConvertReturnCode(lineEnd);
    m_epilog.ConvertReturnCode(lineEnd);
}

}  // namespace vx
