#include "engine/scene/legacy/RecordLine.h"

#include "engine/assets/registry/AssetReference.h"

namespace Vornu::Scene::Legacy
{

void RecordLine::ReadField(const AssetField& field)
{
    // An opening quote at the end of the line is a text, if an empty one.
    const bool present = tokens_ && !tokens_.Rest().empty();
    std::string text;
    tokens_.Read(text);
    if (present)
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
