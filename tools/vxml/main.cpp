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

Text HelpFor(Command command) {
    switch (command) {
        case Command::kCheck:
            return Text::kCheckHelp;
        case Command::kPrint:
            return Text::kPrintHelp;
        case Command::kTree:
            return Text::kTreeHelp;
        case Command::kSave:
            return Text::kSaveHelp;
        case Command::kConvert:
            return Text::kConvertHelp;
        case Command::kNone:
            break;
    }
    return Text::kToolHelp;
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
            Write(stdout, Say(HelpFor(options.command)));
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
