#include "engine/reflection/SchemaRecord.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace Vornu::Reflection
{
namespace
{

constexpr std::size_t kFirstBlockSize = 1024;
constexpr std::size_t kLargestBlockSize = std::size_t{256} * 1024;

} // namespace

void* SchemaArena::AllocateBlock(std::size_t size, std::size_t alignment)
{
    const std::size_t grown = blocks_.empty() ? kFirstBlockSize : 2 * blocks_.back().size;
    Block block;
    block.size = std::max(std::min(grown, kLargestBlockSize), size + alignment);
    block.memory = std::make_unique_for_overwrite<char[]>(block.size);
    at_ = block.memory.get();
    end_ = at_ + block.size;
    blocks_.push_back(std::move(block));
    return AllocateBytes(size, alignment);
}

std::string_view SchemaArena::CopyText(std::string_view text)
{
    if (text.empty())
    {
        return {};
    }
    char* const copy = AllocateText(text.size());
    std::memcpy(copy, text.data(), text.size());
    return {copy, text.size()};
}

void SchemaArena::Reset() noexcept
{
    if (blocks_.empty())
    {
        return;
    }
    const auto largest = std::max_element(blocks_.begin(), blocks_.end(),
                                          [](const Block& a, const Block& b) { return a.size < b.size; });
    std::swap(blocks_.front(), *largest);
    blocks_.resize(1);
    at_ = blocks_.front().memory.get();
    end_ = at_ + blocks_.front().size;
}

void SchemaValue::ThrowTooLong()
{
    throw std::length_error("Schema text is too long.");
}

SchemaArray::SchemaArray(SchemaArena& arena, std::uint32_t size)
    : elements_(arena.Allocate<SchemaValue>(size)), size_(size)
{
    std::uninitialized_default_construct_n(elements_, size);
}

SchemaRecord::SchemaRecord(SchemaArena& arena, std::string_view recordName, std::uint32_t recordVersion,
                           std::uint32_t capacity)
    : name(recordName), version(recordVersion), arena_(&arena), capacity_(capacity)
{
    if (capacity > 0)
    {
        fields_ = arena.Allocate<SchemaField>(capacity);
    }
}

const SchemaField* SchemaRecord::FindField(std::string_view fieldName) const noexcept
{
    for (const SchemaField& field : Fields())
    {
        if (field.name == fieldName)
        {
            return &field;
        }
    }
    return nullptr;
}

void SchemaRecord::Grow()
{
    const std::uint32_t capacity = std::max(4u, 2 * capacity_);
    SchemaField* const larger = arena_->Allocate<SchemaField>(capacity);
    std::uninitialized_copy_n(fields_, size_, larger);
    fields_ = larger;
    capacity_ = capacity;
}

void SchemaRecord::RemoveFields(std::initializer_list<std::string_view> fieldNames) noexcept
{
    const std::span<SchemaField> fields = Fields();
    const auto kept = std::remove_if(
        fields.begin(), fields.end(),
        [&](const SchemaField& field)
        { return std::find(fieldNames.begin(), fieldNames.end(), field.name) != fieldNames.end(); });
    size_ = static_cast<std::uint32_t>(kept - fields.begin());
}

void SchemaRecord::RenameField(std::string_view fieldName, std::string_view newName)
{
    if (FindField(newName) != nullptr)
    {
        return;
    }
    for (SchemaField& field : Fields())
    {
        if (field.name == fieldName)
        {
            field.name = arena_->CopyText(newName);
        }
    }
}

void SchemaRecord::AddField(std::string_view fieldName, std::string_view text)
{
    Append(arena_->CopyText(fieldName), SchemaValue(arena_->CopyText(text)));
}

namespace
{

SchemaValue CopyValue(const SchemaValue& value, SchemaArena& arena)
{
    switch (value.GetType())
    {
    case SchemaValue::Type::Record:
    {
        auto* const copy = new (arena.Allocate<SchemaRecord>(1)) SchemaRecord();
        *copy = CopyRecord(value.Record(), arena);
        return copy;
    }
    case SchemaValue::Type::Array:
    {
        const SchemaArray source = value.Array();
        const SchemaArray copy(arena, source.Size());
        for (std::uint32_t i = 0; i < source.Size(); ++i)
        {
            copy[i] = CopyValue(source[i], arena);
        }
        return copy;
    }
    case SchemaValue::Type::Text:
        break;
    }
    return arena.CopyText(value.Text());
}

} // namespace

SchemaRecord CopyRecord(const SchemaRecord& record, SchemaArena& arena)
{
    SchemaRecord copy(arena, arena.CopyText(record.name), record.version,
                      static_cast<std::uint32_t>(record.Fields().size()));
    for (const SchemaField& field : record.Fields())
    {
        copy.Append(arena.CopyText(field.name), CopyValue(field.value, arena));
    }
    return copy;
}

} // namespace Vornu::Reflection
