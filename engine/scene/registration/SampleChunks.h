#pragma once

#include "engine/reflection/SchemaRecord.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

/// Sample arrays that are too big for one record: a main record, one count record, and chunk records that
/// each carry up to `kMaxChunkValues` values in order. The limits are the same for every component that has
/// such.
namespace Vornu::Scene
{

inline constexpr std::size_t kMaxChunkValues = 1024;
inline constexpr std::uint64_t kMaxSamples = 0x1000000;      // all arrays of a component together
inline constexpr std::uint64_t kMaxSampleBytes = 0x20000000; // of all records of a component, in text

/// The words of one component's faults.
struct SampleFaults
{
    std::string tooManySamples;
    std::string tooManyBytes;
    std::string truncated;
    std::string chunkBeforeCounts;
    std::string badChunk;
    std::string incomplete;
};

/// Measures the records of one component while they are saved. Throws `std::runtime_error` past a limit.
class SampleChunkSaver
{
public:
    SampleChunkSaver(const SampleFaults& faults, std::uint64_t totalSamples);

    /// For every record, with its size in text.
    void Charge(std::uint64_t recordSize);

    /// Calls `emit(offset, values)` for each chunk of one array; not at all for an empty one.
    static void
    ForEachChunk(std::span<const float> samples,
                 const std::function<void(std::uint64_t offset, std::span<const float> values)>& emit);

private:
    const SampleFaults& faults_;
    std::uint64_t bytes_ = 0;
};

/// Checks the records of one component while they are loaded: the loader's scratch.
class SampleChunkLoader
{
public:
    /// For every record, with its size in the file.
    void Charge(const SampleFaults& faults, std::uint64_t encodedBytes);

    /// For the count record: the declared length of each array.
    void SetCounts(const SampleFaults& faults, std::span<const std::uint64_t> counts);

    /// For a chunk record, before it is applied.
    void RequireCounts(const SampleFaults& faults) const;
    /// Appends a chunk to its array.
    void Append(const SampleFaults& faults, std::size_t array, std::uint64_t offset,
                std::span<const float> values, std::vector<float>& samples) const;

    /// At the end, with the length that each array has reached.
    void Finish(const SampleFaults& faults, std::span<const std::size_t> sizes) const;

private:
    std::uint64_t bytes_ = 0;
    std::vector<std::uint64_t> counts_;
    bool countsCame_ = false;
};

} // namespace Vornu::Scene
