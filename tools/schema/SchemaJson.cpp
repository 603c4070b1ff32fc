#include "tools/schema/SchemaJson.h"

#include "tools/schema/JsonWriter.h"
#include "tools/schema/SchemaNames.h"

#include <string_view>
#include <vector>

namespace Vornu::Schema
{
namespace
{

using Reflection::PropertyKind;
using Layout = JsonWriter::Layout;

void WriteNames(JsonWriter& json, std::string_view key, const std::vector<std::string_view>& names)
{
    json.Key(key);
    json.BeginArray(Layout::Inline);
    for (const std::string_view name : names)
    {
        json.String(name);
    }
    json.End();
}

void WriteNumber(JsonWriter& json, std::string_view key, float value)
{
    json.Key(key);
    json.Raw(ShortNumber(value));
}

void WriteAssetTypes(JsonWriter& json, const Reflection::ReflectionRegistry& registry)
{
    json.Key("assetTypes");
    json.BeginArray();
    for (const auto& type : registry.AssetTypes())
    {
        json.BeginObject(Layout::Inline);
        json.Member("name", type->name);
        json.Member("nativeId", std::uint64_t{type->nativeId});
        json.End();
    }
    json.End();
}

void WriteEnums(JsonWriter& json, const Reflection::ReflectionRegistry& registry)
{
    json.Key("enums");
    json.BeginArray();
    for (const auto& schema : registry.Enums())
    {
        json.BeginObject();
        json.Member("name", schema->name);
        json.Key("values");
        json.BeginArray();
        for (const Reflection::EnumEntry& entry : schema->values)
        {
            json.BeginObject(Layout::Inline);
            json.Key("value");
            json.Raw(EnumNumber(entry.value));
            json.Member("name", entry.name);
            json.Member("displayName", entry.displayName);
            json.End();
        }
        json.End();
        json.End();
    }
    json.End();
}

void WriteValue(JsonWriter& json, const Reflection::SchemaValue& value)
{
    switch (value.GetType())
    {
    case Reflection::SchemaValue::Type::Text:
        json.String(value.Text());
        break;
    case Reflection::SchemaValue::Type::Record:
        json.BeginObject(Layout::Inline);
        for (const Reflection::SchemaField& field : value.Record().Fields())
        {
            json.Key(field.name);
            WriteValue(json, field.value);
        }
        json.End();
        break;
    case Reflection::SchemaValue::Type::Array:
        json.BeginArray(Layout::Inline);
        for (const Reflection::SchemaValue& element : value.Array())
        {
            WriteValue(json, element);
        }
        json.End();
        break;
    }
}

void WriteKind(JsonWriter& json, const Reflection::PropertyInfo& property,
               const Reflection::ReflectionRegistry& registry)
{
    json.Member("kind", KindName(property.schema));
    if (property.schema.element)
    {
        std::vector<std::string_view> kinds;
        for (auto* element = property.schema.element.get(); element != nullptr;
             element = element->element.get())
        {
            kinds.push_back(KindName(*element));
        }
        WriteNames(json, "elementKinds", kinds);
    }
    if (property.accessors->fixedSize != 0)
    {
        json.Member("length", std::uint64_t{property.accessors->fixedSize});
    }
    const Reflection::ValueSchema& leaf = property.schema.Leaf();
    if (leaf.kind == PropertyKind::Enum)
    {
        json.Member("enum", property.attributes.enumName);
    }
    else if (leaf.kind == PropertyKind::AssetRef)
    {
        json.Member("asset", property.attributes.assetType);
    }
    else if (const Reflection::TypeInfo* const type = registry.FindType(leaf.type);
             leaf.kind == PropertyKind::Object && type != nullptr)
    {
        json.Member("object", type->name);
    }
}

void WriteProperty(JsonWriter& json, const Reflection::PropertyInfo& property,
                   const Reflection::ReflectionRegistry& registry)
{
    const Reflection::PropertyAttributes& attributes = property.attributes;
    json.BeginObject();
    json.Member("name", property.name);
    WriteKind(json, property, registry);
    Reflection::SchemaArena arena;
    json.Key("default");
    WriteValue(json, CaptureDefault(property, registry, arena));
    if (attributes.hasRange)
    {
        json.Key("range");
        json.BeginArray(Layout::Inline);
        json.Raw(ShortNumber(attributes.rangeMin));
        json.Raw(ShortNumber(attributes.rangeMax));
        json.End();
    }
    json.Member("displayName", attributes.displayName);
    json.Member("group", attributes.group);
    json.Member("tooltip", attributes.tooltip);
    WriteNames(json, "attributes", AttributeNames(attributes.flags));
    json.Member("sinceVersion", std::uint64_t{attributes.sinceVersion});
    json.Member("untilVersion", std::uint64_t{attributes.untilVersion});
    json.End();
}

void WriteTypes(JsonWriter& json, const Reflection::ReflectionRegistry& registry)
{
    json.Key("types");
    json.BeginArray();
    for (const auto& type : registry.Types())
    {
        json.BeginObject();
        json.Member("name", type->name);
        json.Member("displayName", type->displayName);
        json.Member("category", type->category);
        json.Member("version", std::uint64_t{type->version});
        json.Key("properties");
        json.BeginArray();
        for (const Reflection::PropertyInfo& property : type->properties)
        {
            WriteProperty(json, property, registry);
        }
        json.End();
        json.End();
    }
    json.End();
}

void WriteRunTimeState(JsonWriter& json, const Scene::ComponentTypeEntry& entry)
{
    json.Key("saveGame");
    json.BeginObject(Layout::Inline);
    json.Member("version", std::uint64_t{entry.saveGame.version});
    WriteNames(json, "fields", SaveGameFieldNames(entry));
    json.End();

    json.Key("replicated");
    json.BeginArray();
    for (const Scene::ReplicatedField& field : entry.replicatedFields)
    {
        json.BeginObject(Layout::Inline);
        json.Member("path", field.path);
        json.Member("quantized", field.settings.quantized);
        WriteNumber(json, "step", field.settings.step);
        WriteNumber(json, "minimum", field.settings.minimum);
        WriteNumber(json, "maximum", field.settings.maximum);
        json.Member("reliable", field.settings.reliable);
        json.Member("ownerOnly", field.settings.ownerOnly);
        json.Member("interpolated", field.settings.interpolated);
        json.Member("wrapsAround", field.settings.wrapsAround);
        json.End();
    }
    json.End();
}

void WriteComponents(JsonWriter& json, const Scene::ComponentRegistry& components)
{
    json.Key("components");
    json.BeginArray();
    for (const auto& entry : components.Entries())
    {
        json.BeginObject();
        json.Member("serial", entry->serial);
        json.Member("name", entry->typeName);
        WriteNames(json, "flags", FlagNames(entry->flags));
        json.Member("description", entry->description);
        json.Key("records");
        json.BeginArray();
        for (const Scene::ComponentRecordRow& record : entry->records)
        {
            json.BeginObject(Layout::Inline);
            json.Member("name", record.name);
            json.Member("repeatable", record.repeatable);
            json.End();
        }
        json.End();
        WriteNames(json, "aliases", AliasNames(*entry));
        WriteRunTimeState(json, *entry);
        json.End();
    }
    json.End();
}

} // namespace

std::string SchemaJson(const SchemaTables& tables)
{
    JsonWriter json;
    json.BeginObject();
    WriteAssetTypes(json, tables.reflection);
    WriteEnums(json, tables.reflection);
    WriteTypes(json, tables.reflection);
    WriteComponents(json, tables.components);
    json.End();
    return json.Text();
}

} // namespace Vornu::Schema
