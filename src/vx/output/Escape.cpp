#include "vx/output/NodeOutput.h"

namespace vx::output {

namespace {

// Copies text, writing replace(ch) instead of each character for which it is not empty.
template <class Replace>
void AppendReplaced(CVelStringBuffer<CVelStrW>& out, const CVelStrW& text, Replace replace) {
    const char16_t* units = text.c_str();
    int copied = 0;
    for (int i = 0; i < text.GetLength(); ++i) {
        const std::u16string_view replacement = replace(units[i]);
        if (replacement.empty()) continue;
        out.Append(units + copied, i - copied);
        AppendLiteral(out, replacement);
        copied = i + 1;
    }
    out.Append(units + copied, text.GetLength() - copied);
}

}  // namespace

// Blanks are escaped too, so a reader that normalises attribute values gives back exactly the
// stored value.
void AppendEscapedAttValue(CVelStringBuffer<CVelStrW>& out, const CVelStrW& text) {
    AppendReplaced(out, text, [](char16_t ch) -> std::u16string_view {
        switch (ch) {
            case u'&':
                return u"&#38;";
            case u'"':
                return u"&#34;";
            case u'<':
                return u"&#60;";
            case u' ':
                return u"&#32;";
            case u'\t':
                return u"&#9;";
            case u'\r':
                return u"&#13;";
            case u'\n':
                return u"&#10;";
            default:
                return {};
        }
    });
}

void AppendEscapedCharData(CVelStringBuffer<CVelStrW>& out, const CVelStrW& text) {
    AppendReplaced(out, text, [](char16_t ch) -> std::u16string_view {
        switch (ch) {
            case u'&':
                return u"&#38;";
            case u'<':
                return u"&#60;";
            case u'>':
                return u"&#62;";
            default:
                return {};
        }
    });
}

void AppendEscapedCDSect(CVelStringBuffer<CVelStrW>& out, const CVelStrW& text) {
    static constexpr char16_t kEnd[] = u"]]>";
    const CVelStrW end(kEnd);
    int copied = 0;
    for (int found = text.Pos(end); found != CVelStrW::npos; found = text.Pos(end, copied)) {
        out.Append(text.c_str() + copied, found - copied);
        AppendLiteral(out, u"&#x5D;]>");
        copied = found + end.GetLength();
    }
    out.Append(text.c_str() + copied, text.GetLength() - copied);
}

}  // namespace vx::output
