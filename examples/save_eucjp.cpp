// Parses text already in memory and saves it as an EUC-JP file; the encoding a document is
// saved in is the one its XML declaration names.
#include <vx/vx.h>

#include <iostream>
#include <memory>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: save_eucjp OUTPUT\n";
        return 2;
    }
    vx::Initialize();
    const vx::CVelStrW text(u"<?xml version=\"1.0\"?>\n<挨拶>こんにちは～</挨拶>\n");
    std::unique_ptr<vx::CXmlDocument> document(vx::CParse::ParseForBuf(text));
    document->SetEncoding(u"EUC-JP");
    document->SetRetCode(u"\n");  // a document writes CR LF unless told otherwise
    // A document with diagnostics may hold a partial tree: do not save it.
    const bool saved = document->GetErrList().IsEmpty() && document->SaveToFile(argv[1]);
    document.reset();
    vx::Finalize();
    if (!saved) std::cerr << "save_eucjp: " << argv[1] << " not saved\n";
    return saved ? 0 : 1;
}
