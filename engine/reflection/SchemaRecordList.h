#pragma once

#include "engine/reflection/ObjectView.h"
#include "engine/reflection/SchemaRecord.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vornu::Core
{
class TextWriter;
}

namespace Vornu::Reflection
{

class ReflectionRegistry;
struct SchemaCodecContext;

/// Where the records of an entity go: they are held, with the memory that they lie in, or written to a text
/// as soon as they come, which holds none.
class SchemaRecordList
{
public:
    SchemaRecordList() = default;
    /// Writes each record to `text`. A fault leaves part of a record there and may have words of its own (see
    /// `WriteObjectRecord`).
    explicit SchemaRecordList(Core::TextWriter& text) noexcept : text_(&text) {}

    /// Appends the record of an object. Throws what `CaptureObject` does.
    void Capture(const ObjectView& object, const ReflectionRegistry& registry,
                 const SchemaCodecContext& context);

    /// Appends a record whose fields lie in `Arena()`, or outlive the list.
    void push_back(const SchemaRecord& record);

    /// Of records that are going to be added.
    SchemaArena& Arena() noexcept { return arena_; }

    /// What the record that came last takes in text, in bytes.
    std::uint64_t SizeOfLast() const;

    std::size_t size() const noexcept { return records_.size(); }
    bool empty() const noexcept { return records_.empty(); }
    const SchemaRecord& operator[](std::size_t index) const noexcept { return records_[index]; }
    const SchemaRecord& back() const noexcept { return records_.back(); }
    auto begin() const noexcept { return records_.begin(); }
    auto end() const noexcept { return records_.end(); }

    /// Forgets the records and keeps some of their memory for others.
    void clear() noexcept;

private:
    SchemaArena arena_;
    std::vector<SchemaRecord> records_;
    Core::TextWriter* text_ = nullptr;
    std::uint64_t lastSize_ = 0; // in the text
};

} // namespace Vornu::Reflection
