#include "Options.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string_view>

namespace vxml {
namespace {

struct CommandName {
    std::string_view name;
    Command command;
};

constexpr CommandName kCommands[] = {
    {"check", Command::kCheck}, {"print", Command::kPrint},     {"tree", Command::kTree},
    {"save", Command::kSave},   {"convert", Command::kConvert},
};

Command FindCommand(std::string_view name) {
    for (const CommandName& entry : kCommands) {
        if (entry.name == name) return entry.command;
    }
    throw UsageError(Say(Text::kUnknownCommand, {name}));
}

Language ParseLanguage(const std::string& value) {
    if (value == "ja") return Language::kJapanese;
    if (value == "en") return Language::kEnglish;
    throw UsageError(Say(Text::kLangValue, {value}));
}

Format ParseFormat(const std::string& value) {
    if (value == "text") return Format::kText;
    if (value == "native") return Format::kNative;
    if (value == "json") return Format::kJson;
    throw UsageError(Say(Text::kFormatValue, {value}));
}

// An option that takes a value, and the commands that accept it.
struct ValueOption {
    std::string_view name;
    std::string_view shortName;
    std::initializer_list<Command> commands;
    void (*apply)(Options&, const std::string&);
};

int ParseJobs(const std::string& value) {
    char* end = nullptr;
    const long jobs = std::strtol(value.c_str(), &end, 10);
    if (value.empty() || *end != '\0' || jobs < 1 || jobs > 256) {
        throw UsageError(Say(Text::kJobsValue, {value}));
    }
    return static_cast<int>(jobs);
}

constexpr std::initializer_list<Command> kAllCommands = {
    Command::kCheck, Command::kPrint, Command::kTree, Command::kSave, Command::kConvert};
constexpr std::initializer_list<Command> kWriters = {Command::kSave, Command::kConvert};

const ValueOption kValueOptions[] = {
    {"--lang", "", kAllCommands,
     [](Options&, const std::string& v) { SetLanguage(ParseLanguage(v)); }},
    {"--format",
     "",
     {Command::kCheck},
     [](Options& o, const std::string& v) { o.format = ParseFormat(v); }},
    {"--jobs",
     "-j",
     {Command::kCheck},
     [](Options& o, const std::string& v) { o.jobs = ParseJobs(v); }},
    {"--encoding", "", kWriters, [](Options& o, const std::string& v) { o.encoding = v; }},
    {"--output", "-o", kWriters, [](Options& o, const std::string& v) { o.output = v; }},
};

// A switch without a value; every one belongs to check.
struct FlagOption {
    std::string_view name;
    std::string_view shortName;
    bool Options::*flag;
};

constexpr FlagOption kFlagOptions[] = {
    {"--no-external", "", &Options::noExternal},
    {"--quiet", "-q", &Options::quiet},
    {"--recursive", "-r", &Options::recursive},
    {"--all", "", &Options::allFiles},
};

const FlagOption* FindFlagOption(const std::string& argument) {
    for (const FlagOption& option : kFlagOptions) {
        if (argument == option.name || argument == option.shortName) return &option;
    }
    return nullptr;
}

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
            throw UsageError(Say(Text::kOptionNotTaken, {NameOf(command), name}));
        }
        return option;
    }
    throw UsageError(Say(Text::kUnknownOption, {name}));
}

class ArgumentReader {
  public:
    ArgumentReader(int argc, const char* const* argv) : m_argv(argv + 1, argv + argc) {}

    const std::vector<std::string>& All() const { return m_argv; }
    bool AtEnd() const { return m_next == m_argv.size(); }
    std::string Next() { return m_argv[m_next++]; }
    std::string ValueOf(const std::string& option) {
        if (AtEnd()) throw UsageError(Say(Text::kNeedsValue, {option}));
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
        } else if (argument == "--huge") {
            options.huge = true;
        } else if (const FlagOption* flag = FindFlagOption(argument)) {
            if (options.command != Command::kCheck) {
                throw UsageError(Say(Text::kOptionNotTaken, {NameOf(options.command), argument}));
            }
            options.*(flag->flag) = true;
        } else {
            ReadOption(argument, reader, options);
        }
    }
}

// check without a FILE reads standard input, as filters do.
void RequireComplete(Options& options) {
    const std::string name(NameOf(options.command));
    const std::size_t count = options.files.size();
    if (count == 0 && options.command == Command::kCheck) options.files.push_back("-");
    if (options.files.empty()) throw UsageError(Say(Text::kNoFile));
    if (options.command != Command::kCheck && count > 1) {
        throw UsageError(Say(Text::kOneFile, {name, std::to_string(count)}));
    }
    const bool writes = options.command == Command::kSave || options.command == Command::kConvert;
    if (writes && !options.encoding) throw UsageError(Say(Text::kNeedsEncoding, {name}));
    if (writes && !options.output) throw UsageError(Say(Text::kNeedsOutput, {name}));
}

bool IsJapanese(const char* locale) {
    return std::string_view(locale).substr(0, 2) == "ja";
}

// --lang anywhere on the line also decides the language of a usage error found before it.
Language ChosenLanguage(const std::vector<std::string>& arguments) {
    Language language = LocaleLanguage();
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string value = arguments[i].rfind("--lang=", 0) == 0 ? arguments[i].substr(7) : "";
        if (arguments[i] == "--lang" && i + 1 < arguments.size()) value = arguments[i + 1];
        if (value == "ja" || value == "en") language = ParseLanguage(value);
    }
    return language;
}

}  // namespace

Language LocaleLanguage() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value && *value) return IsJapanese(value) ? Language::kJapanese : Language::kEnglish;
    }
    return Language::kEnglish;
}

Options ParseArguments(int argc, const char* const* argv) {
    ArgumentReader reader(argc, argv);
    Options options;
    SetLanguage(ChosenLanguage(reader.All()));
    if (reader.AtEnd()) throw UsageError(Say(Text::kNoCommand));
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
