#include "Document.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "Check.h"
#include "Messages.h"
#include "Output.h"

namespace vxml {
namespace {

std::runtime_error SystemError(const std::string& what) {
    return std::runtime_error(what + ": " + std::strerror(errno));
}

void CopyAll(int from, int to, Text failure) {
    char block[65536];
    for (;;) {
        const ssize_t got = ::read(from, block, sizeof block);
        if (got == 0) return;
        if (got < 0) {
            if (errno == EINTR) continue;
            throw SystemError(Say(failure));
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = ::write(to, block + done, got - done);
            if (put < 0 && errno != EINTR) throw SystemError(Say(failure));
            if (put > 0) done += put;
        }
    }
}

// Copies the stream into the file at path, or the file into the stream.
void CopyWithFile(const std::string& path, bool intoFile, int stream, Text failure) {
    const int fd = ::open(path.c_str(), intoFile ? O_WRONLY : O_RDONLY);
    if (fd < 0) throw SystemError(Say(Text::kCannotOpen, {path}));
    try {
        intoFile ? CopyAll(stream, fd, failure) : CopyAll(fd, stream, failure);
    } catch (...) {
        ::close(fd);
        throw;
    }
    ::close(fd);
}

std::shared_ptr<const TemporaryFile> CopyStandardInput() {
    auto copy = std::make_shared<const TemporaryFile>();
    CopyWithFile(copy->Path(), true, STDIN_FILENO, Text::kCannotCopyInput);
    return copy;
}

std::unique_ptr<vx::CXmlDocument> Parse(const std::string& path) {
    return std::unique_ptr<vx::CXmlDocument>(vx::CParse::ParseForFile(ToVelStr(path)));
}

}  // namespace

TemporaryFile::TemporaryFile() {
    const char* dir = std::getenv("TMPDIR");
    m_path = std::string(dir && *dir ? dir : "/tmp") + "/vxml-XXXXXX";
    const int fd = ::mkstemp(m_path.data());
    if (fd < 0) throw SystemError(Say(Text::kNoTemporaryFile));
    ::close(fd);
}

TemporaryFile::~TemporaryFile() {
    ::unlink(m_path.c_str());
}

void CopyToStandardOutput(const std::string& path) {
    std::fflush(stdout);
    CopyWithFile(path, false, STDOUT_FILENO, Text::kCannotCopyOutput);
}

LoadedDocument LoadDocument(const std::string& file) {
    if (file != "-") return {file, file, Parse(file), nullptr};
    auto copy = CopyStandardInput();
    return {"<stdin>", copy->Path(), Parse(copy->Path()), copy};
}

bool HasTree(const vx::CXmlDocument& document) {
    return !document.GetRootElement().GetName().IsEmpty();
}

void UseLineFeeds(vx::CXmlDocument& document) {
    document.SetRetCode(u"\n");
}

int ShowDocument(const Options& options, const std::function<void(vx::CXmlDocument&)>& show) {
    const LoadedDocument loaded = LoadDocument(options.files.front());
    const bool clean = ReportDiagnostics(stderr, loaded, options);
    if (HasTree(*loaded.document)) show(*loaded.document);
    return clean ? 0 : 1;
}

}  // namespace vxml
