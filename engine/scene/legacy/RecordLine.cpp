#include "engine/scene/legacy/RecordLine.h"

#include "engine/assets/registry/AssetReference.h"

namespace Vornu::Scene::Legacy
{

void RecordLine::ReadField(const AssetField& field)
{
    std::string text;
    tokens_.Read(text);
    if (tokens_ || !text.empty())
    {
        field.id = Assets::ResolveAssetReference(*assets_, text);
    }
}

void RecordLine::ReadField(const GuidField& field)
{
    std::string text;
    tokens_.Read(text);
    field.guid = Core::Guid::TryParse(text).value_or(Core::Guid());
}

} // namespace Vornu::Scene::Legacy
