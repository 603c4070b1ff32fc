#include "engine/core/text/ByteScan.h"
#include "engine/core/text/NumberText.h"
#include "engine/reflection/ObjectText.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/reflection/SchemaText.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

namespace Vornu::Reflection
{
namespace
{

/// Ends the reading; nobody sees it.
[[noreturn]] void GiveUp()
{
    throw std::runtime_error("Text isn't of the written form.");
}

class ObjectReader
{
public:
    ObjectReader(std::string_view text, const ReflectionRegistry& registry, const SchemaCodecContext& context)
        : begin_(text.data()), at_(begin_), end_(begin_ + text.size()), lineStart_(begin_),
          registry_(registry), context_(context)
    {
    }

    ReadText Taken() const noexcept { return {static_cast<std::size_t>(at_ - begin_), lines_}; }

    void ReadFields(std::uint32_t fieldCount, const TypeInfo& type, const ObjectView& object,
                    std::uint32_t depth)
    {
        budget_.Charge(type.properties.size(), depth);
        std::uint32_t count = 0;
        for (const PropertyInfo& property : type.properties)
        {
            if (!type.Stores(property))
            {
                continue;
            }
            ++count;
            if (property.schema.type != property.valueType ||
                HasFlag(property.attributes.flags, PropertyFlags::ReadOnly))
            {
                GiveUp();
            }
            Take(property.lineHead);
            ReadValue(property.MutableView(object.mutableData), property.schema, property.attributes,
                      depth + 1);
        }
        if (count != fieldCount)
        {
            GiveUp();
        }
        Take("end_component_schema");
        EndLine();
    }

private:
    void ReadValue(const ObjectView& view, const ValueSchema& schema, const PropertyAttributes& attributes,
                   std::uint32_t depth)
    {
        switch (schema.shape)
        {
        case ValueShape::Object:
            return ReadObject(view, depth);
        case ValueShape::Collection:
            return ReadCollection(view, schema, attributes, depth);
        case ValueShape::Scalar:
            break;
        }
        const std::string_view text = TakeQuoted();
        EndLine();
        switch (schema.kind)
        {
        case PropertyKind::Float:
            *static_cast<float*>(view.mutableData) = ParseFloat(text);
            break;
        case PropertyKind::Enum:
            ReadEnum(text, view, attributes);
            break;
        case PropertyKind::AssetRef:
            ReadAsset(text, *static_cast<std::uint64_t*>(view.mutableData), attributes);
            break;
        case PropertyKind::EntityHandle:
        case PropertyKind::EntityLinkRef:
            return GiveUp(); // rare enough to be applied
        default:
            ParseLeaf(schema.kind, text, view);
        }
    }

    /// Goes on behind the keyword, and the name of a field.
    void ReadObject(const ObjectView& view, std::uint32_t depth)
    {
        const TypeInfo* const type = registry_.FindType(view.type);
        if (type == nullptr || type->version == 0 || type->name.empty() || TakeQuoted() != type->name ||
            TakeNumber() != type->version)
        {
            GiveUp();
        }
        const std::uint32_t count = TakeNumber();
        EndLine();
        ReadFields(count, *type, view, depth);
    }

    void ReadCollection(const ObjectView& view, const ValueSchema& schema,
                        const PropertyAttributes& attributes, std::uint32_t depth)
    {
        const ValueAccessors& accessors = *view.accessors;
        const ValueSchema& element = *schema.element;
        const std::uint32_t size = TakeNumber();
        EndLine();
        CheckCollectionLeaf(schema, attributes, registry_);
        if (size > kMaxElements || accessors.mutableElement == nullptr)
        {
            GiveUp();
        }
        budget_.Charge(size, depth);
        if (accessors.resize == nullptr || !accessors.resize(view.mutableData, size))
        {
            GiveUp();
        }
        const std::string_view word = kElementWords[static_cast<std::size_t>(StoredType(element.shape))];
        for (std::size_t i = 0; i < size; ++i)
        {
            Take(word);
            accessors.mutableElement(view.mutableData, i,
                                     [&](const ObjectView& value)
                                     { ReadValue(value, element, attributes, depth + 1); });
        }
        Take("end_array");
        EndLine();
    }

    void ReadEnum(std::string_view text, const ObjectView& view, const PropertyAttributes& attributes)
    {
        const EnumSchema* const schema = FindEnumOf(attributes, registry_);
        const EnumEntry* const entry =
            schema != nullptr && schema->type == view.type ? schema->FindName(text) : nullptr;
        if (entry == nullptr || view.accessors->enumWrite == nullptr ||
            !view.accessors->enumWrite(view.mutableData, *entry))
        {
            GiveUp();
        }
    }

    void ReadAsset(std::string_view text, std::uint64_t& stored, const PropertyAttributes& attributes)
    {
        const AssetTypeInfo* const type = FindAssetTypeOf(attributes, registry_);
        if (type == nullptr || (!text.empty() && !context_.textToAsset))
        {
            GiveUp();
        }
        const std::uint64_t id = text.empty() ? 0 : context_.textToAsset(std::string(text), *type);
        if (id == 0 && !text.empty())
        {
            GiveUp();
        }
        const bool stripped = id == std::numeric_limits<std::uint64_t>::max();
        stored = stripped ? 0 : id;
    }

    void Take(std::string_view text)
    {
        if (static_cast<std::size_t>(end_ - at_) < text.size() ||
            std::memcmp(at_, text.data(), text.size()) != 0)
        {
            GiveUp();
        }
        at_ += text.size();
    }

    void TakeByte(char c)
    {
        if (at_ == end_ || *at_ != c)
        {
            GiveUp();
        }
        ++at_;
    }

    /// A blank and a token in quotes without escapes.
    std::string_view TakeQuoted()
    {
        TakeByte(' ');
        TakeByte('"');
        const char* const begin = at_;
        at_ = Core::SkipPlainBytes(begin_, at_, end_);
        const std::string_view token(begin, static_cast<std::size_t>(at_ - begin));
        TakeByte('"');
        return token;
    }

    /// A blank and a number without leading zeros.
    std::uint32_t TakeNumber()
    {
        TakeByte(' ');
        std::uint32_t number = 0;
        const auto [behind, error] = std::from_chars(at_, end_, number);
        if (error != std::errc() || (*at_ == '0' && behind != at_ + 1))
        {
            GiveUp();
        }
        at_ = behind;
        return number;
    }

    void EndLine()
    {
        if (static_cast<std::size_t>(at_ - lineStart_) > kMaxLineSize ||
            static_cast<std::size_t>(at_ - begin_) > kMaxRecordSize - kMaxLineSize)
        {
            GiveUp(); // near the limits, which count the first line as well
        }
        TakeByte('\n');
        lineStart_ = at_;
        ++lines_;
    }

    const char* begin_;
    const char* at_;
    const char* end_;
    const char* lineStart_;
    std::uint32_t lines_ = 0;
    FieldBudget budget_;
    const ReflectionRegistry& registry_;
    const SchemaCodecContext& context_;
};

} // namespace

std::optional<RecordHead> ReadRecordHead(std::string_view headerRest)
{
    // From behind: the counts hold no quotes, and no name that is written plainly does.
    const std::size_t quote = headerRest.rfind('"');
    if (!headerRest.starts_with(" \"") || quote < 2)
    {
        return std::nullopt;
    }
    RecordHead head;
    head.name = headerRest.substr(2, quote - 2);
    const char* at = headerRest.data() + quote + 1;
    const char* const end = headerRest.data() + headerRest.size();
    for (std::uint32_t* const number : {&head.version, &head.fieldCount})
    {
        if (at == end || *at != ' ')
        {
            return std::nullopt;
        }
        const auto [behind, error] = std::from_chars(at + 1, end, *number);
        if (error != std::errc())
        {
            return std::nullopt;
        }
        at = behind;
    }
    return at == end ? std::optional(head) : std::nullopt;
}

ReadText ReadObjectFields(std::string_view text, const RecordHead& head, const TypeInfo& type,
                          const ObjectView& object, const ReflectionRegistry& registry,
                          const SchemaCodecContext& context)
{
    if (head.name != type.name || head.version != type.version)
    {
        return {};
    }
    ObjectReader reader(text, registry, context);
    try
    {
        reader.ReadFields(head.fieldCount, type, object, 1);
    }
    catch (const std::exception&)
    {
        return {}; // reading and applying the record tells what it was
    }
    return reader.Taken();
}

} // namespace Vornu::Reflection
