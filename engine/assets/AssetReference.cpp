#include "engine/assets/AssetReference.h"

#include "engine/assets/AssetRegistry.h"

#include <memory>
#include <optional>
#include <stdexcept>

namespace Vornu::Assets
{
namespace
{

constexpr std::string_view kGuidPrefix = "guid:";
constexpr std::string_view kBuiltinPrefix = "builtin:";

} // namespace

AssetId ResolveAssetReference(const AssetRegistry& registry, std::string_view text, AssetKind)
{
    if (text.starts_with(kGuidPrefix))
    {
        const std::optional<Core::Guid> guid = Core::Guid::TryParse(text.substr(kGuidPrefix.size()));
        return guid && guid->IsValid() ? registry.FindByGuid(*guid) : 0;
    }
    if (text.starts_with(kBuiltinPrefix))
    {
        return registry.FindBuiltin(text.substr(kBuiltinPrefix.size()));
    }
    return 0;
}

std::string FormatAssetReference(const AssetRegistry& registry, AssetId id)
{
    const std::shared_ptr<const AssetRecord> record = registry.FindRecord(id);
    if (!record)
    {
        return {};
    }
    if (record->isBuiltin)
    {
        return std::string(kBuiltinPrefix) + record->name;
    }
    return std::string(kGuidPrefix) + record->guid.ToString();
}

Reflection::SchemaCodecContext MakeSceneCodecContext(const AssetRegistry& registry)
{
    Reflection::SchemaCodecContext context;
    context.assetToText = [&registry](AssetId id, const Reflection::AssetTypeInfo& type)
    {
        const std::shared_ptr<const AssetRecord> record = registry.FindRecord(id);
        if (!record || record->kind != static_cast<AssetKind>(type.nativeId))
        {
            throw std::runtime_error("Unregistered asset or mismatched asset type: " + type.name);
        }
        return std::optional(FormatAssetReference(registry, id));
    };
    context.textToAsset = [&registry](const std::string& text, const Reflection::AssetTypeInfo& type)
    {
        const auto kind = static_cast<AssetKind>(type.nativeId);
        const AssetId id = ResolveAssetReference(registry, text, kind);
        const std::shared_ptr<const AssetRecord> record = registry.FindRecord(id);
        if (record && record->kind == kind)
        {
            return id;
        }
        if (!record && registry.IsStripped(kind))
        {
            return kStrippedAssetId;
        }
        throw std::runtime_error("Unresolved asset or mismatched asset type: " + type.name + " / " + text);
    };
    return context;
}

} // namespace Vornu::Assets
