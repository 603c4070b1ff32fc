#include "engine/reflection/ObjectText.h"

#include "engine/core/text/NumberText.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/reflection/SchemaText.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Vornu::Reflection
{
namespace
{

constexpr std::string_view kValueHead = "value";

/// Told to nobody: see `WriteObjectRecord`.
[[noreturn]] void Refuse()
{
    throw std::runtime_error("Object has no record in text.");
}

class ObjectWriter
{
public:
    ObjectWriter(Core::TextWriter& out, const ReflectionRegistry& registry, const SchemaCodecContext& context)
        : out_(out), registry_(registry), context_(context), recordStart_(out.Position()),
          lineStart_(recordStart_)
    {
    }

    /// Goes on with a line that holds the keyword, and the name of a field.
    void WriteObject(std::string_view head, const ObjectView& object, std::uint32_t depth)
    {
        const TypeInfo* const type = registry_.FindType(object.type);
        if (type == nullptr || type->version == 0 || type->name.empty() || object.constData == nullptr)
        {
            Refuse();
        }
        budget_.Charge(type->properties.size(), depth);
        WriteHead(head, *type);
        for (const PropertyInfo& property : type->properties)
        {
            if (type->Stores(property))
            {
                WriteProperty(property, object, depth + 1);
            }
        }
        out_.Append("end_component_schema");
        EndLine();
    }

private:
    void WriteHead(std::string_view head, const TypeInfo& type)
    {
        std::uint32_t count = 0;
        for (const PropertyInfo& property : type.properties)
        {
            count += type.Stores(property) ? 1 : 0;
        }
        char* const begin =
            out_.Reserve(head.size() + EscapedCapacity(type.name.size()) + 2 * Core::kNumberTextCapacity);
        char* at = WriteQuoted(CopyText(begin, head), type.name);
        *at++ = ' ';
        at = Core::WriteIntegerText(at, type.version);
        *at++ = ' ';
        at = Core::WriteIntegerText(at, count);
        out_.Commit(static_cast<std::size_t>(at - begin));
        EndLine();
    }

    void WriteProperty(const PropertyInfo& property, const ObjectView& object, std::uint32_t depth)
    {
        if (property.schema.type != property.valueType ||
            HasFlag(property.attributes.flags, PropertyFlags::ReadOnly))
        {
            Refuse();
        }
        WriteValue(property.lineHead, property.ConstView(object.constData), property.schema,
                   property.attributes, depth);
    }

    void WriteValue(std::string_view head, const ObjectView& view, const ValueSchema& schema,
                    const PropertyAttributes& attributes, std::uint32_t depth)
    {
        switch (schema.shape)
        {
        case ValueShape::Object:
            return WriteObject(head, view, depth);
        case ValueShape::Collection:
            return WriteCollection(head, view, schema, attributes, depth);
        case ValueShape::Scalar:
            break;
        }
        switch (schema.kind)
        {
        case PropertyKind::String:
            return WriteText(head, *static_cast<const std::string*>(view.constData));
        case PropertyKind::Enum:
            return WriteText(head, EnumName(view, attributes));
        case PropertyKind::AssetRef:
            return WriteAsset(head, *static_cast<const std::uint64_t*>(view.constData), attributes);
        case PropertyKind::EntityHandle:
        case PropertyKind::EntityLinkRef:
            return WriteCaptured(head, view, schema, attributes, depth);
        default:
            return WriteLeafLine(head, schema.kind, view);
        }
    }

    void WriteCollection(std::string_view head, const ObjectView& view, const ValueSchema& schema,
                         const PropertyAttributes& attributes, std::uint32_t depth)
    {
        const ValueAccessors& accessors = *view.accessors;
        const ValueSchema& element = *schema.element;
        const std::size_t size =
            accessors.size != nullptr ? accessors.size(view.constData) : kMaxElements + 1;
        if (size > kMaxElements || (size > 0 && accessors.constElement == nullptr))
        {
            Refuse();
        }
        CheckCollectionLeaf(schema, attributes, registry_);
        budget_.Charge(size, depth);
        char* const begin = out_.Reserve(head.size() + 1 + Core::kNumberTextCapacity);
        char* at = CopyText(begin, head);
        *at++ = ' ';
        at = Core::WriteIntegerText(at, size);
        out_.Commit(static_cast<std::size_t>(at - begin));
        EndLine();
        const std::string_view word = kElementWords[static_cast<std::size_t>(StoredType(element.shape))];
        for (std::size_t i = 0; i < size; ++i)
        {
            if (accessors.floats != nullptr)
            {
                const float& value = accessors.floats(view.constData)[i];
                WriteLeafLine(kValueHead, PropertyKind::Float, ViewOf(value));
                continue;
            }
            accessors.constElement(view.constData, i,
                                   [&](const ObjectView& value)
                                   { WriteValue(word, value, element, attributes, depth + 1); });
        }
        out_.Append("end_array");
        EndLine();
    }

    std::string_view EnumName(const ObjectView& view, const PropertyAttributes& attributes) const
    {
        const EnumSchema* const schema = FindEnumOf(attributes, registry_);
        const bool fits =
            schema != nullptr && schema->type == view.type && view.accessors->enumRead != nullptr;
        const EnumEntry* const entry =
            fits ? schema->FindValue(view.accessors->enumRead(view.constData)) : nullptr;
        if (entry == nullptr)
        {
            Refuse();
        }
        return entry->name;
    }

    void WriteAsset(std::string_view head, std::uint64_t id, const PropertyAttributes& attributes)
    {
        const AssetTypeInfo* const type = FindAssetTypeOf(attributes, registry_);
        if (type == nullptr || (id != 0 && !context_.assetToText))
        {
            Refuse();
        }
        const std::optional<std::string> text =
            id != 0 ? context_.assetToText(id, *type) : std::optional(std::string());
        if (!text)
        {
            Refuse();
        }
        WriteText(head, *text);
    }

    /// For values that are rare.
    void WriteCaptured(std::string_view head, const ObjectView& view, const ValueSchema& schema,
                       const PropertyAttributes& attributes, std::uint32_t depth)
    {
        SchemaArena arena;
        CodecState state{registry_, context_, arena};
        WriteText(head, EncodeTypedValue(view, schema, attributes, state, depth).Text());
    }

    void WriteText(std::string_view head, std::string_view text)
    {
        char* const begin = out_.Reserve(head.size() + EscapedCapacity(text.size()) + 3);
        char* const end = WriteQuoted(CopyText(begin, head), text);
        out_.Commit(static_cast<std::size_t>(end - begin));
        EndLine();
    }

    void WriteLeafLine(std::string_view head, PropertyKind kind, const ObjectView& view)
    {
        char* const begin = out_.Reserve(head.size() + kLeafCapacity + 3);
        char* at = CopyText(begin, head);
        *at++ = ' ';
        *at++ = '"';
        at = WriteLeaf(at, kind, view);
        *at++ = '"';
        out_.Commit(static_cast<std::size_t>(at - begin));
        EndLine();
    }

    static char* CopyText(char* out, std::string_view text)
    {
        std::memcpy(out, text.data(), text.size());
        return out + text.size();
    }

    /// A blank and the text in quotes.
    static char* WriteQuoted(char* out, std::string_view text)
    {
        *out++ = ' ';
        *out++ = '"';
        out = WriteEscaped(out, text);
        *out++ = '"';
        return out;
    }

    void EndLine()
    {
        out_.Append('\n');
        const std::uint64_t end = out_.Position();
        if (end - lineStart_ > kMaxLineSize + 1 || end - recordStart_ > kMaxRecordSize)
        {
            Refuse();
        }
        lineStart_ = end;
    }

    Core::TextWriter& out_;
    const ReflectionRegistry& registry_;
    const SchemaCodecContext& context_;
    FieldBudget budget_;
    std::uint64_t recordStart_;
    std::uint64_t lineStart_;
};

} // namespace

void WriteObjectRecord(Core::TextWriter& out, const ObjectView& object, const ReflectionRegistry& registry,
                       const SchemaCodecContext& context)
{
    ObjectWriter(out, registry, context).WriteObject(kRecordWord, object, 1);
    out.FlushIfLarge();
    if (!out.Good())
    {
        Refuse();
    }
}

} // namespace Vornu::Reflection
