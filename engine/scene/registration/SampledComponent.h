#pragma once

#include "engine/scene/registration/ComponentBuilder.h"
#include "engine/scene/registration/SampleChunks.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// Components whose sample arrays are stored in records of their own.
namespace Vornu::Scene
{

/// Stores a component as its main record, one `Counts` record and a `Chunk` record for each part of an array.
/// `Samples` says how:
///
///     using Component, Counts, Chunk;                   // `Chunk` has `offset` and `values`
///     static constexpr std::array kArrays, kCounts;     // members of the component, members of `Counts`
///     static const SampleFaults kFaults;
///     static void MarkChunk(Chunk&, std::size_t array); // notes in a chunk which array it is of
///     static std::size_t ArrayOf(const Chunk&);         // throws when it is of none
template<class Samples>
class SampledRecords
{
public:
    using Component = typename Samples::Component;
    using Counts = typename Samples::Counts;
    using Chunk = typename Samples::Chunk;
    using LoadValue = ComponentLoadValue<Component, SampleChunkLoader>;

    static void Save(const Component& component, const ComponentSaveContext& context,
                     ComponentTypeEntry::RecordList& out)
    {
        Counts counts;
        std::uint64_t total = 0;
        for (std::size_t array = 0; array < kArrayCount; ++array)
        {
            counts.*Samples::kCounts[array] = (component.*Samples::kArrays[array]).size();
            total += (component.*Samples::kArrays[array]).size();
        }
        SampleChunkSaver saver(Samples::kFaults, total);
        const auto emit = [&](const auto& object)
        {
            CaptureInto(object, context, out);
            saver.Charge(out.SizeOfLast());
        };
        emit(component);
        emit(counts);
        for (std::size_t array = 0; array < kArrayCount; ++array)
        {
            SampleChunkSaver::ForEachChunk(component.*Samples::kArrays[array],
                                           [&](std::uint64_t offset, std::span<const float> values)
                                           {
                                               Chunk chunk;
                                               chunk.offset = offset;
                                               chunk.values.assign(values.begin(), values.end());
                                               Samples::MarkChunk(chunk, array);
                                               emit(chunk);
                                           });
        }
    }

    static void Load(LoadValue& state, const Reflection::SchemaRecord& record, std::uint64_t encodedBytes,
                     const ComponentLoadContext& context)
    {
        state.extra.Charge(Samples::kFaults, encodedBytes);
        if (record.name == NameOf<Component>())
        {
            state.value = ApplyFresh<Component>(record, context);
        }
        else if (record.name == NameOf<Counts>())
        {
            const auto counts = ApplyFresh<Counts>(record, context);
            std::array<std::uint64_t, kArrayCount> lengths;
            for (std::size_t array = 0; array < kArrayCount; ++array)
            {
                lengths[array] = counts.*Samples::kCounts[array];
            }
            state.extra.SetCounts(Samples::kFaults, lengths);
        }
        else
        {
            state.extra.RequireCounts(Samples::kFaults);
            const auto chunk = ApplyFresh<Chunk>(record, context);
            const std::size_t array = Samples::ArrayOf(chunk);
            state.extra.Append(Samples::kFaults, array, chunk.offset, chunk.values,
                               state.value.*Samples::kArrays[array]);
        }
    }

    static void Finish(LoadValue& state)
    {
        std::array<std::size_t, kArrayCount> sizes;
        for (std::size_t array = 0; array < kArrayCount; ++array)
        {
            sizes[array] = (state.value.*Samples::kArrays[array]).size();
        }
        state.extra.Finish(Samples::kFaults, sizes);
    }

    template<class Type>
    static const std::string& NameOf()
    {
        return Reflection::ReflectionRegistry::Instance().FindType(Reflection::TypeIdOf<Type>())->name;
    }

private:
    static constexpr std::size_t kArrayCount = Samples::kArrays.size();
};

/// Gives a component, whose types are all reflected by now, the records that `Samples` describes.
template<class Samples>
void SaveSampled(ComponentBuilder<typename Samples::Component>& builder)
{
    using Records = SampledRecords<Samples>;
    builder.template Records<SampleChunkLoader>(
        {{Records::template NameOf<typename Samples::Component>(), false},
         {Records::template NameOf<typename Samples::Counts>(), false},
         {Records::template NameOf<typename Samples::Chunk>(), true}},
        &Records::Save, &Records::Load, &Records::Finish);
}

} // namespace Vornu::Scene
