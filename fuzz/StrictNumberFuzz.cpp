#include "engine/scene/legacy/StrictNumbers.h"
#include "fuzz/FuzzFiles.h"

#include <bit>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

namespace
{

using namespace Vornu;

/// The bits of what a conversion gives, or its message.
template<class Convert>
std::string Outcome(Convert convert)
{
    try
    {
        return "bits " + std::to_string(convert());
    }
    catch (const std::invalid_argument& fault)
    {
        return std::string("invalid ") + fault.what() + " argument";
    }
    catch (const std::out_of_range& fault)
    {
        return std::string(fault.what()) + " argument out of range";
    }
    catch (const std::runtime_error& fault)
    {
        return fault.what();
    }
}

template<class Mine, class Theirs>
void RequireEqual(const std::string& text, Mine mine, Theirs theirs)
{
    const std::string one = Outcome(mine);
    const std::string other = Outcome(theirs);
    Fuzz::Require(one == other, "'" + text + "': " + one + " and " + other);
}

/// As `std::stoul` is where a long has 32 bits.
std::uint32_t Stoul32(const std::string& text)
{
    const bool negative = text.find('-') < text.find_first_of("0123456789");
    unsigned long long number = 0;
    try
    {
        number = std::stoull(text);
    }
    catch (const std::invalid_argument&)
    {
        throw std::invalid_argument("stoul");
    }
    catch (const std::out_of_range&)
    {
        throw std::out_of_range("stoul");
    }
    const unsigned long long magnitude = negative ? 0 - number : number;
    if (magnitude > std::numeric_limits<std::uint32_t>::max())
    {
        throw std::out_of_range("stoul");
    }
    return static_cast<std::uint32_t>(number);
}

} // namespace

/// The whole input is one word: its conversions are those of the standard library.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Scene::Legacy;
    const std::string text(Fuzz::AsText(data, size));
    RequireEqual(
        text, [&] { return StrictInt(text); }, [&] { return std::stoi(text); });
    RequireEqual(
        text, [&] { return StrictLong(text); }, [&] { return std::stoll(text); });
    RequireEqual(
        text, [&] { return StrictUnsigned(text); }, [&] { return Stoul32(text); });
    RequireEqual(
        text, [&] { return std::bit_cast<std::uint32_t>(StrictFloat(text)); },
        [&] { return std::bit_cast<std::uint32_t>(std::stof(text)); });
    RequireEqual(
        text, [&] { return std::bit_cast<std::uint64_t>(StrictDouble(text)); },
        [&] { return std::bit_cast<std::uint64_t>(std::stod(text)); });
    return 0;
}
