#include "engine/scene/files/SceneVersionProbe.h"

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/core/files/ByteStream.h"
#include "engine/core/files/InputFile.h"
#include "engine/core/text/TokenReader.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace Vornu::Scene
{
namespace
{

/// A container's header and the first field of its payload, the scene version.
constexpr std::size_t kCookedHeadSize = Assets::kContainerHeaderSize + sizeof(std::uint32_t);

SceneVersionProbe ProbeCookedHead(std::span<const std::byte> head)
{
    if (!Assets::ReadContainerHeader(head))
    {
        return {};
    }
    return {Core::ByteReader(head.subspan(Assets::kContainerHeaderSize)).ReadU32(), true};
}

bool MayStandBeforeNumber(char c)
{
    return Core::IsSpace(c) || c == '+' || c == '-';
}

/// A short text with the same first word, if that is short, and the same number behind it as a line of which
/// `head` is the beginning: without blanks and zeros that repeat, and without what comes too late to matter.
std::string CondenseHeader(Core::LineReader& source, std::string_view head)
{
    constexpr std::size_t kLongest = 128; // more digits than any version has
    std::string text = " ";
    do
    {
        for (const char c : head)
        {
            const char last = text.back();
            const bool repeatsBlank = Core::IsSpace(c) && Core::IsSpace(last);
            const bool repeatsZero = c == '0' && last == '0' && MayStandBeforeNumber(text[text.size() - 2]);
            if (repeatsBlank || repeatsZero)
            {
                continue;
            }
            text += c;
            if (text.size() == kLongest)
            {
                return text;
            }
        }
    } while (source.ReadLineRest(head));
    return text;
}

} // namespace

SceneVersionProbe ProbeSceneVersion(const std::filesystem::path& path)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        return {};
    }
    Core::LineReader lines(file);
    std::uint64_t lineNumber = 0;
    return ProbeSceneVersion(lines, lineNumber);
}

SceneVersionProbe ProbeSceneVersion(Core::LineReader& source, std::uint64_t& lineNumber)
{
    const std::string_view head = source.Peek(kCookedHeadSize);
    if (head.size() == kCookedHeadSize && head.starts_with(Assets::kContainerMagic))
    {
        return ProbeCookedHead(std::as_bytes(std::span(head)));
    }
    std::string_view line;
    do
    {
        if (!source.ReadLineHead(line))
        {
            return {};
        }
        ++lineNumber;
    } while (line.empty() || line.front() == '#');

    std::string condensed;
    if (source.IsInLine())
    {
        condensed = CondenseHeader(source, line);
        line = condensed;
    }
    Core::TokenReader tokens(line);
    SceneVersionProbe probe;
    probe.found = tokens.ReadWord() == "scene_version" && tokens.Read(probe.version);
    return probe.found ? probe : SceneVersionProbe();
}

} // namespace Vornu::Scene
