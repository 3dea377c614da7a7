#include "Document.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "Check.h"
#include "Output.h"

namespace vxml {
namespace {

std::runtime_error SystemError(const std::string& what) {
    return std::runtime_error(what + ": " + std::strerror(errno));
}

void CopyAll(int from, int to) {
    char block[65536];
    for (;;) {
        const ssize_t got = ::read(from, block, sizeof block);
        if (got == 0) return;
        if (got < 0) {
            if (errno == EINTR) continue;
            throw SystemError("cannot read standard input");
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = ::write(to, block + done, got - done);
            if (put < 0 && errno != EINTR) throw SystemError("cannot write a temporary file");
            if (put > 0) done += put;
        }
    }
}

// Standard input saved as a file for as long as the object lives.
class StdinCopy {
  public:
    StdinCopy() {
        const char* dir = std::getenv("TMPDIR");
        m_path = std::string(dir && *dir ? dir : "/tmp") + "/vxml-stdin-XXXXXX";
        const int fd = ::mkstemp(m_path.data());
        if (fd < 0) throw SystemError("cannot create a temporary file");
        try {
            CopyAll(STDIN_FILENO, fd);
        } catch (...) {
            ::close(fd);
            ::unlink(m_path.c_str());
            throw;
        }
        ::close(fd);
    }
    ~StdinCopy() { ::unlink(m_path.c_str()); }
    StdinCopy(const StdinCopy&) = delete;
    StdinCopy& operator=(const StdinCopy&) = delete;

    const std::string& Path() const { return m_path; }

  private:
    std::string m_path;
};

std::unique_ptr<vx::CXmlDocument> Parse(const std::string& path) {
    return std::unique_ptr<vx::CXmlDocument>(vx::CParse::ParseForFile(ToVelStr(path)));
}

}  // namespace

LoadedDocument LoadDocument(const std::string& file) {
    if (file != "-") return {file, Parse(file)};
    const StdinCopy copy;
    return {"<stdin>", Parse(copy.Path())};
}

bool HasTree(const vx::CXmlDocument& document) {
    return !document.GetRootElement().GetName().IsEmpty();
}

void UseLineFeeds(vx::CXmlDocument& document) {
    document.SetRetCode(u"\n");
}

int ShowDocument(const Options& options, const std::function<void(vx::CXmlDocument&)>& show) {
    const LoadedDocument loaded = LoadDocument(options.files.front());
    const bool clean = ReportDiagnostics(stderr, loaded, Format::kText, options.language);
    if (HasTree(*loaded.document)) show(*loaded.document);
    return clean ? 0 : 1;
}

}  // namespace vxml
