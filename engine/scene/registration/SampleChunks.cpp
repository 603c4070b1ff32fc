#include "engine/scene/registration/SampleChunks.h"

#include "engine/scene/registration/EntityRecordStage.h"

#include <algorithm>
#include <stdexcept>

namespace Vornu::Scene
{

SampleChunkSaver::SampleChunkSaver(const SampleFaults& faults, std::uint64_t totalSamples) : faults_(faults)
{
    if (totalSamples > kMaxSamples)
    {
        throw std::runtime_error(faults.tooManySamples);
    }
}

void SampleChunkSaver::Charge(std::uint64_t recordSize)
{
    bytes_ += recordSize;
    if (bytes_ > kMaxSampleBytes)
    {
        throw std::runtime_error(faults_.tooManyBytes);
    }
}

void SampleChunkSaver::ForEachChunk(
    std::span<const float> samples,
    const std::function<void(std::uint64_t offset, std::span<const float> values)>& emit)
{
    for (std::size_t offset = 0; offset < samples.size(); offset += kMaxChunkValues)
    {
        emit(offset, samples.subspan(offset, std::min(kMaxChunkValues, samples.size() - offset)));
    }
}

void SampleChunkLoader::Charge(const SampleFaults& faults, std::uint64_t encodedBytes)
{
    if (encodedBytes == kUnknownEncodedBytes)
    {
        throw std::runtime_error(faults.truncated);
    }
    if (encodedBytes > kMaxSampleBytes - bytes_)
    {
        throw std::runtime_error(faults.tooManyBytes);
    }
    bytes_ += encodedBytes;
}

void SampleChunkLoader::SetCounts(const SampleFaults& faults, std::span<const std::uint64_t> counts)
{
    counts_.assign(counts.begin(), counts.end());
    countsCame_ = true;
    std::uint64_t left = kMaxSamples;
    for (const std::uint64_t count : counts)
    {
        if (count > left)
        {
            throw std::runtime_error(faults.tooManySamples);
        }
        left -= count;
    }
}

void SampleChunkLoader::RequireCounts(const SampleFaults& faults) const
{
    if (!countsCame_)
    {
        throw std::runtime_error(faults.chunkBeforeCounts);
    }
}

void SampleChunkLoader::Append(const SampleFaults& faults, std::size_t array, std::uint64_t offset,
                               std::span<const float> values, std::vector<float>& samples) const
{
    if (values.empty() || values.size() > kMaxChunkValues || offset != samples.size() ||
        values.size() > counts_[array] - samples.size())
    {
        throw std::runtime_error(faults.badChunk);
    }
    samples.insert(samples.end(), values.begin(), values.end());
}

void SampleChunkLoader::Finish(const SampleFaults& faults, std::span<const std::size_t> sizes) const
{
    if (!countsCame_ || !std::equal(sizes.begin(), sizes.end(), counts_.begin(), counts_.end()))
    {
        throw std::runtime_error(faults.incomplete);
    }
}

} // namespace Vornu::Scene
