// Input made to hurt: each case must end in diagnostics or the designed exception, in time and
// memory that follow the size of the input, and leave nothing behind (the sanitizer build checks
// for leaks at exit).
#include <algorithm>
#include <string>

#include "ParseTestUtil.h"
#include "vx/dom/XmlCharData.h"

namespace {

using namespace parsetest;
using vx::CVelStrW;

const std::string kDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

std::u16string Utf16(const std::string& text) {
    return Text(CVelStrW(vx::CVelStr(text.c_str())));
}

std::string Repeat(const std::string& text, int count) {
    std::string out;
    out.reserve(text.size() * static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        out += text;
    return out;
}

std::string Nest(const std::string& inner, int depth) {
    return Repeat("<e>", depth) + inner + Repeat("</e>", depth);
}

// Element depth below nodes.
int Depth(const vx::CXmlListContainer& nodes) {
    int depth = 0;
    for (int i = 0; i < nodes.GetSize(); ++i) {
        if (nodes.GetAt(i)->GetClassType() != vx::eXmlElementType) continue;
        const auto* element = static_cast<const vx::CXmlElement*>(nodes.GetAt(i));
        depth = std::max(depth, 1 + Depth(element->GetChildren()));
    }
    return depth;
}

// Every entry point meets the limit with the designed exception: a file, a fragment, and an
// external entity, whose content counts where it is referenced, however it was put together.
TEST(HostileInput, NestingPastTheLimitThrowsFromEveryEntryPoint) {
    TempDir dir;
    const LogCapture log;
    const NestingLimit limit(20);
    const Document fits = ParseBuf(Utf16(kDecl + Nest("", 20)));
    EXPECT_EQ(Diags(fits->GetErrList()), D{});
    EXPECT_EQ(Depth(fits->GetRootElement().GetChildren()) + 1, 20);
    EXPECT_EQ(Thrown([&] { ParseBuf(Utf16(kDecl + Nest("", 21))); }), "dummy");
    // Logged on its way out of the public operation.
    EXPECT_TRUE(log.HasLine(R"(Parse\(\d+\): CParse::ParseForBuf: 例外発生\(dummy\))"));
    WriteFile(dir / "deep.xml", kDecl + Nest("", 21));
    EXPECT_EQ(Thrown([&] { ParseFile(dir / "deep.xml"); }), "dummy");
    vx::CXmlElement element(nullptr);
    EXPECT_EQ(Thrown([&] { element.ParseFromMemory(Wide(u"<a><b><c/></b></a>"), nullptr); }), "");
    EXPECT_EQ(Thrown([&] { element.ParseFromMemory(Wide(Utf16(Nest("", 21))), nullptr); }),
              "dummy");
    EXPECT_EQ(Text(element.GetName()), u"a");

    // inner.xml is 10 deep; outer.xml puts it 5 deeper.
    WriteFile(dir / "inner.xml", kDecl + Nest("x", 10));
    WriteFile(dir / "outer.xml", kDecl + Nest("&inner;", 5));
    const std::string subset =
        "<!DOCTYPE e [<!ENTITY inner SYSTEM 'inner.xml'>"
        "<!ENTITY outer SYSTEM 'outer.xml'>]>";
    const std::string fitsFile = dir / "fits.xml", past = dir / "past.xml";
    WriteFile(fitsFile, kDecl + subset + Nest("&outer;", 5));
    WriteFile(past, kDecl + subset + Nest("&outer;", 6));
    const Document document = ParseFile(fitsFile);
    EXPECT_EQ(Diags(document->GetErrList()), D{});
    EXPECT_EQ(Depth(document->GetRootElement().GetChildren()) + 1, 20);
    EXPECT_EQ(Thrown([&] { ParseFile(past); }), "dummy");
    // References side by side add nothing to the depth. The check is made where an entity is
    // built too, so that no content deeper than the limit is ever kept.
    WriteFile(dir / "outer.xml", kDecl + Nest("&inner;&inner;", 5));
    EXPECT_EQ(Diags(ParseFile(fitsFile)->GetErrList()), D{});
    WriteFile(dir / "outer.xml", kDecl + Nest("&inner;", 11));
    EXPECT_EQ(Thrown([&] { ParseFile(fitsFile); }), "dummy");
}

// The default limit is within what the parser's recursion can take.
TEST(HostileInput, NestingAtTheDefaultLimitParses) {
    EXPECT_EQ(DiagsOf(Utf16(kDecl + Nest("", vx::kDefaultNestingLimit))), D{});
}

// Attributes a0='v' a1='v' ... in a tag left open.
std::u16string OpenTag(int count) {
    std::string tag = "<?xml version=\"1.0\"?><r";
    for (int i = 0; i < count; ++i)
        tag += " a" + std::to_string(i) + "='v'";
    return Utf16(tag);
}

// A tag that repeats name at its end gets code 17 after the repeating attribute, from both
// readings of the tag, as from the scan that the set of names replaced.
void ExpectRepeatedAtTheEnd(const std::u16string& tag, const std::u16string& name) {
    const std::u16string text = tag + u" " + name + u"='w'/>";
    D expected = Twice(D{{eErrDuplicateAtt, 1, static_cast<int>(text.size()) - 1}});
    expected.push_back({eErrParseStopped, 0, 0});
    EXPECT_EQ(DiagsOf(text), expected) << Narrow(name);
}

// Past a few attributes the duplicate check keeps a set of names: parsing and building stay
// linear, and a repeated name gets the diagnostics it always got, wherever its first use was.
TEST(HostileInput, ATagWithAHundredThousandAttributes) {
    constexpr int kCount = 100000;
    const std::u16string tag = OpenTag(kCount);
    const Document document = ParseBuf(tag + u"/>");
    EXPECT_EQ(Diags(document->GetErrList()), D{});
    vx::CSmallVector<CVelStrW> names;
    const vx::CXmlElement& root = document->GetRootElement();
    root.GetAttNameList(names);
    ASSERT_EQ(names.GetSize(), kCount);
    EXPECT_EQ(Text(root.GetAtt(names[kCount - 1]).GetValue()), u"v");
    ExpectRepeatedAtTheEnd(tag, u"a0");

    // Names on either side of where the set takes over.
    const std::u16string few = OpenTag(20);
    for (const char16_t* name : {u"a0", u"a14", u"a15", u"a16", u"a19"})
        ExpectRepeatedAtTheEnd(few, name);
    ExpectRepeatedAtTheEnd(OpenTag(2), u"a1");
}

// A notation with a lone public literal keeps the error of its first reading and is then
// accepted, so each such line adds one diagnostic and the parse goes on.
TEST(HostileInput, AMillionDiagnostics) {
    constexpr int kLines = 1000000;
    std::u16string text = u"<?xml version=\"1.0\"?><!DOCTYPE r [\n";
    for (int i = 0; i < kLines; ++i)
        text += u"<!NOTATION n PUBLIC \"x\">\n";
    const Document document = ParseBuf(text + u"]><r/>");
    const vx::CParseErrorList errors = document->GetErrList();
    ASSERT_EQ(errors.GetSize(), kLines);
    const vx::CParseError& last = errors.GetAt(kLines - 1);
    EXPECT_EQ((Diag{last.GetErrCode(), last.GetLine(), last.GetColumn()}),
              (Diag{eErrSpaceRequired, kLines + 1, 24}));
    EXPECT_EQ(errors.GetCount(vx::CParseError::eErrLevelError), kLines);
    EXPECT_EQ(Text(document->GetRootElement().GetName()), u"r");
}

// One text node of 100 MB (50M units). The scan of character data is linear, and the text
// is taken from the source in one piece.
TEST(HostileInput, AHundredMegabyteTextNode) {
    constexpr int kUnits = 50 * 1024 * 1024;
    std::u16string text = u"<?xml version=\"1.0\"?><r>";
    text.append(kUnits, u'x');
    text += u"&amp;</r>";
    Document document = ParseBuf(text);
    text.clear();
    EXPECT_EQ(Diags(document->GetErrList()), D{});
    const vx::CXmlListContainer& nodes = document->GetRootElement().GetChildren();
    ASSERT_EQ(nodes.GetSize(), 2);
    const CVelStrW node = static_cast<const vx::CXmlCData*>(nodes.GetAt(0))->GetText();
    ASSERT_EQ(node.GetLength(), kUnits);
    EXPECT_EQ(node[kUnits - 1], u'x');
}

// An entity's value is stored as written: references in it are never expanded again, so the
// billion-laughs shape stays a few hundred characters.
TEST(HostileInput, EntityValuesThatReferToOtherEntitiesAreExpandedOnce) {
    std::string subset = "<!ENTITY lol0 'lol'>";
    for (int level = 1; level < 10; ++level) {
        subset += "<!ENTITY lol" + std::to_string(level) + " '" +
                  Repeat("&lol" + std::to_string(level - 1) + ";", 10) + "'>";
    }
    const Document document =
        ParseBuf(Utf16(kDecl + "<!DOCTYPE r [" + subset + "]><r a='&lol9;'>&lol9;&lol9;</r>"));
    EXPECT_EQ(Diags(document->GetErrList()), D{});
    const vx::CXmlElement& root = document->GetRootElement();
    const std::u16string lol8Ten = Utf16(Repeat("&lol8;", 10));
    EXPECT_EQ(Text(root.GetAtt(CVelStrW(u"a")).GetValue()), lol8Ten);
    EXPECT_EQ(Text(root.GetText()), lol8Ten + lol8Ten);
}

// References to a long value in attribute values would copy it each time: beyond what the
// parse allows (here 256 copies of 64K units) the reference gets code 4. In content, the
// nodes share the value, so any number of references is fine.
TEST(HostileInput, AttributeValuesCopyEntitiesOnlyUpToAnAllowance) {
    const std::u16string head =
        u"<?xml version=\"1.0\"?><!DOCTYPE r [<!ENTITY e '" + std::u16string(65536, u'x') + u"'>]>";
    const std::u16string references = Utf16(Repeat("&e;", 256));
    const Document fits = ParseBuf(head + u"<r a='" + references + u"'>" + references + u"</r>");
    EXPECT_EQ(Diags(fits->GetErrList()), D{});
    EXPECT_EQ(fits->GetRootElement().GetAtt(CVelStrW(u"a")).GetValue().GetLength(), 256 * 65536);
    EXPECT_EQ(fits->GetRootElement().GetChildren().GetSize(), 256);

    // The second reading of the failed tag finds the allowance spent already.
    const std::u16string past = head + u"<r a='" + references + u"&e;'/>";
    const int column = static_cast<int>(past.rfind(u"&e;")) + 1;
    const Document refused = ParseBuf(past);
    const D diags = Diags(refused->GetErrList());
    ASSERT_GE(diags.size(), 3u);
    EXPECT_EQ(D(diags.begin(), diags.begin() + 2),
              (D{{eErrNoMemory, 1, column}, {eErrAttValue, 1, column}}));
    EXPECT_EQ(diags.back(), (Diag{eErrParseStopped, 0, 0}));
    EXPECT_TRUE(refused->GetRootElement().GetName().IsEmpty());

    // A host that trusts its input lifts the limit; one that sets its own gets at least four
    // times the document (here four copies).
    vx::SetExpansionLimit(0);
    const Document lifted = ParseBuf(past);
    vx::SetExpansionLimit(1000);
    const D four = DiagsOf(head + u"<r a='&e;&e;&e;&e;'/>");
    const D five = DiagsOf(head + u"<r a='&e;&e;&e;&e;&e;'/>");
    vx::SetExpansionLimit(vx::kDefaultExpansionLimit);
    EXPECT_EQ(Diags(lifted->GetErrList()), D{});
    EXPECT_EQ(lifted->GetRootElement().GetAtt(CVelStrW(u"a")).GetValue().GetLength(), 257 * 65536);
    EXPECT_EQ(four, D{});
    ASSERT_FALSE(five.empty());
    EXPECT_EQ(five.front().code, 4);
}

// External entities are parsed when declared, with the references to those declared before
// them expanded: ten files of ten references each would make a billion nodes. Their copies
// count against the same allowance, so the declaration that passes it fails with code 4.
TEST(HostileInput, ExternalEntitiesThatReferToEachOtherCannotMultiply) {
    TempDir dir;
    WriteFile(dir / "e0.xml", kDecl + "<a/>");
    std::string subset = "<!ENTITY e0 SYSTEM 'e0.xml'>";
    for (int level = 1; level < 10; ++level) {
        const std::string name = "e" + std::to_string(level);
        WriteFile(dir / (name + ".xml"),
                  kDecl + Repeat("&e" + std::to_string(level - 1) + ";", 10));
        subset += "<!ENTITY " + name + " SYSTEM '" + name + ".xml'>";
    }
    const std::string path = dir / "doc.xml";
    WriteFile(path, kDecl + "<!DOCTYPE r [" + subset + "]><r>&e9;</r>");
    const Document document = ParseFile(path);
    EXPECT_EQ(Diags(document->GetErrList()), (D{{eErrNoMemory, 0, 0}, {eErrParseStopped, 0, 0}}));

    // Five levels, a hundred thousand nodes, are well within it.
    WriteFile(path, kDecl + "<!DOCTYPE r [" + subset.substr(0, subset.find("<!ENTITY e6")) +
                        "]><r>&e5;</r>");
    const Document fits = ParseFile(path);
    EXPECT_EQ(Diags(fits->GetErrList()), D{});
    EXPECT_EQ(fits->GetRootElement().GetChildren().GetSize(), 100000);
}

}  // namespace
