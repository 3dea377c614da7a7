#pragma once
// The command line: one command, its options and its files.
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Messages.h"

namespace vxml {

enum class Command { kNone, kCheck, kPrint, kTree, kSave, kConvert };
enum class Format { kText, kNative, kJson };

struct Options {
    Command command = Command::kNone;
    bool help = false;
    bool version = false;
    Format format = Format::kText;
    bool noExternal = false;  // check: open no file that a document names
    bool huge = false;        // any command: entity references may copy without limit
    bool quiet = false;       // check: only the exit status
    bool recursive = false;   // check: folders are walked for files ending in .xml
    bool allFiles = false;    // check -r: every file of a folder, whatever its name
    int jobs = 0;             // check: files checked at once; 0 for one per processor
    std::vector<std::string> files;
    std::optional<std::string> encoding;
    std::optional<std::string> output;
};

// A command line the tool cannot run; its text says what is wrong.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Japanese when the locale's messages are (LC_ALL, else LC_MESSAGES, else LANG), else English.
Language LocaleLanguage();

// Sets the language (the locale's, or --lang's) and throws UsageError in it. With help or version
// set, the files and required options are not checked, so "vxml save --help" works on its own.
Options ParseArguments(int argc, const char* const* argv);

}  // namespace vxml
