// Line ends, both ways.
//
// Reading: the parse driver runs NormalizeRetCode over the whole decoded text, so that the
// grammar and every position see LF only.
// Writing: a node's text goes out with its document's line end (CR, LF or CR LF) through
//   output::ConvertLineEnds (output/LineEnd.cpp): a failure is logged and thrown as
//     std::runtime_error("<function> : 改行コード変換エラー"), after
//   CXmlBaseObject::RetCodeConv (output/LineEnd.cpp): catches, logs, returns false, around
//   CVelStrW::ConvRetCode (here): the rewrite itself, which throws for a bad line end.
#include "vx/platform/Guard.h"
#include "vx/platform/Logger.h"
#include "vx/text/CommonFunc.h"
#include "vx/text/VelStr.h"

namespace velstr {

void CVelStrW::ConvRetCode(const CVelStrW& lineEnd) {
    const bool valid =
        lineEnd == CVelStrW(u"\r") || lineEnd == CVelStrW(u"\n") || lineEnd == CVelStrW(u"\r\n");
    if (!valid) {
        vel::LogFailure("VelStr", __LINE__, "CVelStrBase<T>::ConvRetCode",
                        "引数が異常です。retcode='%s'", CVelStr(lineEnd).c_str());
        ThrowStringError("CVelStrBase<T>::ConvRetCode");
    }
    const char16_t* text = c_str();
    const int n = GetLength();
    int loneCr = 0, loneLf = 0, pairs = 0;
    for (int i = 0; i < n; ++i) {
        if (text[i] == u'\r') {
            if (i + 1 < n && text[i + 1] == u'\n') {
                ++pairs;
                ++i;
            } else {
                ++loneCr;
            }
        } else if (text[i] == u'\n') {
            ++loneLf;
        }
    }
    const int target = lineEnd.GetLength() == 2 ? 2 : (lineEnd[0] == u'\r' ? 1 : 0);
    const int already = target == 2 ? pairs : (target == 1 ? loneCr : loneLf);
    if (already == loneCr + loneLf + pairs) return;  // nothing to rewrite: keep the buffer shared

    const int ends = loneCr + loneLf + pairs;
    const int newLength = vel::CheckedCount(std::int64_t{n} - 2 * pairs - loneCr - loneLf +
                                            std::int64_t{ends} * lineEnd.GetLength());
    CVelStrW converted;
    char16_t* out = converted.GetBuffer(newLength);
    int w = 0;
    for (int i = 0; i < n; ++i) {
        if (text[i] == u'\r' || text[i] == u'\n') {
            if (text[i] == u'\r' && i + 1 < n && text[i + 1] == u'\n') ++i;
            for (int k = 0; k < lineEnd.GetLength(); ++k)
                out[w++] = lineEnd[k];
        } else {
            out[w++] = text[i];
        }
    }
    *this = std::move(converted);
}

}  // namespace velstr

namespace vx {

void NormalizeRetCode(CVelStrW& text) {
    if (text.Pos(u'\r') == CVelStrW::npos) return;
    const int length = text.GetLength();
    char16_t* units = text.GetBuffer(length);
    int written = 0;
    for (int read = 0; read < length; ++read) {
        if (units[read] != u'\r') {
            units[written++] = units[read];
        } else if (read + 1 < length && units[read + 1] == u'\n') {
            continue;  // the LF that follows is copied next
        } else {
            units[written++] = u'\n';
        }
    }
    text.Truncate(written);
}

}  // namespace vx
