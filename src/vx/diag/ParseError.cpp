#include "vx/diag/ParseError.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace vx {

namespace {

struct SErrorInfo {
    const char16_t* message;
    CParseError::eErrLevel level;
    const char* english;  // for hosts that show English; never returned by GetErrMsg
};

constexpr auto kFatal = CParseError::eErrLevelFatal;
constexpr auto kError = CParseError::eErrLevelError;
constexpr auto kWarning = CParseError::eErrLevelWarning;
constexpr auto kNotice = CParseError::eErrLevelNotice;
constexpr auto kNone = CParseError::eErrLevelNone;

// Indexed by code. Code 18 has level None on purpose: callers that count level-Error entries
// must not see it. Hosts match these texts exactly, so code 36 keeps its missing full stop and
// code 45 its leading blank.
constexpr SErrorInfo kErrorTable[] = {
    {u"", kNone, ""},                                                                           // 0
    {u"ファイルが存在しません。", kFatal, "The file does not exist."},                          // 1
    {u"ファイルのオープンに失敗しました。", kFatal, "Opening the file failed."},                // 2
    {u"文字コードの判別に失敗しました。", kFatal, "Detecting the character encoding failed."},  // 3
    {u"メモリ不足です。", kFatal, "Out of memory."},                                            // 4
    {u"サポートしない機能を使用しました。", kNotice, "An unsupported feature was used."},       // 5
    {u"文字コードの変換に失敗しました。", kFatal,
     "Converting the character encoding failed."},                           // 6
    {u"途中でパースが停止しました。", kFatal, "Parsing stopped part-way."},  // 7
    {u"XML宣言が存在しません。", kFatal, "There is no XML declaration."},    // 8
    {u"XML宣言のバージョン情報が存在しません。", kFatal,
     "The XML declaration has no version information."},  // 9
    {u"１つ以上の空白が必要です。", kError,
     "At least one white-space character is required."},                               // 10
    {u"サポートしないバージョン番号です。", kWarning, "Unsupported version number."},  // 11
    {u"予期しない属性値が記述されています。", kNotice,
     "An unexpected attribute value is written."},  // 12
    {u"XML宣言が正しく終了していません。", kError,
     "The XML declaration is not closed correctly."},  // 13
    {u"コメントの終了文字( '-->' )が存在しません。", kError,
     "The comment terminator ( '-->' ) is missing."},                                // 14
    {u"予期せぬ文字が出現しました。", kError, "An unexpected character appeared."},  // 15
    {u"処理命令の終了文字( '?>' )が存在しません。", kError,
     "The processing-instruction terminator ( '?>' ) is missing."},      // 16
    {u"属性が重複しています。", kError, "An attribute is duplicated."},  // 17
    {u"要素の終了文字( '/>' )が存在しません。", kNone,
     "The element terminator ( '/>' ) is missing."},  // 18
    {u"予期せぬ位置でソースが終了しました。", kError,
     "The source ended at an unexpected position."},                       // 19
    {u"閉じタグが存在しません。", kError, "The closing tag is missing."},  // 20
    {u"文字参照が不正です。", kError, "Invalid character reference."},     // 21
    {u"エンティティの終了( ';' )が存在しません。", kError,
     "The end of the entity reference ( ';' ) is missing."},                           // 22
    {u"エンティティ名の記述が存在しません。", kError, "The entity name is missing."},  // 23
    {u"属性値のイコールが存在しません。", kError,
     "The equals sign of the attribute value is missing."},  // 24
    {u"属性値の終了のクウォートが存在しません。", kError,
     "The closing quote of the attribute value is missing."},  // 25
    {u"属性値が存在しないか不正です。", kFatal,
     "The attribute value is missing or invalid."},  // 26
    {u"パースは成功しましたがXMLツリーの作成に失敗しました。", kFatal,
     "Parsing succeeded but building the XML tree failed."},                                  // 27
    {u"未知のエレメントタイプに遭遇しました。", kFatal, "An unknown element type was met."},  // 28
    {u"開始エレメント名と終了エレメント名が異なります。", kError,
     "The start-tag name and the end-tag name differ."},                         // 29
    {u"参照の書式が正しくありません。", kFatal, "The reference is malformed."},  // 30
    {u"CDSectの終了記号が存在しません。", kError,
     "The end marker of the CDATA section is missing."},  // 31
    {u"システムリテラルの終了のクウォートが存在しません。", kError,
     "The closing quote of the system literal is missing."},  // 32
    {u"パブリックリテラルの終了のクウォートが存在しません。", kError,
     "The closing quote of the public literal is missing."},                            // 33
    {u"システムリテラルが存在しません。", kError, "The system literal is missing."},    // 34
    {u"パブリックリテラルが存在しません。", kError, "The public literal is missing."},  // 35
    {u"#PCDATAの終了のカッコは')*'でなければいけません", kError,
     "The bracket closing #PCDATA must be ')*'"},                                         // 36
    {u"要素名が存在しません。", kError, "The element name is missing."},                  // 37
    {u"要素型宣言が存在しません。", kError, "The element type declaration is missing."},  // 38
    {u"要素型宣言の終了記号( '>' )がありません。", kError,
     "The terminator ( '>' ) of the element type declaration is missing."},              // 39
    {u"開始の丸カッコが存在しません。", kError, "The opening parenthesis is missing."},  // 40
    {u"終了の丸カッコが存在しません。", kError, "The closing parenthesis is missing."},  // 41
    {u"記法属性が存在しません。", kError, "The notation attribute is missing."},         // 42
    {u"OR記号( '|' )が存在しません。", kError, "The OR sign ( '|' ) is missing."},       // 43
    {u"列挙型名が存在しません。", kError, "The enumerated-type name is missing."},       // 44
    {u" #FIXEDがある場合はデフォルト値が必要です。", kError,
     "With #FIXED a default value is required."},                           // 45
    {u"属性名が存在しません。", kError, "The attribute name is missing."},  // 46
    {u"属性型宣言の終了記号が存在しません。", kError,
     "The terminator of the attribute-list declaration is missing."},                      // 47
    {u"属性型が存在しません。", kError, "The attribute type is missing."},                 // 48
    {u"デフォルト値定義が存在しません。", kError, "The default declaration is missing."},  // 49
    {u"パラメータ参照の書式が正しくありません。", kError,
     "The parameter-entity reference is malformed."},                              // 50
    {u"'NDATA'文字列が存在しません。", kError, "The string 'NDATA' is missing."},  // 51
    {u"記法名が存在しません。", kError, "The notation name is missing."},          // 52
    {u"実体宣言が存在しません。", kError, "The entity declaration is missing."},   // 53
    {u"実体宣言の終了記号が存在しません。", kError,
     "The terminator of the entity declaration is missing."},          // 54
    {u"'%'記号が存在しません。", kError, "The '%' sign is missing."},  // 55
    {u"外部実体宣言が存在しません。", kError,
     "The external entity declaration (external identifier) is missing."},  // 56
    {u"外部実体宣言か記法宣言が存在しません。", kError,
     "Neither an external identifier nor a notation identifier is present."},        // 57
    {u"ルート要素名が存在しません。", kError, "The root element name is missing."},  // 58
    {u"DOCTYPE宣言の終了記号が存在しません。", kError,
     "The terminator of the DOCTYPE declaration is missing."},                             // 59
    {u"要素内容モデルが存在しません。", kError, "The element content model is missing."},  // 60
    {u"http://から始まるシステムリテラルは未実装です。", kFatal,
     "System literals beginning with http:// are not implemented."},  // 61
    {u"一般エンティティを定義せずにエンティティ参照を使用しました。", kError,
     "An entity reference was used without the general entity being defined."},  // 62
};
static_assert(std::size(kErrorTable) == CParseError::eErrUndefinedEntity + 1);

const SErrorInfo* FindInfo(int code) {
    const bool known = code >= 0 && code < static_cast<int>(std::size(kErrorTable));
    return known ? &kErrorTable[code] : nullptr;
}

}  // namespace

// ---- CParseError ----

CParseError::CParseError(eError code) : m_code(static_cast<std::int8_t>(code)) {}

CParseError::CParseError(eError code, std::int32_t line, std::int32_t column,
                         const CVelStrW& source)
    : m_code(static_cast<std::int8_t>(code)),
      m_hasPosition(true),
      m_line(line),
      m_column(column),
      m_source(source) {}

CVelStrW CParseError::GetErrMsg() const {
    if (const SErrorInfo* info = FindInfo(m_code)) return CVelStrW(info->message);
    CVelStrW text;
    text.Format(u"予期せぬエラー。エラー番号が見つかりません。(%d)", static_cast<int>(m_code));
    return text;
}

CVelStr CParseError::GetEnglishErrMsg() const {
    if (const SErrorInfo* info = FindInfo(m_code)) return CVelStr(info->english);
    CVelStr text;
    text.Format("Unexpected error. The error number was not found. (%d)", static_cast<int>(m_code));
    return text;
}

CParseError::eErrLevel CParseError::GetErrLevel() const {
    const SErrorInfo* info = FindInfo(m_code);
    return info ? info->level : eErrLevelNone;
}

CVelStrW CParseError::MakeErrMsg() const {
    const CVelStrW message = GetErrMsg();
    CVelStrW text;
    if (!m_hasPosition) {
        text.Format(u"%s", message.c_str());
    } else if (m_line == -1 && m_column == -1) {
        // File errors: the source is the file's path.
        text.Format(u"%s(%s)", message.c_str(), m_source.c_str());
    } else {
        text.Format(u"(%d,%d):%s", static_cast<int>(m_line), static_cast<int>(m_column),
                    message.c_str());
    }
    return text;
}

bool CParseError::operator==(const CParseError& other) const {
    return this == &other ||
           (m_code == other.m_code && m_hasPosition == other.m_hasPosition &&
            m_line == other.m_line && m_column == other.m_column && m_source == other.m_source);
}

// ---- CParseErrorList ----

namespace {

[[noreturn]] void ThrowOutOfRange(const char* operation) {
    throw std::out_of_range(operation);
}

}  // namespace

void CParseErrorList::PushBack(const CParseError& error) {
    Insert(error, GetSize());
}

void CParseErrorList::Insert(const CParseError& error, int index) {
    // Kept: every index below the count is refused, and one above it names no position, so
    // Insert only ever appends.
    if (index != GetSize()) ThrowOutOfRange("CParseErrorList::Insert()");
    m_errors.insert(m_errors.begin() + index, error);
}

void CParseErrorList::Erase(int /*index*/) {
    // Kept: the guard refuses negative indexes and 0..count, which is every existing element,
    // and an index above the count names none. So nothing is ever erased: an error once
    // reported stays in the list that the host reads after the parse.
    ThrowOutOfRange("CParseErrorList::Erase()");
}

int CParseErrorList::Find(const CParseError& /*error*/, int /*start*/) const {
    // Kept: negative starts and 0..count are refused, and a start above the count lies past
    // every error, so Find answers -1 for every argument.
    return -1;
}

int CParseErrorList::GetCount(CParseError::eErrLevel level) const {
    return static_cast<int>(
        std::count_if(m_errors.begin(), m_errors.end(),
                      [level](const CParseError& e) { return e.GetErrLevel() == level; }));
}

void CParseErrorList::Append(const CParseErrorList& other) {
    m_errors.insert(m_errors.end(), other.m_errors.begin(), other.m_errors.end());
}

const CParseError& CParseErrorList::GetAt(int index) const {
    if (index < 0 || index >= GetSize()) ThrowOutOfRange("CParseErrorList::GetAt()");
    return m_errors[index];
}

}  // namespace vx
