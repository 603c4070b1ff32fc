#include "engine/scene/PluginRecords.h"

#include "engine/core/Logger.h"

#include <algorithm>
#include <mutex>
#include <set>

namespace Vornu::Scene
{
namespace
{

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsRecordNameCharacter(char c)
{
    return IsLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_';
}

} // namespace

bool IsPluginRecordName(std::string_view name) noexcept
{
    return name.size() >= 3 && name.find('.') != std::string_view::npos && IsLetter(name.front()) &&
           std::all_of(name.begin(), name.end(), IsRecordNameCharacter);
}

void ReportUnloadedPluginComponent(const std::string& name)
{
    static std::recursive_mutex mutex; // a log sink may load scenes of its own
    static std::set<std::string> reported;
    const std::lock_guard lock(mutex);
    if (reported.insert(name).second)
    {
        Core::LogWarning(
            "Component '" + name +
            "' belongs to a plugin that is not loaded; its data is kept and saved back unchanged.");
    }
}

} // namespace Vornu::Scene
