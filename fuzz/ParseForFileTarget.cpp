// CParse::ParseForFile over the bytes of a file, so that encoding detection and every
// converter are reached. The file lies in a directory of its own, beside an external subset
// and an external entity that inputs may name.
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "FuzzSupport.h"

namespace {

const char kTextDecl[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

void WriteFile(const std::string& path, const std::uint8_t* data, std::size_t size) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    if (!out) std::abort();
}

void WriteText(const std::string& path, const std::string& text) {
    WriteFile(path, reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

class FuzzDirectory {
  public:
    FuzzDirectory() {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/vx-fuzz-XXXXXX";
        if (!mkdtemp(pattern.data())) std::abort();
        m_path = pattern;
        WriteText(Path("ext.dtd"), std::string(kTextDecl) +
                                       "<!ENTITY who 'world'><!ENTITY part SYSTEM 'ent.xml'>"
                                       "<![INCLUDE[<!ELEMENT r ANY>]]>");
        WriteText(Path("ent.xml"), std::string(kTextDecl) + "<b a='&amp;'>&#x41;</b>tail");
    }
    ~FuzzDirectory() {
        for (const char* name : {"doc.xml", "ext.dtd", "ent.xml"})
            std::remove(Path(name).c_str());
        rmdir(m_path.c_str());
    }

    std::string Path(const char* name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzDirectory directory;
    const std::string document = directory.Path("doc.xml");
    WriteFile(document, data, size);
    // A system literal without "/" can only name a file in this directory, relative paths
    // being resolved against the document's: only then are external files read.
    vx::SetExternalLoading(std::find(data, data + size, '/') == data + size);
    fuzz::RunInput([&] {
        const std::unique_ptr<vx::CXmlDocument> parsed(
            vx::CParse::ParseForFile(vx::CVelStr(document.c_str())));
    });
    return 0;
}
