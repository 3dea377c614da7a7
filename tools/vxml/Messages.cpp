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
     "変換したファイルは vx で読めません"},
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

    {Text::kToolHelp,
     "Usage: vxml COMMAND [OPTIONS] FILE...\n"
     "\n"
     "Checks and converts XML files. vx reads UTF-16LE and UCS-4LE from their first\n"
     "bytes, and files whose XML declaration names Shift_JIS, EUC-JP, ISO-2022-JP,\n"
     "UTF-8 or MS932.\n"
     "\n"
     "Commands:\n"
     "  check     print the diagnostics of each FILE (standard input without one)\n"
     "  print     write the document's XML text as UTF-8\n"
     "  tree      show an outline of the document tree\n"
     "  save      write the document's text in Shift_JIS, EUC-JP or ISO-2022-JP\n"
     "  convert   write the file itself in another encoding, checked before it is kept\n"
     "\n"
     "A FILE or OUT of - is standard input or output. Messages are Japanese when the\n"
     "locale's are (LC_ALL, LC_MESSAGES, LANG), else English; --lang ja|en chooses.\n"
     "--huge, with any command, lets entity references copy without limit (for trusted\n"
     "documents; see vx::SetExpansionLimit).\n"
     "Run 'vxml COMMAND --help' for a command's options; 'vxml --version' shows the version.\n"
     "\n"
     "Exit status: 0 when no document had a diagnostic (and save wrote its file) or\n"
     "convert wrote its file, 1 when a document had one or nothing was written, 2 for a\n"
     "usage error or a failure inside the library.\n",
     "使い方: vxml COMMAND [OPTIONS] FILE...\n"
     "\n"
     "XML ファイルを検査し、変換します。vx は UTF-16LE と UCS-4LE を先頭のバイトで判別し、\n"
     "そのほかは XML 宣言の encoding が Shift_JIS、EUC-JP、ISO-2022-JP、UTF-8、MS932 の\n"
     "いずれかであるファイルを読みます。\n"
     "\n"
     "コマンド:\n"
     "  check     各 FILE の診断を表示します（FILE がなければ標準入力）\n"
     "  print     文書の XML テキストを UTF-8 で書き出します\n"
     "  tree      文書ツリーの概略を表示します\n"
     "  save      文書のテキストを Shift_JIS、EUC-JP、ISO-2022-JP で書き出します\n"
     "  convert   ファイルそのものを別の文字コードで書き出します（残す前に検証します）\n"
     "\n"
     "FILE や OUT に - を指定すると標準入力・標準出力になります。メッセージはロケール\n"
     "（LC_ALL、LC_MESSAGES、LANG）が日本語なら日本語、そうでなければ英語です。\n"
     "--lang ja|en で選べます。--huge はどのコマンドにも使え、実体参照の展開量を制限\n"
     "しません（信頼できる文書向け。vx::SetExpansionLimit を参照）。\n"
     "コマンドごとのオプションは 'vxml COMMAND --help'、バージョンは 'vxml --version' で\n"
     "表示します。\n"
     "\n"
     "終了ステータス: どの文書にも診断がなかった（save ではファイルを書き出した）とき、\n"
     "または convert がファイルを書き出したときは 0、診断のある文書があったか何も書き\n"
     "出さなかったときは 1、使い方の誤りやライブラリ内部の失敗のときは 2 です。\n"},
    {Text::kCheckHelp,
     "Usage: vxml check [OPTIONS] [FILE...]\n"
     "\n"
     "Parses each FILE (standard input without one) and prints its diagnostics, one per\n"
     "line, in the order found. Nothing is printed for a well-formed document.\n"
     "\n"
     "  --lang ja|en       message language (default: from the locale)\n"
     "  --format text      PATH:LINE:COL: LEVEL CODE: MESSAGE (default), with a\n"
     "                     hint line under codes 2 and 3\n"
     "  --format native    the library's own display text; --lang does not apply\n"
     "  --format json      one JSON object per diagnostic: {\"file\",\"code\",\"level\",\n"
     "                     \"line\",\"column\",\"message\"}, and \"external\", \"hint\"\n"
     "  --no-external      read no external subset or entity: each system literal\n"
     "                     gets code 5 and no file is opened (for untrusted input)\n"
     "  -r, --recursive    check the files ending in .xml in each folder FILE and below\n"
     "  --all              with -r, every file whatever its name\n"
     "  -j, --jobs N       check N files at once (default: one per processor)\n"
     "  -q, --quiet        print nothing; only the exit status tells\n"
     "\n"
     "LEVEL is fatal, error, warning, notice or none. A diagnostic without a position\n"
     "reads PATH: LEVEL CODE: MESSAGE, and names the file it could not open in brackets.\n"
     "One found in an external subset or entity says so, and is placed in that file\n"
     "when vxml can tell which. Reports come in the order of the files; with more than\n"
     "one file a summary goes to standard error.\n",
     "使い方: vxml check [OPTIONS] [FILE...]\n"
     "\n"
     "各 FILE（FILE がなければ標準入力）をパースし、診断を見つかった順に 1 行ずつ表示\n"
     "します。整形式の文書については何も表示しません。\n"
     "\n"
     "  --lang ja|en       メッセージの言語（既定: ロケールに従う）\n"
     "  --format text      PATH:LINE:COL: LEVEL CODE: MESSAGE（既定）。コード 2 と 3 の\n"
     "                     下にはヒントの行が付きます\n"
     "  --format native    ライブラリ自身の表示テキスト。--lang は効きません\n"
     "  --format json      診断ごとに 1 行の JSON オブジェクト: {\"file\",\"code\",\"level\",\n"
     "                     \"line\",\"column\",\"message\"}、および \"external\"、\"hint\"\n"
     "  --no-external      外部サブセットも外部実体も読みません。システムリテラルはすべて\n"
     "                     コード 5 となり、ファイルを開きません（信頼できない入力向け）\n"
     "  -r, --recursive    フォルダーである FILE の中と下にある、.xml で終わるファイルを\n"
     "                     検査します\n"
     "  --all              -r と共に使い、名前によらずすべてのファイルを検査します\n"
     "  -j, --jobs N       N 個のファイルを同時に検査します（既定: プロセッサーごとに 1 つ）\n"
     "  -q, --quiet        何も表示せず、終了ステータスだけで結果を伝えます\n"
     "\n"
     "LEVEL は fatal、error、warning、notice、none のいずれかです。位置のない診断は\n"
     "PATH: LEVEL CODE: MESSAGE となり、開けなかったファイルを括弧の中に示します。外部\n"
     "サブセットや外部実体の中で見つかった診断はその旨を示し、どのファイルか vxml に\n"
     "分かるときはそのファイルの位置で示します。報告はファイルの順に並び、複数のファイル\n"
     "を検査したときは標準エラーに集計を出します。\n"},
    {Text::kPrintHelp,
     "Usage: vxml print [--lang ja|en] FILE\n"
     "\n"
     "Writes the document's XML text as vx produces it, in UTF-8 with LF line ends and\n"
     "the declaration's encoding set to UTF-8, to standard output. Diagnostics go to\n"
     "standard error.\n",
     "使い方: vxml print [--lang ja|en] FILE\n"
     "\n"
     "vx が生成する文書の XML テキストを、UTF-8、LF 改行、宣言の encoding を UTF-8 に\n"
     "して標準出力に書き出します。診断は標準エラーに出します。\n"},
    {Text::kTreeHelp,
     "Usage: vxml tree [--lang ja|en] FILE\n"
     "\n"
     "Shows the document tree, indented by depth: a line per element with its\n"
     "attributes, a line per text (quoted; text of white space only is left out),\n"
     "CDATA section and entity reference. Long texts are shortened.\n"
     "Diagnostics go to standard error.\n",
     "使い方: vxml tree [--lang ja|en] FILE\n"
     "\n"
     "文書ツリーを深さに応じて字下げして表示します。エレメントは属性と共に 1 行、テキスト\n"
     "（引用符付き。空白だけのテキストは省きます）、CDATA セクション、実体参照もそれぞれ\n"
     "1 行です。長いテキストは短くします。診断は標準エラーに出します。\n"},
    {Text::kSaveHelp,
     "Usage: vxml save FILE --encoding NAME -o OUT [--lang ja|en]\n"
     "\n"
     "Sets the document's encoding to NAME and writes the document's text, as the\n"
     "library's SaveToFile does, to OUT with LF line ends. NAME must begin with\n"
     "Shift_JIS, EUC-JP or ISO-2022-JP (any case). The text leaves out what lies\n"
     "outside the root element and the DOCTYPE's subset; 'vxml convert' keeps them.\n"
     "A document with diagnostics is not saved; they go to standard error.\n",
     "使い方: vxml save FILE --encoding NAME -o OUT [--lang ja|en]\n"
     "\n"
     "文書の encoding を NAME にして、ライブラリの SaveToFile と同じく文書のテキストを\n"
     "LF 改行で OUT に書き出します。NAME は Shift_JIS、EUC-JP、ISO-2022-JP のいずれかで\n"
     "始まる名前です（大文字と小文字は区別しません）。このテキストにはルートエレメントの\n"
     "外側と DOCTYPE のサブセットが含まれません。'vxml convert' ならそれらも残します。\n"
     "診断のある文書は保存せず、診断を標準エラーに出します。\n"},
    {Text::kConvertHelp,
     "Usage: vxml convert FILE --encoding NAME -o OUT [--lang ja|en]\n"
     "\n"
     "Writes the file's own text to OUT in NAME: UTF-8, UTF-16LE (with a byte-order\n"
     "mark), UCS-4LE, Shift_JIS, MS932, EUC-JP or ISO-2022-JP (any case). Everything\n"
     "is kept as written; only the XML declaration's encoding is set to the name\n"
     "written, and added where vx needs it to read NAME. Before OUT is replaced, the\n"
     "converted text is parsed; if its tree or diagnostics differ from the original's,\n"
     "or a character cannot be written in NAME, nothing is written and the exit\n"
     "status is 1. Diagnostics of FILE go to standard error.\n",
     "使い方: vxml convert FILE --encoding NAME -o OUT [--lang ja|en]\n"
     "\n"
     "ファイルのテキストそのものを NAME で OUT に書き出します。NAME は UTF-8、UTF-16LE\n"
     "（バイトオーダーマーク付き）、UCS-4LE、Shift_JIS、MS932、EUC-JP、ISO-2022-JP の\n"
     "いずれかです（大文字と小文字は区別しません）。すべてを書かれたとおりに残し、XML 宣言\n"
     "の encoding だけを書き出す名前にします（vx が NAME を読むのに必要なら加えます）。\n"
     "OUT を置き換える前に変換したテキストをパースし、ツリーや診断が元と異なるとき、または\n"
     "NAME で書き表せない文字があるときは、何も書き出さずに終了ステータス 1 で終わります。\n"
     "FILE の診断は標準エラーに出します。\n"},
};

// Rows are looked up by position, so the table must list every Text in order.
constexpr bool InTextOrder() {
    std::size_t row = 0;
    for (const Entry& entry : kTable) {
        if (static_cast<std::size_t>(entry.text) != row++) return false;
    }
    return row == static_cast<std::size_t>(Text::kConvertHelp) + 1;
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
