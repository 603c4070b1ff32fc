#include "engine/scene/entities/CommandBuffer.h"

#include "engine/scene/entities/Registry.h"

#include <stdexcept>
#include <utility>

namespace Vornu::Scene
{

Entity CommandBuffer::CreateEntity()
{
    class Command final : public ICommand
    {
    public:
        explicit Command(Entity entity) : entity_(entity) {}
        void Execute(Registry& registry) override { registry.CommitReservedEntity(entity_); }
        std::unique_ptr<ICommand> Clone() const override { return std::make_unique<Command>(*this); }

    private:
        Entity entity_;
    };

    if (registry_ == nullptr)
    {
        throw std::logic_error(
            "CommandBuffer::CreateEntity requires a buffer obtained from Registry::Defer().");
    }
    const Entity entity = registry_->ReserveEntity();
    commands_.push_back(std::make_unique<Command>(entity));
    return entity;
}

void CommandBuffer::DestroyEntity(Entity entity)
{
    class Command final : public ICommand
    {
    public:
        explicit Command(Entity target) : entity_(target) {}
        void Execute(Registry& registry) override { registry.DestroyEntity(entity_); }
        std::unique_ptr<ICommand> Clone() const override { return std::make_unique<Command>(*this); }

    private:
        Entity entity_;
    };

    commands_.push_back(std::make_unique<Command>(entity));
}

void CommandBuffer::Invoke(std::function<void(Registry&)> call)
{
    class Command final : public ICommand
    {
    public:
        explicit Command(std::function<void(Registry&)> function) : function_(std::move(function)) {}

        void Execute(Registry& registry) override
        {
            if (function_)
            {
                function_(registry);
            }
        }

        std::unique_ptr<ICommand> Clone() const override { return std::make_unique<Command>(*this); }

    private:
        std::function<void(Registry&)> function_;
    };

    commands_.push_back(std::make_unique<Command>(std::move(call)));
}

std::vector<std::unique_ptr<ICommand>> CommandBuffer::Take()
{
    return std::exchange(commands_, {});
}

} // namespace Vornu::Scene
