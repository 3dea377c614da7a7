#include "vx/parse/ReferenceExpansion.h"

#include "vx/dom/XmlDtd.h"
#include "vx/parse/GrammarSteps.h"
#include "vx/platform/Logger.h"
#include "vx/text/CommonFunc.h"
#include "vx/text/StringBuffer.h"

namespace vx {

using namespace grammar;

namespace {

bool AppendGeneralEntity(CVelStringBuffer<CVelStrW>& out, const CVelStrW& name,
                         const CXmlDtd* dtd) {
    if (!dtd) {
        vel::LogFailure("CommonFunc", __LINE__, "ConvertReferenceForString",
                        "DTDを渡していないのに内部実体を使用した");
        return false;
    }
    if (!dtd->hasInternalGE(name)) {
        vel::LogFailure("CommonFunc", __LINE__, "ConvertReferenceForString",
                        "内部実体が未定義です(%s)", CVelStr(name).c_str());
        return false;
    }
    out.Append(dtd->getInternalGE(name));
    return true;
}

}  // namespace

bool ConvertReferenceForString(CVelStrW& result, const CVelStrW& text, const CXmlDtd* dtd) {
    CVelStringBuffer<CVelStrW> out;
    int run = 0;  // start of the ordinary characters not yet appended
    for (int amp = text.Pos(u'&'); amp >= 0; amp = text.Pos(u'&', run)) {
        out.Append(text.c_str() + run, amp - run);
        const int semicolon = text.Pos(u';', amp);
        if (semicolon < 0) return false;
        if (IsCharAt(text, amp + 1, u'#')) {
            out.Append(ConvertNumToChar(text, amp + 2, semicolon - 1));
        } else if (const CVelStrW* replacement = FindPredefinedEntity(text, amp + 1, semicolon)) {
            out.Append(*replacement);
        } else if (!AppendGeneralEntity(out, text.SubStr(amp + 1, semicolon - amp - 1), dtd)) {
            return false;
        }
        run = semicolon + 1;
    }
    out.Append(text.c_str() + run, text.GetLength() - run);
    result = out.ToString();
    return true;
}

}  // namespace vx
