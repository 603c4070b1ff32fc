#include "engine/scene/components/SceneSchema.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Vornu::Bench
{
namespace
{

using Nanoseconds = std::chrono::nanoseconds;

template<class Operation>
Nanoseconds TimeOf(Operation operation)
{
    const auto start = std::chrono::steady_clock::now();
    operation();
    return std::chrono::steady_clock::now() - start;
}

void RunProgram(char* const* arguments)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = 0;
    if (::posix_spawn(&child, arguments[0], &actions, nullptr, arguments, ::environ) != 0 ||
        ::waitpid(child, &status, 0) != child || status != 0)
    {
        throw std::runtime_error("the program failed");
    }
    posix_spawn_file_actions_destroy(&actions);
}

long long Median(std::vector<Nanoseconds>& times)
{
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                     times.end());
    return static_cast<long long>(times[times.size() / 2].count());
}

/// Runs a program and /bin/true in turn and prints the median nanoseconds of both.
void ComparePrograms(char* const* arguments)
{
    constexpr int kTimes = 300;
    char trueProgram[] = "/bin/true";
    char* const trueArguments[] = {trueProgram, nullptr};
    std::vector<Nanoseconds> times;
    std::vector<Nanoseconds> trueTimes;
    for (int i = 0; i < kTimes; ++i)
    {
        times.push_back(TimeOf([arguments] { RunProgram(arguments); }));
        trueTimes.push_back(TimeOf([&trueArguments] { RunProgram(trueArguments); }));
    }
    std::printf("%lld %lld\n", Median(times), Median(trueTimes));
}

} // namespace
} // namespace Vornu::Bench

/// Prints the nanoseconds of the component registration, which happens once in a process, or those of a whole
/// program beside /bin/true.
int main(int argc, char** argv)
{
    using namespace Vornu;
    if (argc == 2 && std::string_view(argv[1]) == "registration")
    {
        std::printf("%lld\n", static_cast<long long>(Bench::TimeOf(&Scene::EnsureSceneSchema).count()));
        return 0;
    }
    if (argc > 2 && std::string_view(argv[1]) == "program")
    {
        Bench::ComparePrograms(argv + 2);
        return 0;
    }
    std::fprintf(stderr, "Usage: start_bench registration\n"
                         "       start_bench program <path> [arguments]\n");
    return 2;
}
