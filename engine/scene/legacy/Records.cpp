#include "engine/scene/legacy/Records.h"

#include "engine/scene/LoadFault.h"

namespace Vornu::Scene::Legacy
{

void ReadSamples(RecordLine& line, const RecordContext& context, std::vector<float>& samples)
{
    std::uint64_t count = 0;
    line.Read(count);
    if (count > kMaxSampleCount)
    {
        throw std::runtime_error(std::string(context.keyword) + " count exceeds the limit of " +
                                 std::to_string(kMaxSampleCount) + " samples.");
    }
    samples.assign(static_cast<std::size_t>(count), 0.0f);
    for (float& sample : samples)
    {
        if (!line.Read(sample))
        {
            break;
        }
    }
}

void RequireFields(const RecordLine& line, const RecordContext& context, const char* what)
{
    if (!line)
    {
        throw LoadFault("Malformed " + std::string(context.keyword) + " " + what + ".");
    }
}

} // namespace Vornu::Scene::Legacy
