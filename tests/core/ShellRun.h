#pragma once

#include "engine/core/process/Process.h"
#include "tests/core/TestFolder.h"

#include <string>

namespace Vornu::Test
{

/// What one run of a program left behind.
struct ShellRun
{
    int exitCode = -1;
    std::string out;
    std::string err;

    std::string Text() const { return out + "[err] " + err + "[exit] " + std::to_string(exitCode); }
};

/// Runs a shell script in `folder`, with `name` standing for the program. The log is off.
inline ShellRun RunShell(const TestFolder& folder, const std::string& name, const std::string& program,
                         const std::string& script)
{
    const TestFolder streams;
    Platform::ProcessRequest request;
    request.executable = "/bin/sh";
    request.workingDirectory = folder.Path();
    request.arguments = {"-c",
                         "export VORNU_LOG_LEVELS=off VORNU_USER_SETTINGS_DIR=\"$0/settings\"\n" + name +
                             "() { '" + program +
                             "' \"$@\"; }\n"
                             "exec >\"$0/out\" 2>\"$0/err\"\n" +
                             script,
                         streams.Path()};
    const Platform::ProcessResult result = Platform::RunCaptured(request);
    return {result.exitCode, streams.Read("out"), streams.Read("err")};
}

} // namespace Vornu::Test
