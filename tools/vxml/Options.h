#pragma once
// The command line: one command, its options and its files.
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vxml {

enum class Command { kNone, kCheck, kPrint, kTree, kSave };
enum class Language { kJapanese, kEnglish };
enum class Format { kText, kNative, kJson };

struct Options {
    Command command = Command::kNone;
    bool help = false;
    bool version = false;
    Language language = Language::kJapanese;
    Format format = Format::kText;
    bool noExternal = false;  // check: open no file that a document names
    std::vector<std::string> files;
    std::optional<std::string> encoding;
    std::optional<std::string> output;
};

// A command line the tool cannot run; its text says what is wrong.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Throws UsageError. With help or version set, the files and required options are not
// checked, so "vxml save --help" works on its own.
Options ParseArguments(int argc, const char* const* argv);

}  // namespace vxml
