#include <exception>
#include <stdexcept>
#include <string>

#include "vx/dom/XmlDocument.h"
#include "vx/output/NodeOutput.h"
#include "vx/platform/Logger.h"

namespace vx {

namespace {

void LogRetCodeFailure(const char* what, const CVelStrW& lineEnd) {
    vel::LogFailure("XmlBaseObject", __LINE__, "CXmlBaseObject::RetCodeConv",
                    "引数が異常です。exception=%s , retcode='%s'", what, CVelStr(lineEnd).c_str());
}

}  // namespace

bool CXmlBaseObject::RetCodeConv(CVelStrW& text, CVelStrW lineEnd) {
    try {
        text.ConvRetCode(lineEnd);
        return true;
    } catch (const std::exception& e) {
        LogRetCodeFailure(e.what(), lineEnd);
    } catch (...) {
        LogRetCodeFailure("", lineEnd);
    }
    return false;
}

namespace output {

void ConvertLineEnds(CVelStrW& text, const CVelStrW& lineEnd, const Site& site) {
    if (CXmlBaseObject::RetCodeConv(text, lineEnd)) return;
    vel::LogFailure(site.unit, site.line, site.function, "改行コード変換に失敗");
    throw std::runtime_error(std::string(site.function) + " : 改行コード変換エラー");
}

CVelStrW TextInDocument(const CXmlBaseObject& node, const CVelStrW& text, const Site& site) {
    const CXmlDocument* document = node.GetDocument();
    if (!document) return text;
    CVelStrW converted(text);
    ConvertLineEnds(converted, document->GetRetCode(), site);
    return converted;
}

}  // namespace output
}  // namespace vx
