#pragma once
// The files check reads, one at a time: FILE arguments as given, and with -r the files of each
// folder FILE and below.
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "Options.h"

namespace vxml {

// A folder's files come in the byte order of their paths, as if its whole list had been sorted,
// but each folder is read only when the walk reaches it, so checking can start at once.
class FileWalk {
  public:
    explicit FileWalk(const Options& options);

    // The next file, reading folders as needed; none at the end.
    std::optional<std::string> Next();
    // Reads the next unread folder ahead of Next; false once every folder has been read.
    bool ReadAhead();
    bool Finished() const { return m_pending.empty(); }
    // Every file of the walk, once it is Finished.
    std::size_t Count() const { return m_given + m_ready.size(); }

  private:
    struct Entry {
        std::string path;
        bool folder;
    };

    void Read(const std::string& folder);

    const Options& m_options;
    std::vector<Entry> m_pending;     // what follows the ready files; the next on top
    std::deque<std::string> m_ready;  // files found, in order
    std::size_t m_given = 0;
};

}  // namespace vxml
