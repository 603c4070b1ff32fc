#pragma once

#include "engine/reflection/SchemaRecord.h"

#include <vector>

namespace Vornu::Scene
{

/// Records of components that this build can't interpret, kept for one entity and saved back unchanged. It
/// owns all their memory.
class PreservedRecordSet
{
public:
    /// Appends a deep copy.
    void Add(const Reflection::SchemaRecord& record)
    {
        records_.push_back(Reflection::CopyRecord(record, arena_));
    }

    const std::vector<Reflection::SchemaRecord>& Records() const noexcept { return records_; }

private:
    Reflection::SchemaArena arena_;
    std::vector<Reflection::SchemaRecord> records_;
};

} // namespace Vornu::Scene
