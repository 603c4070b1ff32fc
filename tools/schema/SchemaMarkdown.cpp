#include "tools/schema/SchemaMarkdown.h"

#include "engine/core/text/NumberText.h"
#include "tools/schema/MarkdownTable.h"
#include "tools/schema/SchemaNames.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace Vornu::Schema
{
namespace
{

using Reflection::PropertyInfo;
using Reflection::PropertyKind;
using Reflection::ReflectionRegistry;
using Reflection::SchemaValue;
using Reflection::TypeInfo;

constexpr std::string_view kIntroduction =
    "# Component types\n"
    "\n"
    "Made by `vornu-schema --markdown`; see [checklists.md](checklists.md).\n"
    "\n"
    "The order of the components is that of their records in a saved scene, and the order of the\n"
    "properties that of the fields in a record. A default is what a record would hold: a vector has its\n"
    "components one behind the other, a quaternion begins with w. None is shown for what is empty;\n"
    "`its own` stands for the defaults of a nested type. A range is for tools; values outside it load. A\n"
    "field with the attribute `Runtime` isn't saved. The records are described in\n"
    "[formats/scene.md](formats/scene.md).\n"
    "\n";

void AppendItem(std::string& list, std::string_view separator, std::string_view item)
{
    list.append(list.empty() ? std::string_view() : separator).append(item);
}

std::string Joined(const std::vector<std::string_view>& names, std::string (*form)(std::string_view))
{
    std::string list;
    for (const std::string_view name : names)
    {
        AppendItem(list, ", ", form(name));
    }
    return list;
}

std::string Plain(std::string_view name)
{
    return std::string(name);
}

/// A link to the section whose heading is the name.
std::string LinkTo(std::string_view name)
{
    std::string anchor(name);
    std::transform(anchor.begin(), anchor.end(), anchor.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::string("[").append(name) + "](#" + anchor + ")";
}

std::string TypeText(const PropertyInfo& property, const ReflectionRegistry& registry)
{
    std::string text;
    for (auto* schema = &property.schema; schema->element; schema = schema->element.get())
    {
        text += "array of ";
    }
    if (property.accessors->fixedSize != 0)
    {
        text = "array of " + std::to_string(property.accessors->fixedSize) + " ";
    }
    const Reflection::ValueSchema& leaf = property.schema.Leaf();
    const TypeInfo* const type = registry.FindType(leaf.type);
    switch (leaf.kind)
    {
    case PropertyKind::Enum:
        return text + LinkTo(property.attributes.enumName);
    case PropertyKind::AssetRef:
        return text + std::string(KindName(leaf)) + " (" + std::string(property.attributes.assetType) + ")";
    case PropertyKind::Object:
        return text + (type != nullptr ? LinkTo(type->name) : std::string(KindName(leaf)));
    default:
        return text + std::string(KindName(leaf));
    }
}

/// The numbers of a leaf, separated by blanks, in their shortest form.
std::string ShortNumbers(std::string_view text)
{
    std::string result;
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        const std::optional<float> number = Core::ParseFloatText(word);
        AppendItem(result, " ", number ? ShortNumber(*number) : word);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

bool HoldsFloats(PropertyKind kind)
{
    return kind == PropertyKind::Float || (kind >= PropertyKind::Vec2 && kind <= PropertyKind::Quat);
}

bool SameValue(const SchemaValue& one, const SchemaValue& other);

/// Every field of the record holds the default of its property.
bool HoldsOwnDefaults(const Reflection::SchemaRecord& record, const ReflectionRegistry& registry)
{
    const TypeInfo* const type = registry.FindType(record.name);
    Reflection::SchemaArena arena;
    for (const Reflection::SchemaField& field : record.Fields())
    {
        const PropertyInfo* const property = type != nullptr ? type->FindProperty(field.name) : nullptr;
        if (property == nullptr || !SameValue(field.value, CaptureDefault(*property, registry, arena)))
        {
            return false;
        }
    }
    return true;
}

bool SameValue(const SchemaValue& one, const SchemaValue& other)
{
    if (one.GetType() != other.GetType())
    {
        return false;
    }
    if (one.IsText())
    {
        return one.Text() == other.Text();
    }
    if (one.IsArray())
    {
        const auto left = one.Array();
        const auto right = other.Array();
        return std::equal(left.begin(), left.end(), right.begin(), right.end(), SameValue);
    }
    const auto left = one.Record().Fields();
    const auto right = other.Record().Fields();
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const auto& a, const auto& b)
                      { return a.name == b.name && SameValue(a.value, b.value); });
}

std::string DefaultText(const PropertyInfo& property, const ReflectionRegistry& registry)
{
    Reflection::SchemaArena arena;
    const SchemaValue value = CaptureDefault(property, registry, arena);
    if (value.IsText())
    {
        return Code(HoldsFloats(property.schema.kind) ? ShortNumbers(value.Text())
                                                      : std::string(value.Text()));
    }
    if (value.IsArray())
    {
        const std::size_t size = value.Array().Size();
        return size == 0 ? std::string() : std::to_string(size) + " elements";
    }
    return HoldsOwnDefaults(value.Record(), registry) ? Code("its own") : "see the JSON";
}

std::string VersionText(const Reflection::PropertyAttributes& attributes)
{
    if (attributes.untilVersion != 0)
    {
        return std::to_string(attributes.sinceVersion) + " to " + std::to_string(attributes.untilVersion - 1);
    }
    return attributes.sinceVersion == 1 ? std::string() : "from " + std::to_string(attributes.sinceVersion);
}

std::string PropertyTable(const TypeInfo& type, const ReflectionRegistry& registry)
{
    MarkdownTable table({"Property", "Type", "Default", "Range", "Display name", "Group", "Attributes",
                         "Versions", "Tooltip"});
    for (const PropertyInfo& property : type.properties)
    {
        const Reflection::PropertyAttributes& attributes = property.attributes;
        const std::string range =
            attributes.hasRange ? ShortNumber(attributes.rangeMin) + " to " + ShortNumber(attributes.rangeMax)
                                : std::string();
        table.AddRow({Code(property.name), TypeText(property, registry), DefaultText(property, registry),
                      range, EscapeMarkdown(attributes.displayName), EscapeMarkdown(attributes.group),
                      Joined(AttributeNames(attributes.flags), Code), VersionText(attributes),
                      EscapeMarkdown(attributes.tooltip)});
    }
    return table.Text();
}

std::string TypeHeading(const TypeInfo& type)
{
    return "### " + type.name + "\n\n" + EscapeMarkdown(type.displayName) + ", category " +
           EscapeMarkdown(type.category) + ", version " + std::to_string(type.version) + ".";
}

std::string RecordText(const Scene::ComponentTypeEntry& entry)
{
    std::string text;
    for (const Scene::ComponentRecordRow& record : entry.records)
    {
        AppendItem(text, ", ", Code(record.name) + (record.repeatable ? " (repeated)" : ""));
    }
    return text;
}

std::string ReplicatedTable(const Scene::ComponentTypeEntry& entry)
{
    MarkdownTable table({"Replicated field", "Step", "Bounds", "Flags"});
    for (const Scene::ReplicatedField& field : entry.replicatedFields)
    {
        const Scene::ReplicatedFieldSettings& settings = field.settings;
        const bool bounded = settings.minimum != 0.0f || settings.maximum != 0.0f;
        std::vector<std::string_view> flags;
        for (const auto& [isSet, name] :
             {std::pair(settings.reliable, "reliable"), std::pair(settings.ownerOnly, "ownerOnly"),
              std::pair(settings.interpolated, "interpolated"),
              std::pair(settings.wrapsAround, "wrapsAround")})
        {
            if (isSet)
            {
                flags.emplace_back(name);
            }
        }
        table.AddRow({Code(field.path), settings.quantized ? ShortNumber(settings.step) : "",
                      bounded ? ShortNumber(settings.minimum) + " to " + ShortNumber(settings.maximum) : "",
                      Joined(flags, Code)});
    }
    return table.Text();
}

std::string ComponentSection(const Scene::ComponentTypeEntry& entry, const TypeInfo& type,
                             const ReflectionRegistry& registry)
{
    std::string text = TypeHeading(type);
    if (!entry.description.empty())
    {
        text.append(" ").append(EscapeMarkdown(entry.description));
    }
    text += "\n\n";
    if (!entry.aliases.empty())
    {
        text += "Record aliases: " + Joined(AliasNames(entry), Code) + "\n\n";
    }
    text += PropertyTable(type, registry) + ReplicatedTable(entry);
    if (!entry.saveGame.fields.empty())
    {
        text += "Save-game fields, version " + std::to_string(entry.saveGame.version) + ": " +
                Joined(SaveGameFieldNames(entry), Code) + "\n\n";
    }
    return text;
}

std::string Overview(const SchemaTables& tables)
{
    MarkdownTable table({"Serial", "Component", "Display name", "Category", "Version", "Flags", "Records"});
    for (const auto& entry : tables.components.Entries())
    {
        const TypeInfo* const type = tables.reflection.FindType(entry->type);
        table.AddRow({std::to_string(entry->serial), LinkTo(entry->typeName),
                      EscapeMarkdown(entry->displayName), EscapeMarkdown(entry->category),
                      type != nullptr ? std::to_string(type->version) : "",
                      Joined(FlagNames(entry->flags), Plain), RecordText(*entry)});
    }
    return table.Text();
}

std::string EnumSections(const ReflectionRegistry& registry)
{
    std::string text;
    for (const auto& schema : registry.Enums())
    {
        MarkdownTable table({"Value", "Name", "Display name"});
        for (const Reflection::EnumEntry& entry : schema->values)
        {
            table.AddRow({EnumNumber(entry.value), Code(entry.name), EscapeMarkdown(entry.displayName)});
        }
        text += "### " + schema->name + "\n\n" + table.Text();
    }
    return text;
}

} // namespace

std::string SchemaMarkdown(const SchemaTables& tables)
{
    std::string components;
    for (const auto& entry : tables.components.Entries())
    {
        if (const TypeInfo* const type = tables.reflection.FindType(entry->type))
        {
            components += ComponentSection(*entry, *type, tables.reflection);
        }
    }
    std::string values;
    for (const auto& type : tables.reflection.Types())
    {
        if (tables.components.Find(type->type) == nullptr)
        {
            values += TypeHeading(*type) + "\n\n" + PropertyTable(*type, tables.reflection);
        }
    }
    MarkdownTable assets({"Number", "Asset type"});
    for (const auto& type : tables.reflection.AssetTypes())
    {
        assets.AddRow({std::to_string(type->nativeId), Code(type->name)});
    }
    std::string text = std::string(kIntroduction) + Overview(tables) + "## Components\n\n" + components +
                       "## Nested types\n\n" + values + "## Enumerations\n\n" +
                       EnumSections(tables.reflection) + "## Asset types\n\n" + assets.Text();
    text.pop_back(); // the empty line behind the last table
    return text;
}

} // namespace Vornu::Schema
