// vxml: checks, shows and converts XML files with the vx library.
#include <cstdio>
#include <exception>

#include "Check.h"
#include "Commands.h"
#include "Messages.h"
#include "Options.h"
#include "Output.h"
#include "vx/vx.h"

namespace vxml {
namespace {

constexpr const char* kToolHelp =
    "Usage: vxml COMMAND [OPTIONS] FILE...\n"
    "\n"
    "Checks and converts XML files. vx reads UTF-16LE and UCS-4LE from their first\n"
    "bytes, and files whose XML declaration names Shift_JIS, EUC-JP, ISO-2022-JP,\n"
    "UTF-8 or MS932.\n"
    "\n"
    "Commands:\n"
    "  check     print the diagnostics of each FILE (standard input without one)\n"
    "  print     write the document's XML text as UTF-8\n"
    "  tree      show an outline of the document tree\n"
    "  save      write the document's text in Shift_JIS, EUC-JP or ISO-2022-JP\n"
    "  convert   write the file itself in another encoding, checked before it is kept\n"
    "\n"
    "A FILE or OUT of - is standard input or output. Messages are Japanese when the\n"
    "locale's are (LC_ALL, LC_MESSAGES, LANG), else English; --lang ja|en chooses.\n"
    "--huge, with any command, lets entity references copy without limit (for trusted\n"
    "documents; see vx::SetExpansionLimit).\n"
    "Run 'vxml COMMAND --help' for a command's options; 'vxml --version' shows the version.\n"
    "\n"
    "Exit status: 0 when no document had a diagnostic (and save wrote its file) or\n"
    "convert wrote its file, 1 when a document had one or nothing was written, 2 for a\n"
    "usage error or a failure inside the library.\n";

constexpr const char* kCheckHelp =
    "Usage: vxml check [OPTIONS] [FILE...]\n"
    "\n"
    "Parses each FILE (standard input without one) and prints its diagnostics, one per\n"
    "line, in the order found. Nothing is printed for a well-formed document.\n"
    "\n"
    "  --lang ja|en       message language (default: from the locale)\n"
    "  --format text      PATH:LINE:COL: LEVEL CODE: MESSAGE (default), with a\n"
    "                     hint line under codes 2 and 3\n"
    "  --format native    the library's own display text; --lang does not apply\n"
    "  --format json      one JSON object per diagnostic: {\"file\",\"code\",\"level\",\n"
    "                     \"line\",\"column\",\"message\"}, and \"external\", \"hint\"\n"
    "  --no-external      read no external subset or entity: each system literal\n"
    "                     gets code 5 and no file is opened (for untrusted input)\n"
    "  -r, --recursive    check the files ending in .xml in each folder FILE and below\n"
    "  --all              with -r, every file whatever its name\n"
    "  -j, --jobs N       check N files at once (default: one per processor)\n"
    "  -q, --quiet        print nothing; only the exit status tells\n"
    "\n"
    "LEVEL is fatal, error, warning, notice or none. A diagnostic without a position\n"
    "reads PATH: LEVEL CODE: MESSAGE, and names the file it could not open in brackets.\n"
    "One found in an external subset or entity says so, and is placed in that file\n"
    "when vxml can tell which. Reports come in the order of the files; with more than\n"
    "one file a summary goes to standard error.\n";

constexpr const char* kPrintHelp =
    "Usage: vxml print [--lang ja|en] FILE\n"
    "\n"
    "Writes the document's XML text as vx produces it, in UTF-8 with LF line ends and\n"
    "the declaration's encoding set to UTF-8, to standard output. Diagnostics go to\n"
    "standard error.\n";

constexpr const char* kTreeHelp =
    "Usage: vxml tree [--lang ja|en] FILE\n"
    "\n"
    "Shows the document tree, indented by depth: a line per element with its\n"
    "attributes, a line per text (quoted; text of white space only is left out),\n"
    "CDATA section and entity reference. Long texts are shortened.\n"
    "Diagnostics go to standard error.\n";

constexpr const char* kSaveHelp =
    "Usage: vxml save FILE --encoding NAME -o OUT [--lang ja|en]\n"
    "\n"
    "Sets the document's encoding to NAME and writes the document's text, as the\n"
    "library's SaveToFile does, to OUT with LF line ends. NAME must begin with\n"
    "Shift_JIS, EUC-JP or ISO-2022-JP (any case). The text leaves out what lies\n"
    "outside the root element and the DOCTYPE's subset; 'vxml convert' keeps them.\n"
    "A document with diagnostics is not saved; they go to standard error.\n";

constexpr const char* kConvertHelp =
    "Usage: vxml convert FILE --encoding NAME -o OUT [--lang ja|en]\n"
    "\n"
    "Writes the file's own text to OUT in NAME: UTF-8, UTF-16LE (with a byte-order\n"
    "mark), UCS-4LE, Shift_JIS, MS932, EUC-JP or ISO-2022-JP (any case). Everything\n"
    "is kept as written; only the XML declaration's encoding is set to the name\n"
    "written, and added where vx needs it to read NAME. Before OUT is replaced, the\n"
    "converted text is parsed; if its tree or diagnostics differ from the original's,\n"
    "or a character cannot be written in NAME, nothing is written and the exit\n"
    "status is 1. Diagnostics of FILE go to standard error.\n";

const char* HelpFor(Command command) {
    switch (command) {
        case Command::kCheck:
            return kCheckHelp;
        case Command::kPrint:
            return kPrintHelp;
        case Command::kTree:
            return kTreeHelp;
        case Command::kSave:
            return kSaveHelp;
        case Command::kConvert:
            return kConvertHelp;
        case Command::kNone:
            break;
    }
    return kToolHelp;
}

int Dispatch(const Options& options) {
    if (options.huge) vx::SetExpansionLimit(0);
    switch (options.command) {
        case Command::kCheck:
            return RunCheck(options);
        case Command::kPrint:
            return RunPrint(options);
        case Command::kTree:
            return RunTree(options);
        case Command::kSave:
            return RunSave(options);
        case Command::kConvert:
            return RunConvert(options);
        case Command::kNone:
            break;
    }
    return 2;
}

int Run(int argc, const char* const* argv) {
    try {
        const Options options = ParseArguments(argc, argv);
        if (options.version) {
            Write(stdout, "vxml " VX_VERSION "\n");
            return 0;
        }
        if (options.help) {
            Write(stdout, HelpFor(options.command));
            return 0;
        }
        return Dispatch(options);
    } catch (const UsageError& error) {
        Write(stderr, std::string("vxml: ") + error.what() + "\n" + Say(Text::kTryHelp) + "\n");
    } catch (const std::exception& error) {
        Write(stderr, std::string("vxml: ") + error.what() + "\n");
    }
    return 2;
}

}  // namespace
}  // namespace vxml

int main(int argc, char** argv) {
    const int status = vxml::Run(argc, argv);
    vx::Finalize();  // releases the name caches, so a leak checker sees nothing left
    return status;
}
