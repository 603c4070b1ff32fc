#pragma once

#include "engine/core/Guid.h"
#include "engine/scene/Scene.h"
#include "engine/scene/components/Environment.h"
#include "engine/scene/legacy/PendingEntity.h"
#include "engine/scene/registration/EntityRecordStage.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Vornu::Assets
{
class AssetManager;
}

namespace Vornu::Scene::Legacy
{

/// Makes the new scene while the file is read: an entity is added when its last line has been read. Faults of
/// the whole scene wait for `Finish`, since any fault of a line comes before them.
class SceneAssembly
{
public:
    /// No handle into `target` is going to be valid in the new scene. All arguments outlive the assembly.
    SceneAssembly(const Scene& target, const ComponentRecordTable& table, Assets::AssetManager& assets);

    std::uint32_t version = 0; // of the file; 0 before the header was read
    EnvironmentSettings environment;

    /// Takes over what the entity holds.
    void Add(PendingEntity& pending);

    /// The finished scene, behind the last line. Throws `std::runtime_error`.
    Scene Finish();

private:
    void CheckIdentities() const;
    void AddToScene(PendingEntity& pending);
    void LinkParents();
    void LinkComponents();
    void LinkConstraint(Entity entity);
    void LinkCharacter(Entity entity, bool isNamed);
    void LinkCamera(Entity entity, bool isNamed);
    void SettleLink(Entity& handle, const Core::Guid& guid) const;
    void RunSystems();

    /// The components among those with later steps that came as schema records.
    struct NamedControllers
    {
        bool animator = false;
        bool character = false;
        bool camera = false;
    };

    struct Link
    {
        Core::Guid guid; // as the file has it
        std::optional<Core::Guid> parentGuid;
    };

    const ComponentRecordTable& table_;
    Assets::AssetManager& assets_;
    Scene scene_;
    std::vector<Link> links_;                                // of every entity, in file order
    std::vector<Entity> entities_;                           // in file order; shorter once there is a fault
    std::vector<NamedControllers> named_;                    // beside `entities_`
    std::vector<std::pair<Entity, EntityRecordStage>> late_; // with components that reach their entity last
    std::string fault_;
};

} // namespace Vornu::Scene::Legacy
