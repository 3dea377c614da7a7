// Walks a document's elements, then edits the tree and prints the result as XML.
#include <vx/vx.h>

#include <iostream>
#include <memory>
#include <string>

namespace {

std::string Utf8(const vx::CVelStrW& text) {
    return vx::CVelStr(text).c_str();
}

// Each element with its attributes and, for an element without child elements, its text.
void Walk(const vx::CXmlElement& element, int depth) {
    std::cout << std::string(2 * depth, ' ') << Utf8(element.GetName());
    for (int i = 0; i < element.GetAttCount(); ++i) {
        const vx::CXmlAttribute& attribute = element.GetAttAt(i);
        std::cout << ' ' << Utf8(attribute.GetName()) << "=\"" << Utf8(attribute.GetValue()) << '"';
    }
    const vx::CXmlElement* child = element.GetFirstChildElement();
    if (!child) std::cout << ": " << Utf8(element.GetText());
    std::cout << '\n';
    for (; child; child = child->GetNextElement())
        Walk(*child, depth + 1);
}

}  // namespace

int main() {
    vx::Initialize();
    const vx::CVelStrW text(
        u"<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
        u"<蔵書><本 番号=\"1\"><題名>吾輩は猫である</題名></本>"
        u"<本 番号=\"2\"><題名>羅生門</題名></本></蔵書>");
    std::unique_ptr<vx::CXmlDocument> document(vx::CParse::ParseForBuf(text));
    if (!document->GetErrList().IsEmpty()) return 1;
    vx::CXmlElement& root = document->GetRootElement();
    Walk(root, 0);

    // The nodes the tree holds are its own: Insert, PushBack and SetAtt store copies.
    vx::CXmlAttribute author(nullptr);
    author.SetValue(u"夏目漱石");
    vx::CXmlElement* first = root.GetFirstChildElement(u"本");
    first->SetAtt(u"著者", author);
    first->GetFirstChildElement(u"題名")->SetText(u"坊っちゃん");

    vx::CXmlElement book(nullptr);
    book.SetName(u"本");
    vx::CXmlElement title(nullptr);
    title.SetName(u"題名");
    title.SetText(u"舞姫");
    book.GetChildren().PushBack(title);
    root.GetChildren().PushBack(book);

    vx::CXmlListContainer& books = root.GetChildren();
    books.Erase(books.GetIndex(first->GetNextElement(u"本")));

    document->SetRetCode(u"\n");  // a document writes CR LF unless told otherwise
    vx::CVelStringBuffer<vx::CVelStrW> out;
    document->GetSource(out);
    std::cout << Utf8(out.ToString()) << '\n';
    document.reset();
    vx::Finalize();
    return 0;
}
