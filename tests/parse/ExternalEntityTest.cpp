#include <filesystem>

#include "ParseTestUtil.h"
#include "vx/dom/XmlCharData.h"

namespace {

using namespace parsetest;
using vx::CVelStrW;

const std::string kTextDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

// A node list as text: elements as name(children), text and CDATA as their text.
std::u16string Tree(const vx::CXmlListContainer& nodes) {
    std::u16string out;
    for (int i = 0; i < nodes.GetSize(); ++i) {
        const vx::CXmlBaseObject* node = nodes.GetAt(i);
        if (node->GetClassType() == vx::eXmlElementType) {
            const auto* element = static_cast<const vx::CXmlElement*>(node);
            out += Text(element->GetName()) + u"(" + Tree(element->GetChildren()) + u")";
        } else {
            out += Text(static_cast<const vx::CXmlTextObject*>(node)->GetText()) + u"|";
        }
    }
    return out;
}

CVelStrW Literal(const std::string& path) {
    return CVelStrW(vx::CVelStr(path.c_str()));
}

class ExternalEntity : public ::testing::Test {
  protected:
    void SetUp() override {
        WriteFile(dir / "ext.dtd", kTextDecl + "\n<!ENTITY who \"world\">\n<!ELEMENT r ANY>\n");
        WriteFile(dir / "part.xml", kTextDecl + "<b>&who;</b>tail");
    }

    TempDir dir;
};

TEST_F(ExternalEntity, SubsetAndEntitiesExpandInTheTree) {
    WriteFile(dir / "doc.xml", kTextDecl +
                                   "\n<!DOCTYPE r SYSTEM \"ext.dtd\" [\n"
                                   "  <!ENTITY greet \"hello\">\n"
                                   "  <!ENTITY part SYSTEM \"part.xml\">\n"
                                   "  <!ENTITY same SYSTEM \"file:///part.xml\">\n"
                                   "  <!ATTLIST r fixed CDATA #FIXED \"&who;\">\n"
                                   "]>\n<r a=\"&greet; &who;\">&greet;&part;&who;&same;</r>");
    const Document doc = ParseFile(dir / "doc.xml");
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    const vx::CXmlElement& root = doc->GetRootElement();
    EXPECT_EQ(Text(root.GetAtt(CVelStrW(u"a")).GetValue()), u"hello world");
    EXPECT_EQ(Tree(root.GetChildren()), u"hello|b(world|)tail|world|b(world|)tail|");

    // The document offers the external entities; both spellings named the same file.
    const vx::CXmlParsedEntity* part = doc->GetParsedEntity(CVelStrW(u"part"));
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(Tree(part->GetContent()), u"b(world|)tail|");
    EXPECT_EQ(doc->GetParsedEntity(CVelStrW(u"greet")), nullptr);
    EXPECT_NE(doc->GetParsedEntity(CVelStrW(u"same")), nullptr);
}

// A literal in a nested file still resolves against the document's directory, and an internal
// entity declared later under the same name is the one referenced.
TEST_F(ExternalEntity, NestedFilesAndAnInternalEntityOfTheSameName) {
    std::filesystem::create_directory(dir / "sub");
    WriteFile(dir / "sub/deep.dtd",
              kTextDecl + "<!ENTITY who 'w'><!ENTITY deep SYSTEM 'part.xml'>");
    WriteFile(dir / "doc.xml",
              kTextDecl +
                  "<!DOCTYPE r SYSTEM 'sub/deep.dtd' [<!ENTITY x SYSTEM 'part.xml'>"
                  "<!ENTITY x 'inner'>]>"
                  "<r>&deep;&x;</r>");
    const Document doc = ParseFile(dir / "doc.xml");
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    EXPECT_EQ(Tree(doc->GetRootElement().GetChildren()), u"b(w|)tail|inner|");
    EXPECT_NE(doc->GetParsedEntity(CVelStrW(u"x")), nullptr);
}

// The entity loader on its own: UTF-16 needs no text declaration, UTF-8 does.
TEST_F(ExternalEntity, LoaderReadsOrSaysWhyNot) {
    WriteFile(dir / "wide.xml", std::string("\xFF\xFE<\0i\0/\0>\0x\0", 12));
    vx::CParse wide;
    const std::unique_ptr<vx::CXmlParsedEntity> entity(
        wide.ParseExtParsedEntityForFile(Literal(dir / "wide.xml")));
    ASSERT_NE(entity, nullptr);
    EXPECT_EQ(Tree(entity->GetContent()), u"i()x|");

    WriteFile(dir / "plain.xml", "<b/>");
    WriteFile(dir / "cond.dtd", kTextDecl + "<!ENTITY a 'x'><![IGNORE[]]>");
    const std::pair<std::string, D> cases[] = {
        {"http://example.com/" + (dir / "part.xml"), D{{eErrHttpNotImplemented, 0, 0}}},
        {dir / "missing.xml", D{{eErrFileOpen, 0, 0}}},
        {dir / "plain.xml", D{{eErrCodeTypeDetect, 0, 0}}},
        {dir / "cond.dtd", D{{eErrParseStopped, 0, 0}}},
    };
    for (const auto& [literal, diags] : cases) {
        vx::CParse parser;
        EXPECT_EQ(parser.ParseExtParsedEntityForFile(Literal(literal)), nullptr);
        EXPECT_EQ(Diags(parser.GetErrList()), diags) << literal;
    }
}

// Switched off, both loaders refuse every literal with code 5 before anything else: a file
// that would load, "http://", and a directory that would give code 2 once opened.
TEST_F(ExternalEntity, ExternalLoadingOffRefusesEveryLiteral) {
    EXPECT_TRUE(vx::IsExternalLoadingEnabled());
    std::filesystem::create_directory(dir / "folder");
    const std::string literals[] = {dir / "part.xml", "file:///part.xml", dir / "folder",
                                    "http://example.com/part.xml", ""};
    vx::SetExternalLoading(false);
    for (const std::string& literal : literals) {
        const CVelStrW wide = Literal(literal);
        vx::CParse entityParser;
        EXPECT_EQ(entityParser.ParseExtParsedEntityForFile(wide), nullptr);
        EXPECT_EQ(Diags(entityParser.GetErrList()), (D{{eErrUnsupported, 0, 0}})) << literal;
        vx::CParse subsetParser;
        EXPECT_FALSE(subsetParser.ParseExtSussetEntityForFile(wide));
        EXPECT_EQ(Diags(subsetParser.GetErrList()), (D{{eErrUnsupported, 0, 0}})) << literal;
    }
    WriteFile(dir / "doc.xml", kTextDecl + "<!DOCTYPE r SYSTEM 'ext.dtd'><r>&who;</r>");
    EXPECT_EQ(Diags(ParseFile(dir / "doc.xml")->GetErrList()),
              (D{{eErrUnsupported, 0, 0}, {eErrParseStopped, 0, 0}}));
    vx::SetExternalLoading(true);
    EXPECT_EQ(Diags(ParseFile(dir / "doc.xml")->GetErrList()), D{});
}

TEST_F(ExternalEntity, PositionsReferToTheExternalTextAndTheSourceIsRestored) {
    WriteFile(dir / "bad.dtd", kTextDecl + "\n\r<!ELEMENT e (a,b>");
    vx::CParse parser;
    parser.SetSource(CVelStrW(u"document"));
    EXPECT_FALSE(parser.ParseExtSussetEntityForFile(Literal(dir / "bad.dtd")));
    // Line ends are not normalised: the lone CR is white space on line 2, not a line end.
    EXPECT_EQ(Diags(parser.GetErrList()),
              (D{{eErrNoCloseParen, 2, 18}, {eErrNoElementName, 2, 18}, {eErrParseStopped, 0, 0}}));
    EXPECT_EQ(Text(parser.GetSource()), u"document");
}

}  // namespace
