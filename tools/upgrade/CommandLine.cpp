#include "tools/upgrade/CommandLine.h"

#include <cstddef>

namespace Vornu::Upgrade
{

constexpr std::string_view kUsageText =
    "Usage: vornu-upgrade [--content <ContentFolder>] [--output <file>] [--check | --verify] [--no-backup] "
    "<path>...\n"
    "\n"
    "Converts legacy .vscene and .vprefab files to the current scene format. Directories are\n"
    "searched recursively.\n"
    "\n"
    "  --content <dir>  Project Content folder that asset references resolve against. Default:\n"
    "                   the nearest ancestor folder named Content, else the file's folder.\n"
    "  --output <file>  Write the converted file here (one input only). Default: convert in\n"
    "                   place and keep the original as <file>.legacy-v<version>.\n"
    "  --check          Only report files that need conversion (exit code 1 when any do).\n"
    "  --verify         Load current files with the engine loader and check that a load/save\n"
    "                   round trip is stable (writes only temporary files; exit 1 on failure).\n"
    "  --no-backup      Do not keep the original when converting in place.\n";

CommandLine ParseCommandLine(const std::vector<std::string_view>& arguments)
{
    CommandLine line;
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        const std::string_view argument = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (argument == "--content" && hasValue)
        {
            line.contentFolder = arguments[++i];
        }
        else if (argument == "--output" && hasValue)
        {
            line.outputPath = arguments[++i];
        }
        else if (argument == "--check")
        {
            line.checkOnly = true;
        }
        else if (argument == "--verify")
        {
            line.verifyOnly = true;
        }
        else if (argument == "--no-backup")
        {
            line.keepBackup = false;
        }
        else if (argument == "--help" || argument == "-h")
        {
            line.helpRequested = true;
            break;
        }
        else if (argument.starts_with('-'))
        {
            line.unknownOption = argument;
            break;
        }
        else
        {
            line.inputs.emplace_back(argument);
        }
    }
    return line;
}

} // namespace Vornu::Upgrade
