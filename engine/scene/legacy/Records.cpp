#include "engine/scene/legacy/Records.h"

#include "engine/scene/files/LoadFault.h"

namespace Vornu::Scene::Legacy
{
namespace
{

/// What a sample of 0 takes in a saved scene, which is more than in memory.
constexpr std::size_t kEmptySampleSize = std::string_view("value \"0\"\n").size();

} // namespace

void ReadSamples(RecordLine& line, const RecordContext& context, std::vector<float>& samples)
{
    std::uint64_t count = 0;
    line.Read(count);
    if (count > kMaxSampleCount)
    {
        throw std::runtime_error(std::string(context.keyword) + " count exceeds the limit of " +
                                 std::to_string(kMaxSampleCount) + " samples.");
    }
    samples.clear();
    while (line && samples.size() < count)
    {
        line.Read(samples.emplace_back(0.0f)); // one that can't be read keeps what that left in it
    }
    ChargeFill(context, count - samples.size(), kEmptySampleSize);
    samples.resize(static_cast<std::size_t>(count), 0.0f);
}

void ChargeFill(const RecordContext& context, std::uint64_t count, std::size_t elementSize)
{
    if (count > context.fill.bytesLeft / elementSize)
    {
        throw std::runtime_error(std::string(context.keyword) +
                                 " asks for more empty elements than a file may have.");
    }
    context.fill.bytesLeft -= count * elementSize;
}

void RequireFields(const RecordLine& line, const RecordContext& context, const char* what)
{
    if (!line)
    {
        throw LoadFault("Malformed " + std::string(context.keyword) + " " + what + ".");
    }
}

} // namespace Vornu::Scene::Legacy
