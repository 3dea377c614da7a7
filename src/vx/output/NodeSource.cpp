// The XML text of elements, attributes, containers and character-data nodes, and the rewriting
// of their line ends.
#include "vx/dom/XmlAttribute.h"
#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlElement.h"
#include "vx/dom/XmlListContainer.h"
#include "vx/output/NodeOutput.h"

namespace vx {

using output::AppendLiteral;
using output::Site;

void CXmlAttribute::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    const Site site{"XmlAttribute", __LINE__, "CXmlAttribute::GetSource"};
    out.Append(m_name);
    AppendLiteral(out, u"=\"");
    output::AppendEscapedAttValue(out, output::TextInDocument(*this, m_value, site));
    out.Append(u'"');
}

void CXmlAttribute::ConvertReturnCode(const CVelStrW& lineEnd) {
    const Site site{"XmlAttribute", __LINE__, "CXmlAttribute::ConvertReturnCode"};
    output::ConvertLineEnds(m_value, lineEnd, site);
}

// Recursive through the children (as deep as the nesting limit): keep the frame small.
void CXmlElement::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    const CTreeLevel level;
    out.Append(u'<');
    out.Append(m_name);
    for (const CXmlAttribute& attribute : m_attributes) {
        out.Append(u' ');
        attribute.GetSource(out);
    }
    if (m_children.GetSize() == 0) {
        AppendLiteral(out, u"/>");
        return;
    }
    out.Append(u'>');
    m_children.GetSource(out);
    AppendLiteral(out, u"</");
    out.Append(m_name);
    out.Append(u'>');
}

void CXmlElement::ConvertReturnCode(const CVelStrW& lineEnd) {
    const CTreeLevel level;
    for (CXmlAttribute& attribute : m_attributes)
        attribute.ConvertReturnCode(lineEnd);
    m_children.ConvertReturnCode(lineEnd);
}

void CXmlListContainer::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    for (const CXmlBaseObject* child : m_list)
        child->GetSource(out);
}

void CXmlListContainer::ConvertReturnCode(const CVelStrW& lineEnd) {
    for (CXmlBaseObject* child : m_list)
        child->ConvertReturnCode(lineEnd);
}

void CXmlCData::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    const Site site{"XmlElement", __LINE__, "CXmlCData::GetSource"};
    output::AppendEscapedCharData(out, output::TextInDocument(*this, m_text, site));
}

void CXmlCData::ConvertReturnCode(const CVelStrW& lineEnd) {
    const Site site{"XmlElement", __LINE__, "CXmlCData::ConvertReturnCode"};
    output::ConvertLineEnds(m_text, lineEnd, site);
}

void CXmlCDSect::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    const Site site{"XmlElement", __LINE__, "CXmlCDSect::GetSource"};
    AppendLiteral(out, u"<![CDATA[");
    output::AppendEscapedCDSect(out, output::TextInDocument(*this, m_text, site));
    AppendLiteral(out, u"]]>");
}

void CXmlCDSect::ConvertReturnCode(const CVelStrW& lineEnd) {
    const Site site{"XmlElement", __LINE__, "CXmlCDSect::ConvertReturnCode"};
    output::ConvertLineEnds(m_text, lineEnd, site);
}

void CXmlEntity::GetSource(CVelStringBuffer<CVelStrW>& out) const {
    out.Append(u'&');
    out.Append(m_name);
    out.Append(u';');
}

}  // namespace vx
