#include "engine/core/system/Signals.h"
#include "tools/schema/SchemaTool.h"

#include <string_view>
#include <vector>

int main(int argumentCount, char** argumentValues)
{
    Vornu::Platform::PrepareStandardStreams();
    const std::vector<std::string_view> arguments(argumentValues + (argumentCount > 0 ? 1 : 0),
                                                  argumentValues + argumentCount);
    return Vornu::Schema::RunSchemaTool(arguments);
}
