#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Reflection
{

class SchemaRecord;
class SchemaArray;

/// Memory of records: their texts, fields and arrays are carved out of large blocks and freed all at once.
class SchemaArena
{
public:
    SchemaArena() = default;
    /// Leaves `other` empty. What lies in the arena stays where it is.
    SchemaArena(SchemaArena&& other) noexcept { Swap(other); }
    SchemaArena& operator=(SchemaArena&& other) noexcept
    {
        SchemaArena taken(std::move(other));
        Swap(taken);
        return *this;
    }

    /// Uninitialised room for `count` values of a trivially destructible type.
    template<class Type>
    Type* Allocate(std::size_t count)
    {
        static_assert(alignof(Type) <= alignof(std::max_align_t));
        return static_cast<Type*>(AllocateBytes(count * sizeof(Type), alignof(Type)));
    }

    /// Room for text under construction; `ShrinkText` gives back what isn't used of it.
    char* AllocateText(std::size_t size) { return static_cast<char*>(AllocateBytes(size, 1)); }
    void ShrinkText(const char* end) noexcept { at_ = const_cast<char*>(end); }

    std::string_view CopyText(std::string_view text);

    /// Forgets everything that was allocated and keeps one block for what comes.
    void Reset() noexcept;

private:
    void* AllocateBytes(std::size_t size, std::size_t alignment)
    {
        const std::size_t padding =
            (alignment - reinterpret_cast<std::uintptr_t>(at_) % alignment) % alignment;
        if (size + padding > static_cast<std::size_t>(end_ - at_))
        {
            return AllocateBlock(size, alignment);
        }
        char* const result = at_ + padding;
        at_ = result + size;
        return result;
    }
    void* AllocateBlock(std::size_t size, std::size_t alignment);

    void Swap(SchemaArena& other) noexcept
    {
        std::swap(blocks_, other.blocks_);
        std::swap(at_, other.at_);
        std::swap(end_, other.end_);
    }

    struct Block
    {
        std::unique_ptr<char[]> memory;
        std::size_t size = 0;
    };
    std::vector<Block> blocks_;
    char* at_ = nullptr;
    char* end_ = nullptr;
};

/// One stored value: the text of a leaf, a nested record, or an array. A small view into memory that outlives
/// it: an arena, or the bytes of the file that it was read from.
class SchemaValue
{
public:
    enum class Type : std::uint8_t
    {
        Text = 0,
        Record = 1,
        Array = 2,
    };

    SchemaValue() noexcept = default;
    SchemaValue(std::string_view text) : text_(text.data()), size_(static_cast<std::uint32_t>(text.size()))
    {
        if (size_ != text.size())
        {
            ThrowTooLong();
        }
    }
    SchemaValue(SchemaRecord* record) noexcept : record_(record), type_(Type::Record) {}
    inline SchemaValue(const SchemaArray& array) noexcept;

    Type GetType() const noexcept { return type_; }
    bool IsText() const noexcept { return type_ == Type::Text; }
    bool IsRecord() const noexcept { return type_ == Type::Record; }
    bool IsArray() const noexcept { return type_ == Type::Array; }

    /// Each is only for a value of its type.
    std::string_view Text() const noexcept { return {text_, size_}; }
    SchemaRecord& Record() const noexcept { return *record_; }
    inline SchemaArray Array() const noexcept;

private:
    [[noreturn]] static void ThrowTooLong();

    union
    {
        const char* text_ = nullptr;
        SchemaRecord* record_;
        SchemaValue* elements_;
    };
    std::uint32_t size_ = 0;
    Type type_ = Type::Text;
};

/// An ordered list of values; a view like `SchemaValue`.
class SchemaArray
{
public:
    SchemaArray() noexcept = default;
    SchemaArray(SchemaValue* elements, std::uint32_t size) noexcept : elements_(elements), size_(size) {}
    /// `size` empty texts in the arena.
    SchemaArray(SchemaArena& arena, std::uint32_t size);

    std::uint32_t Size() const noexcept { return size_; }
    SchemaValue& operator[](std::size_t index) const noexcept { return elements_[index]; }
    SchemaValue* begin() const noexcept { return elements_; }
    SchemaValue* end() const noexcept { return elements_ + size_; }

private:
    SchemaValue* elements_ = nullptr;
    std::uint32_t size_ = 0;
};

inline SchemaValue::SchemaValue(const SchemaArray& array) noexcept
    : elements_(array.begin()), size_(array.Size()), type_(Type::Array)
{
}

inline SchemaArray SchemaValue::Array() const noexcept
{
    return {elements_, size_};
}

struct SchemaField
{
    std::string_view name; // not empty, unique within its record
    SchemaValue value;
};

/// A named, versioned, ordered list of fields: the one in-memory form of stored component data.
///
/// A record is a handle on fields in an arena; a copy of the handle names the same fields until either grows.
/// `CopyRecord` makes one that stands on its own.
class SchemaRecord
{
public:
    SchemaRecord() noexcept = default;
    /// An empty record with room for `capacity` fields. `recordName` isn't copied.
    SchemaRecord(SchemaArena& arena, std::string_view recordName, std::uint32_t recordVersion,
                 std::uint32_t capacity = 0);

    std::string_view name;
    std::uint32_t version = 0;

    std::span<SchemaField> Fields() noexcept { return {fields_, size_}; }
    std::span<const SchemaField> Fields() const noexcept { return {fields_, size_}; }
    const SchemaField* FindField(std::string_view fieldName) const noexcept;

    /// Appends without a test for the name; neither the name nor the value is copied.
    void Append(std::string_view fieldName, const SchemaValue& value)
    {
        if (size_ == capacity_)
        {
            Grow();
        }
        new (fields_ + size_) SchemaField{fieldName, value};
        ++size_;
    }

    /// The operations of migrations. Names and texts are copied into the arena.
    void RemoveFields(std::initializer_list<std::string_view> fieldNames) noexcept;
    /// Does nothing when there is no such field, or when one of the new name exists already.
    void RenameField(std::string_view fieldName, std::string_view newName);
    void AddField(std::string_view fieldName, std::string_view text);
    /// Calls `function(SchemaRecord&)` for each record among the elements of an array field.
    template<class Function>
    void ForEachRecord(std::string_view arrayField, Function function)
    {
        const SchemaField* const field = FindField(arrayField);
        if (field == nullptr || !field->value.IsArray())
        {
            return;
        }
        for (const SchemaValue& element : field->value.Array())
        {
            if (element.IsRecord())
            {
                function(element.Record());
            }
        }
    }

    SchemaArena* Arena() const noexcept { return arena_; }

private:
    void Grow();

    SchemaField* fields_ = nullptr;
    SchemaArena* arena_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = 0;
};

/// A deep copy with all texts in `arena`.
SchemaRecord CopyRecord(const SchemaRecord& record, SchemaArena& arena);

/// Tells field names that are surely new from those that need a search; cheaper than a set for short records.
class FieldNameFilter
{
public:
    /// False when no name given before can equal this one.
    bool MayRepeat(std::string_view name) noexcept
    {
        const unsigned hash =
            static_cast<unsigned>(name.size()) * 7u + static_cast<unsigned char>(name.front()) * 3u +
            static_cast<unsigned char>(name[name.size() / 2]) * 5u + static_cast<unsigned char>(name.back());
        std::uint64_t& word = seen_[hash / 64u % seen_.size()];
        const std::uint64_t bit = std::uint64_t{1} << (hash % 64u);
        const bool seen = (word & bit) != 0;
        word |= bit;
        return seen;
    }

    /// Takes the names of all fields of a record.
    void Insert(const SchemaRecord& record) noexcept
    {
        for (const SchemaField& field : record.Fields())
        {
            MayRepeat(field.name);
        }
    }

private:
    std::array<std::uint64_t, 4> seen_{};
};

} // namespace Vornu::Reflection
