#include "Messages.h"

#include <cstddef>

namespace vxml {
namespace {

struct Entry {
    Text text;
    const char* english;
    const char* japanese;
};

constexpr Entry kTable[] = {
    {Text::kNoCommand, "no command given", "コマンドが指定されていません"},
    {Text::kUnknownCommand, "unknown command '{1}'", "'{1}' というコマンドはありません"},
    {Text::kUnknownOption, "unknown option '{1}'", "'{1}' というオプションはありません"},
    {Text::kLangValue, "--lang takes ja or en, not '{1}'",
     "--lang には ja か en を指定してください（'{1}' は使えません）"},
    {Text::kFormatValue, "--format takes text, native or json, not '{1}'",
     "--format には text、native、json のいずれかを指定してください（'{1}' は使えません）"},
    {Text::kJobsValue, "--jobs takes a number from 1 to 256, not '{1}'",
     "--jobs には 1 から 256 までの数を指定してください（'{1}' は使えません）"},
    {Text::kConvertTargets,
     "convert writes UTF-8, UTF-16LE, UCS-4LE, Shift_JIS, MS932, EUC-JP or ISO-2022-JP, not "
     "'{1}'",
     "convert が書き出せるのは UTF-8、UTF-16LE、UCS-4LE、Shift_JIS、MS932、EUC-JP、"
     "ISO-2022-JP です（'{1}' は使えません）"},
    {Text::kOptionNotTaken, "{1} does not take {2}", "{1} には {2} を指定できません"},
    {Text::kNeedsValue, "{1} needs a value", "{1} には値が必要です"},
    {Text::kNoFile, "no FILE given", "FILE が指定されていません"},
    {Text::kOneFile, "{1} takes one FILE, got {2}",
     "{1} に指定できる FILE は 1 つです（{2} 個指定されました）"},
    {Text::kNeedsEncoding, "{1} needs --encoding NAME", "{1} には --encoding NAME が必要です"},
    {Text::kNeedsOutput, "{1} needs -o OUT", "{1} には -o OUT が必要です"},
    {Text::kTryHelp, "Try 'vxml --help'.", "使い方は 'vxml --help' で表示できます。"},

    {Text::kHint, "  hint: {1}", "  ヒント: {1}"},
    {Text::kInExternalText, " (in an external subset or entity)",
     "（外部サブセットまたは外部実体の中）"},
    {Text::kExternalTextFor, " (external text read for {1})", "（{1} のために読んだ外部テキスト）"},
    {Text::kExternalFile, " (external file {1})", "（外部ファイル {1}）"},
    {Text::kSummary, "{1} files checked, {2} with diagnostics{3}, {4} s",
     "{1} ファイルを検査、診断ありは {2} ファイル{3}、{4} 秒"},
    {Text::kSummaryFailed, ", {1} failed", "、失敗は {1} ファイル"},
    {Text::kProgress, "{1}/{2} files, {3} with diagnostics, about {4} s left",
     "{1}/{2} ファイル、診断あり {3}、残り約 {4} 秒"},
    {Text::kWorkerPipeBroke, "a worker's pipe broke", "ワーカープロセスとのパイプが切れました"},
    {Text::kWorkerNotStarted, "cannot start a worker process", "ワーカープロセスを起動できません"},
    {Text::kWorkerEnded, "a worker process ended early", "ワーカープロセスが途中で終了しました"},

    {Text::kIsDirectory, "it is a directory", "ディレクトリです"},
    {Text::kNotRegularFile, "it is not a regular file", "通常のファイルではありません"},
    {Text::kNotReadable, "it could not be read", "読み込めませんでした"},
    {Text::kEncodingHint,
     "{1}; vx reads UTF-16LE and UCS-4LE from the first bytes, other files by "
     "encoding=\"NAME\" in the XML declaration, with no blank around '=', NAME being "
     "Shift_JIS, EUC-JP, ISO-2022-JP, UTF-8 or MS932 (any case)",
     "{1}。vx は UTF-16LE と UCS-4LE を先頭のバイトで、その他のファイルを XML 宣言の "
     "encoding=\"NAME\"（'=' の前後に空白なし）で判別します。NAME は Shift_JIS、EUC-JP、"
     "ISO-2022-JP、UTF-8、MS932 のいずれかです（大文字と小文字は区別しません）"},
    {Text::kUtf8ByteOrderMark,
     "the file begins with a UTF-8 byte-order mark, which vx does not accept",
     "ファイルが UTF-8 のバイトオーダーマークで始まっています。vx はこれを受け付けません"},
    {Text::kBigEndian, "the file is big-endian UTF-16 or UCS-4, which vx does not read",
     "ファイルはビッグエンディアンの UTF-16 か UCS-4 です。vx はこれを読めません"},
    {Text::kNoLessThanFirst,
     "the file looks like UTF-16LE or UCS-4LE but does not begin with '<' or a byte-order mark",
     "ファイルは UTF-16LE か UCS-4LE のようですが、'<' でもバイトオーダーマークでも始まって"
     "いません"},
    {Text::kShorterThanFour, "the file is shorter than 4 bytes", "ファイルが 4 バイトに満たません"},
    {Text::kNoDeclaration, "the file has no XML declaration", "ファイルに XML 宣言がありません"},
    {Text::kDeclarationUnended, "the XML declaration does not end", "XML 宣言が閉じていません"},
    {Text::kEncodingUnquoted, "the declaration's encoding value is not quoted",
     "宣言の encoding の値が引用符で囲まれていません"},
    {Text::kEncodingUnread, "the declaration names encoding '{1}', which vx does not read",
     "宣言の encoding は '{1}' ですが、vx はこの文字コードを読めません"},
    {Text::kNoEncoding, "the XML declaration has no encoding", "XML 宣言に encoding がありません"},
    {Text::kBlanksAroundEquals, "the declaration has blanks around '=' after encoding",
     "宣言の encoding の後の '=' の前後に空白があります"},
    {Text::kNoEquals, "the declaration's encoding has no '='",
     "宣言の encoding の後に '=' がありません"},

    {Text::kCannotCopyInput, "cannot copy standard input", "標準入力をコピーできません"},
    {Text::kCannotCopyOutput, "cannot copy to standard output", "標準出力へコピーできません"},
    {Text::kCannotOpen, "cannot open {1}", "{1} を開けません"},
    {Text::kNoTemporaryFile, "cannot create a temporary file", "一時ファイルを作成できません"},
    {Text::kCannotWrite, "cannot write: {1}", "書き込めません: {1}"},

    {Text::kNotWritten, "{1} not written: {2}", "{1} は書き出しませんでした: {2}"},
    {Text::kNotSaved, "{1} not saved: {2}", "{1} は保存しませんでした: {2}"},
    {Text::kDeclarationNeeded,
     "the document has no XML declaration, and vx reads {1} only by the encoding the "
     "declaration names",
     "文書に XML 宣言がありません。vx は {1} を宣言の encoding によってしか判別しません"},
    {Text::kTooLarge, "the document is too large", "文書が大きすぎます"},
    {Text::kUnwritableCharacter, "{1} at line {2}, column {3} cannot be written in {4}",
     "{2} 行 {3} 桁の {1} は {4} で書き表せません"},
    {Text::kNotConvertible, "the text cannot be converted to {1}",
     "テキストを {1} に変換できません"},
    {Text::kUnreadableResult, "vx would not read the converted file",
     "変換したファイルを vx が読めません"},
    {Text::kOtherText, "the converted file reads back as other text",
     "変換したファイルを読み戻すと別のテキストになります"},
    {Text::kOtherDiagnostics, "the converted file has other diagnostics than the original",
     "変換したファイルの診断が元のファイルと異なります"},
    {Text::kOtherTree, "the converted file gives another tree than the original",
     "変換したファイルのツリーが元のファイルと異なります"},
    {Text::kSourceUnreadable, "vx cannot read {1}", "vx は {1} を読めません"},
    {Text::kNotSavable,
     "unsupported encoding '{1}' (vx saves {2}; 'vxml convert' also writes UTF-8, UTF-16LE and "
     "UCS-4LE)",
     "'{1}' では保存できません（vx が保存できるのは {2} です。'vxml convert' なら UTF-8、"
     "UTF-16LE、UCS-4LE でも書き出せます）"},
    {Text::kSaveLosesText,
     "vx saves {1} only up to the first zero byte, which would lose the document; use 'vxml "
     "convert --encoding {2}' instead",
     "vx は {1} を最初のゼロバイトまでしか保存しないため、文書が失われます。代わりに "
     "'vxml convert --encoding {2}' を使ってください"},
    {Text::kHasDiagnostics, "the document has diagnostics", "文書に診断があります"},
    {Text::kListSeparator, ", ", "、"},
};

// Rows are looked up by position, so the table must list every Text in order.
constexpr bool InTextOrder() {
    std::size_t row = 0;
    for (const Entry& entry : kTable) {
        if (static_cast<std::size_t>(entry.text) != row++) return false;
    }
    return row == static_cast<std::size_t>(Text::kListSeparator) + 1;
}
static_assert(InTextOrder(), "kTable needs one row per Text, in the order of the enum");

// Set from the command line before any worker process is started.
Language g_language = Language::kEnglish;

}  // namespace

void SetLanguage(Language language) {
    g_language = language;
}

Language CurrentLanguage() {
    return g_language;
}

std::string Say(Text text, std::initializer_list<std::string_view> args) {
    const Entry& entry = kTable[static_cast<std::size_t>(text)];
    const std::string_view format =
        CurrentLanguage() == Language::kJapanese ? entry.japanese : entry.english;
    std::string out;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const std::size_t slot = i + 2 < format.size() && format[i] == '{' && format[i + 2] == '}'
                                     ? static_cast<std::size_t>(format[i + 1] - '1')
                                     : args.size();
        if (slot < args.size()) {
            out += *(args.begin() + slot);
            i += 2;
        } else {
            out += format[i];
        }
    }
    return out;
}

}  // namespace vxml
