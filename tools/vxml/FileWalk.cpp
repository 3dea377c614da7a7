#include "FileWalk.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "Messages.h"

namespace vxml {
namespace {

enum class EntryKind { kFolder, kFile, kOther };

// A symbolic link counts as what it points to when that is a file; links to folders are not
// followed. The directory entry's type saves a stat where the file system gives it.
EntryKind KindOf(const std::string& path, unsigned char type) {
    if (type == DT_DIR) return EntryKind::kFolder;
    if (type == DT_REG) return EntryKind::kFile;
    struct stat info {};
    if (type == DT_UNKNOWN && ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        return EntryKind::kFolder;
    }
    if (type != DT_UNKNOWN && type != DT_LNK) return EntryKind::kOther;
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) ? EntryKind::kFile
                                                                     : EntryKind::kOther;
}

bool IsChecked(std::string_view name, const Options& options) {
    return options.allFiles || (name.size() > 4 && name.substr(name.size() - 4) == ".xml");
}

// Named files are checked whatever their names; folders only with -r.
bool IsWalked(const std::string& file, const Options& options) {
    struct stat info {};
    return options.recursive && file != "-" && ::stat(file.c_str(), &info) == 0 &&
           S_ISDIR(info.st_mode);
}

// A folder's entry sorts as its name followed by '/', so that each folder's files, listed in
// turn, come in the order of their whole paths.
struct Child {
    std::string key;
    std::string path;
    bool folder;
};

}  // namespace

FileWalk::FileWalk(const Options& options) : m_options(options) {
    for (auto file = options.files.rbegin(); file != options.files.rend(); ++file) {
        m_pending.push_back({*file, IsWalked(*file, options)});
    }
}

std::optional<std::string> FileWalk::Next() {
    while (m_ready.empty() && ReadAhead()) {
    }
    if (m_ready.empty()) return std::nullopt;
    std::string file = std::move(m_ready.front());
    m_ready.pop_front();
    ++m_given;
    return file;
}

bool FileWalk::ReadAhead() {
    while (!m_pending.empty()) {
        Entry entry = std::move(m_pending.back());
        m_pending.pop_back();
        if (!entry.folder) {
            m_ready.push_back(std::move(entry.path));
            continue;
        }
        Read(entry.path);
        return true;
    }
    return false;
}

// A folder the user may not read is passed over.
void FileWalk::Read(const std::string& folder) {
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) {
        if (errno == EACCES) return;
        throw std::runtime_error(Say(Text::kCannotOpen, {folder}) + ": " + std::strerror(errno));
    }
    const std::string prefix = folder.back() == '/' ? folder : folder + "/";
    std::vector<Child> children;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        std::string path = prefix + entry->d_name;
        const EntryKind kind = KindOf(path, entry->d_type);
        if (kind == EntryKind::kFolder) {
            children.push_back({std::string(name) + '/', std::move(path), true});
        } else if (kind == EntryKind::kFile && IsChecked(name, m_options)) {
            children.push_back({std::string(name), std::move(path), false});
        }
    }
    ::closedir(dir);
    std::sort(children.begin(), children.end(),
              [](const Child& a, const Child& b) { return a.key > b.key; });
    for (Child& child : children)
        m_pending.push_back({std::move(child.path), child.folder});
}

}  // namespace vxml
