#pragma once
// The reading side's entry point: a file or a wide buffer in, a new CXmlDocument out, holding
// the tree and every diagnostic of the run. Malformed input never throws; exceptions (misuse,
// nesting beyond GetNestingLimit()) are logged and passed on to the host. Any number of threads
// may parse at once, each with a CParse of its own or through the static factories.
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "vx/diag/ParseError.h"
#include "vx/parse/Expressions.h"
#include "vx/platform/CodeConv.h"
#include "vx/platform/Guard.h"
#include "vx/platform/Logger.h"
#include "vx/text/CommonFunc.h"
#include "vx/text/ShortTextCache.h"
#include "vx/text/VelStr.h"

namespace vx {

class CXmlDocument;
class CXmlDtd;
class CXmlElement;
class CXmlListContainer;
class CXmlParsedEntity;

class CParse {
  public:
    CParse();
    CParse(const CParse&) = delete;
    CParse& operator=(const CParse&) = delete;
    virtual ~CParse();

    // Each returns a new document, never null, owned by the caller.
    static CXmlDocument* ParseForFile(CVelStr fileName);
    static CXmlDocument* ParseForBuf(CVelStrW text);
    // Adds to this parser's errors and productions: use a fresh parser for each document.
    CXmlDocument* ParseForBuf(CVelStrW text, CVelStr fileName);

    // The file's encoding from its first bytes and, for "<?xm", from the declaration's
    // encoding="..." (exact, upper-cased). False when the file cannot be read far enough.
    static bool CheckCodeType(CVelStr fileName, bool& supported, vcc::eCodeType& code);
    // A file's text as wide text, decoded as ParseForFile and external entities decode it
    // (line ends as written), or the code of the step that failed.
    static CParseError::eError LoadWideText(const CVelStr& fileName, CVelStrW& text);
    // The path of the file a system literal names, for the document documentName; false for
    // "http://", whose resources are never fetched.
    static bool ResolveSystemLiteral(const CVelStrW& literal, const CVelStr& documentName,
                                     CVelStr& path);

    // The document production over the source; the position after the last text matched.
    int Interpreter();

    void AddError(CParseError::eError code);
    // position is an index into the source; the line index is built on first use.
    void AddError(CParseError::eError code, int position);
    void AddError(CParseError::eError code, int line, int column);
    CParseErrorList GetErrList() const;

    CVelStrW GetSource() const;
    // The file being parsed; empty for a buffer.
    const CVelStr& GetFileName() const { return m_fileName; }
    // What the productions read, in place.
    const CVelStrW& Source() const { return m_source; }
    // Replaces the text the productions read (an external subset is read by the same parser).
    void SetSource(CVelStrW text);
    CXmlDtd* GetDtd() const { return m_dtd; }

    // Attribute values get a copy of each internal entity they refer to, and the tree a copy
    // of each external one, so a few references could ask for unbounded memory. Adds units
    // (of text, or kNodeUnits per node) to what this parse has copied; false once that passes
    // the allowance: GetExpansionLimit() units, or four times the source if larger (at most
    // 1G units); none when the limit is 0.
    bool ChargeExpansion(std::int64_t units);
    static constexpr int kNodeUnits = 16;  // a node takes about the memory of 16 units of text

    // Short runs of character data recur; equal ones share one string.
    CShortTextCache& Texts() { return m_texts; }

    // Content is matched but not recorded while set. The library never sets it.
    bool IsRecordSuppressed() const { return m_recordSuppressed; }
    void SetRecordSuppressed(bool suppressed) { m_recordSuppressed = suppressed; }

    // External entities named by a system literal, read for the document being parsed: a
    // relative path is resolved against the document's directory, "file:///" is cut off and
    // "http://" refused (code 61); with external loading off every literal is refused (code 5).
    // Problems go to this parser's error list.
    // The entity's content, owned by the caller, or null.
    CXmlParsedEntity* ParseExtParsedEntityForFile(CVelStrW systemLiteral);
    // Reads the external subset's declarations into this parser's DTD; true when all of the
    // file matched.
    bool ParseExtSussetEntityForFile(CVelStrW systemLiteral);

    bool MakeXmlTree(CXmlDocument& document);
    bool SetElementInfo(CXmlElement& element, CParseElement& source);
    bool SetElementContentInfo(CXmlListContainer* target, CParseContent* content);

    // One level of element nesting while the grammar recurses; a level deeper than
    // GetNestingLimit() throws std::runtime_error("dummy").
    class CNestingScope {
      public:
        explicit CNestingScope(CParse& parser);
        ~CNestingScope() { --m_parser.m_depth; }
        CNestingScope(const CNestingScope&) = delete;
        CNestingScope& operator=(const CNestingScope&) = delete;

      private:
        CParse& m_parser;
    };

    // Sets the element nesting depth for one scope, where the productions take over from the
    // single-pass reader inside an element.
    class CDepthAt {
      public:
        CDepthAt(CParse& parser, int depth) : m_parser(parser), m_saved(parser.m_depth) {
            m_parser.m_depth = depth;
        }
        ~CDepthAt() { m_parser.m_depth = m_saved; }
        CDepthAt(const CDepthAt&) = delete;
        CDepthAt& operator=(const CDepthAt&) = delete;

      private:
        CParse& m_parser;
        int m_saved;
    };

  private:
    friend class CSinglePassReader;

    // The rest of an element's content, matched by the productions after the single-pass
    // reader stopped inside it: the tree builder appends it to the element.
    struct CReadTail {
        CXmlElement* element;
        int depth;  // of the element's content
        std::unique_ptr<CParseContent> content;
    };

    // The shape of every public operation: a logged scope, and the guard that logs an
    // exception on its way to the host.
    template <class Body>
    static decltype(auto) RunLogged(int line, const char* function, Body&& body) {
        vel::AutoFuncNameLogger scope("Parse", line, function);
        return vel::Guarded("Parse", line, function, std::forward<Body>(body));
    }
    // The same for an operation that reads or builds a document: what it makes comes from
    // the pages.
    template <class Body>
    static decltype(auto) RunPublic(int line, const char* function, Body&& body) {
        vel::CPageScope pages;
        return RunLogged(line, function, std::forward<Body>(body));
    }

    // Runs production from 0 over the text of the file that systemLiteral names, as this
    // parser's source; the source is restored afterwards. False unless all of it matched.
    bool RunOnExternalFile(CAbstractExpression& production, const CVelStrW& systemLiteral);

    int MatchDocument();
    // The bodies of SetElementInfo and SetElementContentInfo, inline in the tree builder (their
    // only user): the recursion passes through the logged wrappers for every element.
    inline bool FillElement(CXmlElement& element, CParseElement& source);
    inline bool FillContent(CXmlListContainer* target, CParseContent* content);
    // The root element through the single-pass reader, into the document ParseForBuf fills;
    // false when the productions are to read it.
    bool ReadRoot(int start, int& end, bool& matched);
    bool BuildReadTails();
    bool AppendItem(CXmlListContainer& target, CAbstractExpression& item);
    bool AppendElement(CXmlListContainer& target, CParseElement& source);
    bool AppendReference(CXmlListContainer& target, const CParseReference& reference);
    bool AppendEntity(CXmlListContainer& target, const CVelStrW& name);

    CVelStr m_fileName;
    CVelStrW m_source;
    CParseErrorList m_errors;
    CParseXMLDecl m_xmlDecl;
    CParseMiscList m_prologMisc;
    CParseMiscList m_doctypeMisc;
    CParseElement m_root;
    CParseMiscList m_trailingMisc;
    CXmlDtd* m_dtd;  // owned
    bool m_recordSuppressed = false;
    std::unique_ptr<CLineIndex> m_lineIndex;  // of m_source, built on the first positioned error
    int m_depth = 0;
    std::int64_t m_expansion = 0;  // units charged by ChargeExpansion
    CShortTextCache m_texts;
    CXmlElement* m_readTarget = nullptr;  // the root of the document ParseForBuf fills
    bool m_rootRead = false;              // m_readTarget holds the root, read in one pass
    std::vector<CReadTail> m_readTails;   // what the productions matched of it, in order
};

}  // namespace vx
