// vxml: checks, shows and converts XML files with the vx library.
#include <cstdio>
#include <exception>

#include "Check.h"
#include "Commands.h"
#include "Options.h"
#include "Output.h"
#include "vx/vx.h"

namespace vxml {
namespace {

constexpr const char* kToolHelp =
    "Usage: vxml COMMAND [OPTIONS] FILE...\n"
    "\n"
    "Checks and converts XML files in Shift_JIS, EUC-JP, ISO-2022-JP, UTF-8, UTF-16LE,\n"
    "UCS-4LE and Windows-932.\n"
    "\n"
    "Commands:\n"
    "  check   print the diagnostics of each FILE\n"
    "  print   write the document's XML text as UTF-8\n"
    "  tree    show an outline of the document tree\n"
    "  save    write the document in another encoding\n"
    "\n"
    "A FILE of - reads standard input.\n"
    "Run 'vxml COMMAND --help' for a command's options; 'vxml --version' shows the version.\n"
    "\n"
    "Exit status: 0 when no document had a diagnostic (and save wrote its file),\n"
    "1 when one did or save failed, 2 for a usage error or a failure inside the library.\n";

constexpr const char* kCheckHelp =
    "Usage: vxml check [--lang ja|en] [--format text|native|json] [--no-external] FILE...\n"
    "\n"
    "Parses each FILE and prints its diagnostics, one per line, in the order found.\n"
    "Nothing is printed for a well-formed document.\n"
    "\n"
    "  --lang ja|en       message language (default ja)\n"
    "  --format text      PATH:LINE:COL: LEVEL CODE: MESSAGE (default)\n"
    "  --format native    the library's own display text; --lang does not apply\n"
    "  --format json      one JSON object per diagnostic:\n"
    "                     {\"file\",\"code\",\"level\",\"line\",\"column\",\"message\"}\n"
    "  --no-external      read no external subset or entity: each system literal\n"
    "                     gets code 5 and no file is opened (for untrusted input)\n"
    "\n"
    "LEVEL is fatal, error, warning, notice or none. A diagnostic without a position\n"
    "reads PATH: LEVEL CODE: MESSAGE, and names the file it could not open in brackets.\n";

constexpr const char* kPrintHelp =
    "Usage: vxml print [--lang ja|en] FILE\n"
    "\n"
    "Writes the document's XML text as vx produces it, in UTF-8 with LF line ends, to\n"
    "standard output. Diagnostics go to standard error.\n";

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
    "Sets the document's encoding to NAME and writes it to OUT with LF line ends.\n"
    "NAME must begin with Shift_JIS, EUC-JP, ISO-2022-JP, ISO-10646-UCS-2 or\n"
    "ISO-10646-UCS-4 (any case). A document with diagnostics is not saved; they go\n"
    "to standard error.\n";

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
        case Command::kNone:
            break;
    }
    return kToolHelp;
}

int Dispatch(const Options& options) {
    switch (options.command) {
        case Command::kCheck:
            return RunCheck(options);
        case Command::kPrint:
            return RunPrint(options);
        case Command::kTree:
            return RunTree(options);
        case Command::kSave:
            return RunSave(options);
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
        Write(stderr, std::string("vxml: ") + error.what() + "\nTry 'vxml --help'.\n");
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
