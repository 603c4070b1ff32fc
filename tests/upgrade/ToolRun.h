#pragma once

#include "engine/core/Process.h"
#include "tests/core/TestFolder.h"

#include <filesystem>
#include <map>
#include <string>

namespace Vornu::Test
{

inline constexpr char kLegacyV3[] = "scene_version 3\nentity \"\" \"Root\"\n";
inline constexpr char kCurrent[] = "scene_version 6\n";

/// What one run of the program left behind.
struct ToolRun
{
    int exitCode = -1;
    std::string out;
    std::string err;

    std::string Text() const { return out + "[err] " + err + "[exit] " + std::to_string(exitCode); }
};

/// Runs a shell script in `folder`, with `upgrade` standing for the program. The log is off.
inline ToolRun RunScript(const TestFolder& folder, const std::string& script)
{
    const TestFolder streams;
    Platform::ProcessRequest request;
    request.executable = "/bin/sh";
    request.workingDirectory = folder.Path();
    request.arguments = {"-c",
                         "export VORNU_LOG_LEVELS=off VORNU_USER_SETTINGS_DIR=\"$0/settings\"\n"
                         "upgrade() { '" VORNU_UPGRADE_PROGRAM "' \"$@\"; }\n"
                         "exec >\"$0/out\" 2>\"$0/err\"\n" +
                             script,
                         streams.Path()};
    const Platform::ProcessResult result = Platform::RunCaptured(request);
    return {result.exitCode, streams.Read("out"), streams.Read("err")};
}

/// Every regular file below a folder with its bytes, in order of the paths.
inline std::map<std::string, std::string> FilesBelow(const TestFolder& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path()))
    {
        if (entry.is_regular_file())
        {
            const std::string name = entry.path().lexically_relative(folder.Path()).string();
            files[name] = folder.Read(name);
        }
    }
    return files;
}

/// The files below a folder as a text: a line each, with the first line of the file.
inline std::string FirstLines(const TestFolder& folder)
{
    std::string list;
    for (const auto& [name, text] : FilesBelow(folder))
    {
        list += name + ": " + text.substr(0, text.find('\n')) + "\n";
    }
    return list;
}

} // namespace Vornu::Test
