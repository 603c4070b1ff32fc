#pragma once

#include "engine/assets/loading/AssetLoadRecipe.h"
#include "engine/core/tasks/TaskSystem.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Vornu::Assets::Detail
{

/// How a job ended.
struct AssetLoadResult
{
    AssetId id = 0;
    std::uint64_t job = 0;
    AssetLoadPayload payload;
    /// Empty for a success.
    std::string error;
    bool cancelled = false;
};

/// Where jobs leave their results. Shared by the loader and its jobs, so a job may outlive the loader. Safe
/// from any thread.
class CompletionQueue
{
public:
    void Post(AssetLoadResult result);
    std::vector<AssetLoadResult> TakeAll();
    bool HasResultOf(std::uint64_t job) const;

private:
    mutable std::mutex mutex_;
    std::vector<AssetLoadResult> results_;
};

/// The stages of one load that run on the task system: reading, if the recipe has that, and decoding.
struct AssetLoadJob
{
    AssetId id = 0;
    std::uint64_t serial = 0;
    std::function<AssetBytes()> read;
    std::function<AssetLoadPayload(AssetBytes)> decode;
    std::shared_ptr<std::atomic<bool>> cancelFlag;
    std::shared_ptr<CompletionQueue> completions;
    Core::Tasks::CounterHandle counter;
    Core::Tasks::TaskSystem* tasks = nullptr;
};

/// Submits the first stage to the job's counter. The job posts one result, unless the task system drops it.
void StartJob(AssetLoadJob job);

/// The text of the exception being handled; `untold` for one with an empty text and `foreign` for one that is
/// no `std::exception`.
std::string CurrentExceptionText(const char* untold, const char* foreign);

} // namespace Vornu::Assets::Detail
