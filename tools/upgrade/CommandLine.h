#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Upgrade
{

/// What the program is asked to do.
struct CommandLine
{
    std::filesystem::path contentFolder; // empty: search for it
    std::filesystem::path outputPath;    // empty: convert in place
    bool checkOnly = false;
    bool verifyOnly = false;
    bool keepBackup = true;
    std::vector<std::filesystem::path> inputs;

    bool helpRequested = false;
    std::string unknownOption; // parsing stopped at it; empty when there is none
};

/// Reads the arguments behind the program's name. Stops at a request for help and at an unknown option.
CommandLine ParseCommandLine(const std::vector<std::string_view>& arguments);

extern const std::string_view kUsageText;

} // namespace Vornu::Upgrade
