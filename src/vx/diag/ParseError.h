#pragma once
// Diagnostics of a parse: one CParseError per problem found, collected in order in a
// CParseErrorList. Malformed input is reported here, never by exceptions.
#include <cstdint>
#include <deque>

#include "vx/text/StringBuffer.h"
#include "vx/text/VelStr.h"

namespace vx {

class CParseError {
  public:
    // Codes 0..62. Any other value (cast in by a caller) is an unknown code: it gets the
    // "unexpected error" message and level eErrLevelNone.
    enum eError : int {
        eErrNone = 0,
        eErrFileNotExist,
        eErrFileOpen,
        eErrCodeTypeDetect,
        eErrNoMemory,
        eErrUnsupported,
        eErrCodeConvert,
        eErrParseStopped,
        eErrNoXmlDecl,
        eErrNoVersionInfo,
        eErrSpaceRequired,  // 10
        eErrVersionNum,
        eErrUnexpectedAttValue,
        eErrXmlDeclEnd,
        eErrCommentEnd,
        eErrUnexpectedChar,
        eErrPIEnd,
        eErrDuplicateAtt,
        eErrEmptyElemTagEnd,
        eErrUnexpectedEnd,
        eErrNoETag,  // 20
        eErrCharRef,
        eErrEntityRefEnd,
        eErrNoEntityName,
        eErrNoEq,
        eErrAttValueEnd,
        eErrAttValue,
        eErrMakeTree,
        eErrUnknownElemType,
        eErrTagMismatch,
        eErrReference,  // 30
        eErrCDEnd,
        eErrSystemLiteralEnd,
        eErrPubidLiteralEnd,
        eErrNoSystemLiteral,
        eErrNoPubidLiteral,
        eErrMixedEnd,
        eErrNoElementName,
        eErrNoElementDecl,
        eErrElementDeclEnd,
        eErrNoOpenParen,  // 40
        eErrNoCloseParen,
        eErrNoNotationType,
        eErrNoOr,
        eErrNoEnumeration,
        eErrFixedNeedsDefault,
        eErrNoAttName,
        eErrAttlistDeclEnd,
        eErrNoAttType,
        eErrNoDefaultDecl,
        eErrPEReference,  // 50
        eErrNoNData,
        eErrNoNotationName,
        eErrNoEntityDecl,
        eErrEntityDeclEnd,
        eErrNoPercent,
        eErrNoExternalID,
        eErrNoExternalOrNotationID,
        eErrNoRootName,
        eErrDoctypeDeclEnd,
        eErrNoContentSpec,  // 60
        eErrHttpNotImplemented,
        eErrUndefinedEntity,
    };

    enum eErrLevel : std::uint8_t {
        eErrLevelFatal = 0,
        eErrLevelError,
        eErrLevelWarning,
        eErrLevelNotice,
        eErrLevelNone,
    };

    CParseError() = default;
    explicit CParseError(eError code);
    CParseError(eError code, std::int32_t line, std::int32_t column, const CVelStrW& source);
    CParseError(const CParseError&) = default;
    CParseError& operator=(const CParseError&) = default;
    virtual ~CParseError() = default;

    // The code's message; an unknown code gives the "unexpected error" text with its number.
    CVelStrW GetErrMsg() const;
    // The code's meaning in English (UTF-8), for hosts whose users do not read Japanese.
    CVelStr GetEnglishErrMsg() const;
    eErrLevel GetErrLevel() const;
    // The display text: the bare message without a position, "message(source)" for a
    // position of (-1,-1) (file errors, source = path), else "(line,column):message".
    CVelStrW MakeErrMsg() const;

    bool operator==(const CParseError& other) const;

    eError GetErrCode() const noexcept { return static_cast<eError>(m_code); }
    bool HasPosition() const noexcept { return m_hasPosition; }
    std::int32_t GetLine() const noexcept { return m_line; }
    std::int32_t GetColumn() const noexcept { return m_column; }
    CVelStrW GetSource() const { return m_source; }

  private:
    std::int8_t m_code = eErrNone;  // 8 bits, as stored by the original library
    bool m_hasPosition = false;
    std::int32_t m_line = 0;
    std::int32_t m_column = 0;
    CVelStrW m_source;  // the parsed text (shared, not copied) or a file's path
};

class CParseErrorList {
  public:
    CParseErrorList() = default;
    CParseErrorList(const CParseErrorList&) = default;
    CParseErrorList& operator=(const CParseErrorList&) = default;
    virtual ~CParseErrorList() = default;

    // Appends: Insert at the count.
    void PushBack(const CParseError& error);
    // Only index == GetSize() is accepted (so it appends); any other index throws
    // std::out_of_range("CParseErrorList::Insert()") and leaves the list unchanged.
    void Insert(const CParseError& error, int index);
    // Refuses every index with std::out_of_range("CParseErrorList::Erase()"): errors once
    // reported are never removed one by one.
    void Erase(int index);
    // Always -1: its guards reject every start at or below the count.
    int Find(const CParseError& error, int start) const;
    // Number of errors whose GetErrLevel() is level.
    int GetCount(CParseError::eErrLevel level) const;

    // Appends every error of other, in order.
    void Append(const CParseErrorList& other);
    void Clear() noexcept { m_errors.clear(); }

    int GetSize() const noexcept { return static_cast<int>(m_errors.size()); }
    bool IsEmpty() const noexcept { return m_errors.empty(); }
    // Throws std::out_of_range("CParseErrorList::GetAt()") for an index outside 0..size-1.
    const CParseError& GetAt(int index) const;

  private:
    std::deque<CParseError> m_errors;
};

}  // namespace vx
