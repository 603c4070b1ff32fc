#pragma once

#include "engine/scene/entities/Entity.h"

#include <functional>
#include <memory>
#include <vector>

namespace Vornu::Scene
{

class Registry;

/// A structural change that waits in a CommandBuffer.
class ICommand
{
public:
    virtual ~ICommand() = default;
    virtual void Execute(Registry& registry) = 0;
    virtual std::unique_ptr<ICommand> Clone() const = 0;
};

/// Structural changes recorded while a registry's storages are being walked, to be played back afterwards by
/// Registry::FlushCommands(). Each registry owns one, reached through Registry::Defer(). Same thread as the
/// registry.
class CommandBuffer
{
public:
    CommandBuffer() = default;
    CommandBuffer(const CommandBuffer&) = delete;
    CommandBuffer& operator=(const CommandBuffer&) = delete;

    /// Reserves an entity that becomes alive at playback; the handle can be named in further commands at
    /// once. Throws `std::logic_error` when the buffer isn't bound to a registry and `std::length_error` when
    /// the registry is full.
    Entity CreateEntity();

    /// Destroys whatever entity the handle names at playback; one that isn't valid then is ignored. The
    /// entity alone goes, as by Registry::DestroyEntity.
    void DestroyEntity(Entity entity);

    /// Calls `call` at playback; an empty callable does nothing.
    void Invoke(std::function<void(Registry&)> call);

    bool Empty() const noexcept { return commands_.empty(); }

    /// Takes all commands out in the order of recording, leaving the buffer empty.
    std::vector<std::unique_ptr<ICommand>> Take();

    /// Deletes all commands without running them.
    void Clear() noexcept { commands_.clear(); }

    /// Names the registry that reserves the entities of CreateEntity().
    void Bind(Registry* registry) noexcept { registry_ = registry; }

private:
    Registry* registry_ = nullptr;
    std::vector<std::unique_ptr<ICommand>> commands_;
};

} // namespace Vornu::Scene
