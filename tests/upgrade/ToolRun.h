#pragma once

#include "tests/core/ShellRun.h"
#include "tests/core/TestFolder.h"

#include <filesystem>
#include <map>
#include <string>

namespace Vornu::Test
{

inline constexpr char kLegacyV3[] = "scene_version 3\nentity \"\" \"Root\"\n";
inline constexpr char kCurrent[] = "scene_version 6\n";

using ToolRun = ShellRun;

/// Runs a shell script in `folder`, with `upgrade` standing for the program. The log is off.
inline ToolRun RunScript(const TestFolder& folder, const std::string& script)
{
    return RunShell(folder, "upgrade", VORNU_UPGRADE_PROGRAM, script);
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
