#include "engine/core/system/Signals.h"
#include "engine/core/system/System.h"
#include "tools/upgrade/UpgradeTool.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string_view>
#include <vector>

int main(int argumentCount, char** argumentValues)
{
    Vornu::Platform::PrepareStandardStreams();
    Vornu::Platform::WriteStandardStreamsByLine();
    Vornu::Platform::KeepFreedMemory();
    Vornu::Platform::InstallTemporaryFileCleanup();
    try
    {
        const std::vector<std::string_view> arguments(argumentValues + std::min(argumentCount, 1),
                                                      argumentValues + argumentCount);
        return Vornu::Upgrade::RunUpgradeTool(arguments);
    }
    catch (const std::exception& error) // of the command line's own; nothing was begun
    {
        std::fprintf(stderr, "vornu-upgrade: %s\n", error.what());
        return 1;
    }
}
