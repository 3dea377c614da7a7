#include <gtest/gtest.h>

#include <stdexcept>

#include "DomTestSupport.h"
#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlDocument.h"

using namespace vx;
using vxtest::Source;
using vxtest::ThrownText;
using vxtest::Utf8;

namespace {

CXmlParsedEntity Entity(const char16_t* text) {
    CXmlParsedEntity entity(nullptr);
    entity.GetContent().PushBack(CXmlCData(nullptr))->SetText(text);
    return entity;
}

}  // namespace

TEST(Document, CopyAndAssignmentLeaveTheDtdBehind) {
    vxtest::LogCapture log;
    CXmlDocument source(nullptr);
    EXPECT_EQ(Utf8(source.GetRetCode()), "\r\n");
    source.SetRetCode(u"\n");
    source.GetRootElement().SetText(u"t");
    source.GetPrologContent().PushBack(CXmlCData(nullptr));
    source.GetDtd().setInternalGE(u"e", u"v");
    source.SetParsedEntity(u"pe", Entity(u"x"));
    source.AddError(CParseError::eErrNoETag);

    CXmlDocument copy(source);
    EXPECT_TRUE(log.HasLine(R"(XmlDocument\(\d+\): CXmlDocument::CXmlDocument: )"
                            "CXmlDtdのコピーが発生しましたが未実装です"));
    EXPECT_FALSE(copy.GetDtd().hasInternalGE(u"e"));
    EXPECT_EQ(copy.GetDtd().GetParent(), &copy);
    EXPECT_EQ(copy.GetRootElement().GetParent(), &copy);
    EXPECT_EQ(copy.GetPrologContent().GetAt(0)->GetDocument(), &copy);
    EXPECT_EQ(copy.GetRootElement().GetChildren().GetAt(0)->GetDocument(), &copy);
    EXPECT_EQ(Utf8(copy.GetRetCode()), "\n");
    EXPECT_EQ(copy.GetErrList().GetSize(), 1);
    const CXmlParsedEntity* entity = copy.GetParsedEntity(u"pe");
    ASSERT_NE(entity, nullptr);
    EXPECT_NE(entity, source.GetParsedEntity(u"pe"));
    EXPECT_EQ(entity->GetContent().GetParent(), entity);

    CXmlDocument target(nullptr);
    target.GetDtd().setInternalGE(u"own", u"kept");
    target.SetParsedEntity(u"old", Entity(u"gone"));
    target = source;
    EXPECT_TRUE(log.HasLine(R"(XmlDocument\(\d+\): CXmlDocument::operator =: )"
                            "CXmlDtdのコピーが発生しましたが未実装です"));
    EXPECT_EQ(Utf8(target.GetDtd().getInternalGE(u"own")), "kept");
    EXPECT_EQ(target.GetParsedEntity(u"old"), nullptr);
    EXPECT_NE(target.GetParsedEntity(u"pe"), nullptr);
    EXPECT_EQ(target.GetRootElement().GetChildren().GetAt(0)->GetDocument(), &target);
    EXPECT_EQ(Source(target), "<>t</>");
}

TEST(Dtd, EntityTables) {
    CXmlDtd dtd(nullptr);
    dtd.setInternalGE(u"e", u"one");
    dtd.setInternalGE(u"e", u"two");
    EXPECT_EQ(Utf8(dtd.getInternalGE(u"e")), "two");
    EXPECT_FALSE(dtd.hasInternalGE(u"E"));
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { dtd.getInternalGE(u"amp"); }),
              "CXmlDtd::getInternalGE() 存在しないエンティティ名を指定した");
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { dtd.getExternalGE(u"e"); }),
              "CXmlDtd::getExternalGE() 存在しないエンティティ名を指定した");
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { dtd.getExternalGEContent(u"e"); }),
              "CXmlDtd::getExternalGEContent() 存在しないエンティティ名を指定した");

    CXmlDtdExternalID id;
    id.setSystemLiteral(u"first.ent");
    dtd.setExternalGE(u"x", id, new CXmlParsedEntity(Entity(u"1")));
    id.setSystemLiteral(u"second.ent");
    auto* second = new CXmlParsedEntity(Entity(u"2"));
    dtd.setExternalGE(u"x", id, second);  // the first entity is deleted
    EXPECT_TRUE(dtd.hasExternalGE(u"x"));
    EXPECT_EQ(dtd.getExternalGEContent(u"x"), second);
    EXPECT_EQ(Utf8(dtd.getExternalGE(u"x").getSystemLiteral()), "second.ent");
    dtd.setExternalGE(u"x", id, nullptr);
    EXPECT_EQ(dtd.getExternalGEContent(u"x"), nullptr);
    // A parsed entity has no text of its own.
    EXPECT_EQ(ThrownText<std::runtime_error>([] { Source(Entity(u"x")); }), "未作成");
}
