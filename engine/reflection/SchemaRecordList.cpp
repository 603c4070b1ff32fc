#include "engine/reflection/SchemaRecordList.h"

#include "engine/core/text/TextWriter.h"
#include "engine/reflection/ObjectText.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/reflection/SchemaRecordText.h"

namespace Vornu::Reflection
{

void SchemaRecordList::Capture(const ObjectView& object, const ReflectionRegistry& registry,
                               const SchemaCodecContext& context)
{
    if (text_ == nullptr)
    {
        return records_.push_back(CaptureObject(object, registry, context, arena_));
    }
    const std::uint64_t start = text_->Position();
    WriteObjectRecord(*text_, object, registry, context);
    lastSize_ = text_->Position() - start;
}

void SchemaRecordList::push_back(const SchemaRecord& record)
{
    if (text_ == nullptr)
    {
        return records_.push_back(record);
    }
    const std::uint64_t start = text_->Position();
    WriteSchemaRecord(*text_, record);
    lastSize_ = text_->Position() - start;
}

std::uint64_t SchemaRecordList::SizeOfLast() const
{
    return text_ != nullptr ? lastSize_ : MeasureSchemaRecord(records_.back());
}

void SchemaRecordList::clear() noexcept
{
    records_.clear();
    arena_.Reset();
}

} // namespace Vornu::Reflection
