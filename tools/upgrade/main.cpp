#include "engine/core/system/Signals.h"
#include "engine/core/system/System.h"
#include "tools/upgrade/UpgradeTool.h"

#include <string_view>
#include <vector>

int main(int argumentCount, char** argumentValues)
{
    Vornu::Platform::PrepareStandardStreams();
    Vornu::Platform::WriteStandardStreamsByLine();
    Vornu::Platform::KeepFreedMemory();
    Vornu::Platform::InstallTemporaryFileCleanup();
    std::vector<std::string_view> arguments;
    for (int i = 1; i < argumentCount; ++i)
    {
        arguments.emplace_back(argumentValues[i]);
    }
    return Vornu::Upgrade::RunUpgradeTool(arguments);
}
