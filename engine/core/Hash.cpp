#include "engine/core/Hash.h"

#include <random>

namespace Vornu::Core::Detail
{

HashKey DrawHashKey()
{
    std::random_device device;
    const auto draw = [&device] { return (std::uint64_t{device()} << 32) | device(); };
    return {draw(), draw()};
}

} // namespace Vornu::Core::Detail
