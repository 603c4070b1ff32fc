#include "engine/scene/files/LoadFault.h"

#include <utility>

namespace Vornu::Scene
{

bool CatchLoadFaults(std::string* error, Core::FunctionRef<void()> load)
{
    std::string message;
    try
    {
        load();
    }
    catch (const LoadFault& fault)
    {
        message = fault.what();
    }
    catch (const std::exception& fault)
    {
        message = std::string("Failed to load scene: ") + fault.what();
    }
    const bool loaded = message.empty();
    if (error != nullptr)
    {
        *error = std::move(message);
    }
    return loaded;
}

} // namespace Vornu::Scene
