#include "engine/scene/registration/MissingComponents.h"

#include "engine/core/logging/Logger.h"
#include "engine/core/text/Ascii.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace Vornu::Scene
{
namespace
{

struct RemovedComponent
{
    std::string_view name;
    std::string_view replacement;
    std::atomic<bool> reported = false;
};

RemovedComponent* FindRemoved(std::string_view name) noexcept
{
    static RemovedComponent removed[] = {
        {"WeaponComponent", "a game script (see the Weapon script of the project templates)"},
        {"PickupComponent", "a game script (see the Pickup script of the Battle Yard template)"},
        {"DamageComponent", "a game script (see the DamageZone script of the Battle Yard template)"},
    };
    const auto found =
        std::find_if(std::begin(removed), std::end(removed),
                     [&](const RemovedComponent& component) { return component.name == name; });
    return found == std::end(removed) ? nullptr : found;
}

bool IsRecordNameCharacter(char c)
{
    return Core::IsAsciiLetter(c) || Core::IsAsciiDigit(c) || c == '-' || c == '.' || c == '_';
}

} // namespace

bool IsPluginRecordName(std::string_view name) noexcept
{
    return name.size() >= 3 && name.find('.') != std::string_view::npos &&
           Core::IsAsciiLetter(name.front()) && std::all_of(name.begin(), name.end(), IsRecordNameCharacter);
}

bool IsRemovedComponent(std::string_view name) noexcept
{
    return FindRemoved(name) != nullptr;
}

void ReportUnloadedPluginComponent(const std::string& name)
{
    static std::mutex mutex;
    static auto* const reported = new std::set<std::string>; // stays until the process ends
    bool isNew = false;
    {
        const std::lock_guard lock(mutex);
        isNew = reported->insert(name).second;
    }
    if (isNew) // without the lock, as a log sink may load scenes of its own
    {
        Core::LogWarning(
            "Component '" + name +
            "' belongs to a plugin that is not loaded; its data is kept and saved back unchanged.");
    }
}

void ReportRemovedComponent(std::string_view name)
{
    RemovedComponent* const component = FindRemoved(name);
    if (component != nullptr && !component->reported.exchange(true))
    {
        Core::LogWarning(
            std::string(name) +
            " is no longer an engine component (D-01); its data is skipped. Game rules belong to " +
            std::string(component->replacement) + ".");
    }
}

void ReportSupersededRecords(std::string_view name)
{
    Core::LogWarning("Component '" + std::string(name) +
                     "' is saved from the entities that have it; the data that was kept for them while its "
                     "plugin was not loaded is left out.");
}

void MissingComponentReport::Note(std::string_view name)
{
    if (seen_.emplace(name).second)
    {
        names_.emplace_back(name);
    }
}

void MissingComponentReport::Send() const
{
    for (const std::string& name : names_)
    {
        if (IsRemovedComponent(name))
        {
            ReportRemovedComponent(name);
        }
        else
        {
            ReportUnloadedPluginComponent(name);
        }
    }
}

} // namespace Vornu::Scene
