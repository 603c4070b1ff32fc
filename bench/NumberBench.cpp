#include "engine/core/text/NumberText.h"

#include <benchmark/benchmark.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Bench
{
namespace
{

char* WriteStandard(char* out, float value)
{
    return std::to_chars(out, out + Core::kNumberTextCapacity, value, std::chars_format::general, 9).ptr;
}

float ReadStandard(std::string_view text)
{
    float value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

float ReadOwn(std::string_view text)
{
    return Core::ParseFloatText(text).value_or(0);
}

float AnyFloat(std::mt19937_64& random)
{
    for (;;)
    {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(value))
        {
            return value;
        }
    }
}

/// Numbers as they stand in scenes: a quarter whole ones, half with a few decimals, the rest what computing
/// leaves in a float.
float SceneFloat(std::mt19937_64& random)
{
    const auto number = static_cast<float>(static_cast<std::int64_t>(random() % 100'000) - 50'000);
    switch (random() % 4)
    {
    case 0:
        return std::trunc(number / 100.0f);
    case 1:
        return number / 100.0f;
    case 2:
        return number / 1000.0f;
    default:
        return std::sin(number) * 250.0f;
    }
}

struct Numbers
{
    explicit Numbers(float (*make)(std::mt19937_64&))
    {
        constexpr std::size_t kCount = 100'000;
        std::mt19937_64 random(kCount);
        for (std::size_t i = 0; i < kCount; ++i)
        {
            char text[Core::kNumberTextCapacity];
            values.push_back(make(random));
            texts.emplace_back(text, WriteStandard(text, values.back()));
        }
    }

    std::vector<float> values;
    std::vector<std::string> texts;
};

const Numbers& NumbersOf(bool sceneNumbers)
{
    static const Numbers scene(&SceneFloat);
    static const Numbers any(&AnyFloat);
    return sceneNumbers ? scene : any;
}

template<char* (*Write)(char*, float)>
void WriteAll(benchmark::State& state, bool sceneNumbers)
{
    const Numbers& numbers = NumbersOf(sceneNumbers);
    char text[Core::kNumberTextCapacity];
    for (auto _ : state)
    {
        for (const float value : numbers.values)
        {
            benchmark::DoNotOptimize(Write(text, value));
        }
        benchmark::ClobberMemory();
    }
}

template<float (*Read)(std::string_view)>
void ReadAll(benchmark::State& state, bool sceneNumbers)
{
    const Numbers& numbers = NumbersOf(sceneNumbers);
    for (auto _ : state)
    {
        for (const std::string& text : numbers.texts)
        {
            benchmark::DoNotOptimize(Read(text));
        }
    }
}

/// The numbers among `count` random floats whose text differs from the standard library's, or doesn't read
/// back as the same float by both routines.
long CountDifferences(long count)
{
    std::mt19937_64 random(1);
    long differences = 0;
    for (long i = 0; i < count; ++i)
    {
        const float value = AnyFloat(random);
        char own[Core::kNumberTextCapacity];
        char standard[Core::kNumberTextCapacity];
        const std::string_view ownText(own, Core::WriteFloatText(own, value));
        const std::string_view standardText(standard, WriteStandard(standard, value));
        const auto bits = std::bit_cast<std::uint32_t>(value);
        const bool equal = ownText == standardText &&
                           bits == std::bit_cast<std::uint32_t>(ReadOwn(ownText)) &&
                           bits == std::bit_cast<std::uint32_t>(ReadStandard(ownText));
        differences += equal ? 0 : 1;
    }
    return differences;
}

} // namespace
} // namespace Vornu::Bench

/// Measures the text of floats beside the standard library's, or counts the differences between both.
int main(int argc, char** argv)
{
    using namespace Vornu::Bench;
    if (argc == 3 && std::string_view(argv[1]) == "compare")
    {
        std::printf("%ld\n", CountDifferences(std::strtol(argv[2], nullptr, 10)));
        return 0;
    }
    for (const bool sceneNumbers : {true, false})
    {
        const std::string numbers = sceneNumbers ? "scene" : "any";
        benchmark::RegisterBenchmark(("write/own/" + numbers).c_str(), WriteAll<&Vornu::Core::WriteFloatText>,
                                     sceneNumbers);
        benchmark::RegisterBenchmark(("write/standard/" + numbers).c_str(), WriteAll<&WriteStandard>,
                                     sceneNumbers);
        benchmark::RegisterBenchmark(("read/own/" + numbers).c_str(), ReadAll<&ReadOwn>, sceneNumbers);
        benchmark::RegisterBenchmark(("read/standard/" + numbers).c_str(), ReadAll<&ReadStandard>,
                                     sceneNumbers);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
