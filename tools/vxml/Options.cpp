#include "Options.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace vxml {
namespace {

struct CommandName {
    std::string_view name;
    Command command;
};

constexpr CommandName kCommands[] = {
    {"check", Command::kCheck},
    {"print", Command::kPrint},
    {"tree", Command::kTree},
    {"save", Command::kSave},
};

Command FindCommand(std::string_view name) {
    for (const CommandName& entry : kCommands) {
        if (entry.name == name) return entry.command;
    }
    throw UsageError("unknown command '" + std::string(name) + "'");
}

Language ParseLanguage(const std::string& value) {
    if (value == "ja") return Language::kJapanese;
    if (value == "en") return Language::kEnglish;
    throw UsageError("--lang takes ja or en, not '" + value + "'");
}

Format ParseFormat(const std::string& value) {
    if (value == "text") return Format::kText;
    if (value == "native") return Format::kNative;
    if (value == "json") return Format::kJson;
    throw UsageError("--format takes text, native or json, not '" + value + "'");
}

// An option that takes a value, and the commands that accept it.
struct ValueOption {
    std::string_view name;
    std::string_view shortName;
    std::initializer_list<Command> commands;
    void (*apply)(Options&, const std::string&);
};

const ValueOption kValueOptions[] = {
    {"--lang",
     "",
     {Command::kCheck, Command::kPrint, Command::kTree, Command::kSave},
     [](Options& o, const std::string& v) { o.language = ParseLanguage(v); }},
    {"--format",
     "",
     {Command::kCheck},
     [](Options& o, const std::string& v) { o.format = ParseFormat(v); }},
    {"--encoding", "", {Command::kSave}, [](Options& o, const std::string& v) { o.encoding = v; }},
    {"--output", "-o", {Command::kSave}, [](Options& o, const std::string& v) { o.output = v; }},
};

std::string_view NameOf(Command command) {
    for (const CommandName& entry : kCommands) {
        if (entry.command == command) return entry.name;
    }
    return "";
}

const ValueOption& FindValueOption(const std::string& name, Command command) {
    for (const ValueOption& option : kValueOptions) {
        if (name != option.name && name != option.shortName) continue;
        if (std::find(option.commands.begin(), option.commands.end(), command) ==
            option.commands.end()) {
            throw UsageError(std::string(NameOf(command)) + " does not take " + name);
        }
        return option;
    }
    throw UsageError("unknown option '" + name + "'");
}

class ArgumentReader {
  public:
    ArgumentReader(int argc, const char* const* argv) : m_argv(argv + 1, argv + argc) {}

    bool AtEnd() const { return m_next == m_argv.size(); }
    std::string Next() { return m_argv[m_next++]; }
    std::string ValueOf(const std::string& option) {
        if (AtEnd()) throw UsageError(option + " needs a value");
        return Next();
    }

  private:
    std::vector<std::string> m_argv;
    std::size_t m_next = 0;
};

// "--name=value" and "--name value" are both accepted.
void ReadOption(const std::string& argument, ArgumentReader& reader, Options& options) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    FindValueOption(name, options.command)
        .apply(options,
               equals == std::string::npos ? reader.ValueOf(name) : argument.substr(equals + 1));
}

void ReadCommandArguments(ArgumentReader& reader, Options& options) {
    bool optionsEnded = false;
    while (!reader.AtEnd()) {
        const std::string argument = reader.Next();
        if (optionsEnded || argument == "-" || argument.empty() || argument[0] != '-') {
            options.files.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--no-external") {
            if (options.command != Command::kCheck) {
                throw UsageError(std::string(NameOf(options.command)) + " does not take " +
                                 argument);
            }
            options.noExternal = true;
        } else {
            ReadOption(argument, reader, options);
        }
    }
}

void RequireComplete(const Options& options) {
    const std::size_t count = options.files.size();
    if (count == 0) throw UsageError("no FILE given");
    if (options.command != Command::kCheck && count > 1) {
        throw UsageError(std::string(NameOf(options.command)) + " takes one FILE, got " +
                         std::to_string(count));
    }
    if (options.command == Command::kSave && !options.encoding) {
        throw UsageError("save needs --encoding NAME");
    }
    if (options.command == Command::kSave && !options.output) {
        throw UsageError("save needs -o OUT");
    }
}

}  // namespace

Options ParseArguments(int argc, const char* const* argv) {
    ArgumentReader reader(argc, argv);
    Options options;
    if (reader.AtEnd()) throw UsageError("no command given");
    const std::string first = reader.Next();
    if (first == "--help" || first == "-h") {
        options.help = true;
        return options;
    }
    if (first == "--version") {
        options.version = true;
        return options;
    }
    options.command = FindCommand(first);
    ReadCommandArguments(reader, options);
    if (!options.help) RequireComplete(options);
    return options;
}

}  // namespace vxml
