#include "engine/assets/loading/AssetLoadJob.h"

#include "engine/core/Profile.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace Vornu::Assets::Detail
{
namespace
{

using Core::Tasks::TaskPriority;
using JobPointer = std::shared_ptr<AssetLoadJob>;

AssetLoadResult ResultOf(const AssetLoadJob& job)
{
    return {.id = job.id, .job = job.serial, .payload = {}, .error = {}, .cancelled = job.cancelFlag->load()};
}

void PostError(const AssetLoadJob& job, std::string text)
{
    AssetLoadResult result = ResultOf(job);
    result.error = std::move(text);
    job.completions->Post(std::move(result));
}

void Decode(const AssetLoadJob& job, AssetBytes bytes)
{
    AssetLoadResult result = ResultOf(job);
    try
    {
        if (!result.cancelled && job.decode)
        {
            const Core::ProfileScope profile("Assets", "AssetLoader Decode");
            result.payload = job.decode(std::move(bytes));
        }
    }
    catch (...)
    {
        PostError(job, CurrentExceptionText("Asset decode failed.",
                                            "Asset decode failed with an unknown exception."));
        return;
    }
    job.completions->Post(std::move(result));
}

void SubmitDecode(const JobPointer& job, AssetBytes bytes)
{
    job->tasks->Submit(
        TaskPriority::Background,
        [job, bytes = std::move(bytes)]() mutable { Decode(*job, std::move(bytes)); }, job->counter);
}

void Read(const JobPointer& job)
{
    if (job->cancelFlag->load())
    {
        job->completions->Post(ResultOf(*job));
        return;
    }
    try
    {
        const Core::ProfileScope profile("Assets", "AssetLoader Read");
        SubmitDecode(job, job->read());
    }
    catch (...)
    {
        PostError(*job,
                  CurrentExceptionText("Asset read failed.", "Asset read failed with an unknown exception."));
    }
}

} // namespace

void CompletionQueue::Post(AssetLoadResult result)
{
    const std::lock_guard lock(mutex_);
    results_.push_back(std::move(result));
}

std::vector<AssetLoadResult> CompletionQueue::TakeAll()
{
    std::vector<AssetLoadResult> taken;
    const std::lock_guard lock(mutex_);
    taken.swap(results_);
    return taken;
}

bool CompletionQueue::HasResultOf(std::uint64_t job) const
{
    const std::lock_guard lock(mutex_);
    return std::any_of(results_.begin(), results_.end(),
                       [job](const AssetLoadResult& result) { return result.job == job; });
}

void StartJob(AssetLoadJob job)
{
    const auto shared = std::make_shared<AssetLoadJob>(std::move(job));
    if (shared->read)
    {
        shared->tasks->Submit(
            TaskPriority::IO, [shared] { Read(shared); }, shared->counter);
    }
    else
    {
        SubmitDecode(shared, {});
    }
}

std::string CurrentExceptionText(const char* untold, const char* foreign)
{
    try
    {
        throw;
    }
    catch (const std::exception& error)
    {
        return *error.what() != '\0' ? error.what() : untold;
    }
    catch (...)
    {
        return foreign;
    }
}

} // namespace Vornu::Assets::Detail
