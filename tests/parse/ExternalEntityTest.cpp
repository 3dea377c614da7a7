#include <filesystem>
#include <fstream>

#include "ParseTestUtil.h"
#include "vx/dom/XmlCharData.h"
#include "vx/platform/Package.h"

namespace {

using namespace parsetest;
using vx::CVelStrW;
using D = std::vector<Diag>;

const std::string kTextDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

void Write(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

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

Document ParseFile(const std::string& path) {
    return Document(vx::CParse::ParseForFile(vx::CVelStr(path.c_str())));
}

class ExternalEntity : public ::testing::Test {
  protected:
    void SetUp() override {
        Write(dir / "ext.dtd", kTextDecl + "\n<!ENTITY who \"world\">\n<!ELEMENT r ANY>\n");
        Write(dir / "part.xml", kTextDecl + "<b>&who;</b>tail");
    }

    TempDir dir;
};

TEST_F(ExternalEntity, SubsetAndEntitiesExpandInTheTree) {
    Write(dir / "doc.xml", kTextDecl +
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

TEST_F(ExternalEntity, NestedFilesResolveAgainstTheDocumentsDirectory) {
    std::filesystem::create_directory(dir / "sub");
    Write(dir / "sub/deep.dtd", kTextDecl + "<!ENTITY who 'w'><!ENTITY deep SYSTEM 'part.xml'>");
    Write(dir / "doc.xml", kTextDecl + "<!DOCTYPE r SYSTEM 'sub/deep.dtd'><r>&deep;</r>");
    const Document doc = ParseFile(dir / "doc.xml");
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    EXPECT_EQ(Tree(doc->GetRootElement().GetChildren()), u"b(w|)tail|");
}

TEST_F(ExternalEntity, AnInternalEntityOfTheSameNameIsFoundFirst) {
    Write(dir / "doc.xml", kTextDecl +
                               "<!DOCTYPE r [<!ENTITY who 'w'><!ENTITY x SYSTEM 'part.xml'>"
                               "<!ENTITY x 'inner'>]><r>&x;</r>");
    const Document doc = ParseFile(dir / "doc.xml");
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    EXPECT_EQ(Tree(doc->GetRootElement().GetChildren()), u"inner|");
    EXPECT_NE(doc->GetParsedEntity(CVelStrW(u"x")), nullptr);
}

TEST_F(ExternalEntity, AFailedLoadFailsTheDeclaration) {
    Write(dir / "doc.xml", kTextDecl + "<!DOCTYPE r [<!ENTITY e SYSTEM 'none.xml'>]><r/>");
    EXPECT_EQ(Diags(ParseFile(dir / "doc.xml")->GetErrList()), (D{{2, 0, 0}, {7, 0, 0}}));
    Write(dir / "doc.xml", kTextDecl + "<!DOCTYPE r SYSTEM 'none.dtd'><r/>");
    EXPECT_EQ(Diags(ParseFile(dir / "doc.xml")->GetErrList()), (D{{2, 0, 0}, {7, 0, 0}}));
}

TEST_F(ExternalEntity, LoaderFailures) {
    Write(dir / "plain.xml", "<b/>");  // UTF-8 without a text declaration
    Write(dir / "cond.dtd", kTextDecl + "<!ENTITY a 'x'><![IGNORE[]]>");
    const std::pair<std::string, D> cases[] = {
        {"http://example.com/" + (dir / "part.xml"), D{{61, 0, 0}}},
        {dir / "none.xml", D{{2, 0, 0}}},
        {dir / "plain.xml", D{{3, 0, 0}}},
        {dir / "cond.dtd", D{{7, 0, 0}}},
    };
    for (const auto& [literal, diags] : cases) {
        vx::CParse parser;
        EXPECT_EQ(parser.ParseExtParsedEntityForFile(CVelStrW(vx::CVelStr(literal.c_str()))),
                  nullptr);
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
        const CVelStrW wide(vx::CVelStr(literal.c_str()));
        vx::CParse entityParser;
        EXPECT_EQ(entityParser.ParseExtParsedEntityForFile(wide), nullptr);
        EXPECT_EQ(Diags(entityParser.GetErrList()), (D{{5, 0, 0}})) << literal;
        vx::CParse subsetParser;
        EXPECT_FALSE(subsetParser.ParseExtSussetEntityForFile(wide));
        EXPECT_EQ(Diags(subsetParser.GetErrList()), (D{{5, 0, 0}})) << literal;
    }
    Write(dir / "doc.xml", kTextDecl + "<!DOCTYPE r SYSTEM 'ext.dtd'><r>&who;</r>");
    EXPECT_EQ(Diags(ParseFile(dir / "doc.xml")->GetErrList()), (D{{5, 0, 0}, {7, 0, 0}}));
    vx::SetExternalLoading(true);
    EXPECT_EQ(Diags(ParseFile(dir / "doc.xml")->GetErrList()), D{});
}

TEST_F(ExternalEntity, PositionsReferToTheExternalTextAndTheSourceIsRestored) {
    Write(dir / "bad.dtd", kTextDecl + "\n\r<!ELEMENT e (a,b>");
    vx::CParse parser;
    parser.SetSource(CVelStrW(u"document"));
    const std::string path = dir / "bad.dtd";
    EXPECT_FALSE(parser.ParseExtSussetEntityForFile(CVelStrW(vx::CVelStr(path.c_str()))));
    // Line ends are not normalised: the lone CR is white space on line 2, not a line end.
    EXPECT_EQ(Diags(parser.GetErrList()), (D{{41, 2, 18}, {37, 2, 18}, {7, 0, 0}}));
    EXPECT_EQ(Text(parser.GetSource()), u"document");
}

TEST_F(ExternalEntity, Utf16EntityWithoutTextDeclaration) {
    Write(dir / "wide.xml", std::string("\xFF\xFE<\0i\0/\0>\0x\0", 12));
    vx::CParse parser;
    const std::string path = dir / "wide.xml";
    const std::unique_ptr<vx::CXmlParsedEntity> entity(
        parser.ParseExtParsedEntityForFile(CVelStrW(vx::CVelStr(path.c_str()))));
    ASSERT_NE(entity, nullptr);
    EXPECT_EQ(Tree(entity->GetContent()), u"i()x|");
}

}  // namespace
