#pragma once

#include <string_view>

namespace Vornu::Core
{

/// Names the work of a block for timing captures: a group, such as "Assets", and a name. Records nothing
/// while no capture runs, which is always so: the capture belongs to the runtime.
class ProfileScope
{
public:
    constexpr ProfileScope(std::string_view /*group*/, std::string_view /*name*/) noexcept {}
    ~ProfileScope() {} // not trivial, so that an unused scope is no warning
    ProfileScope(const ProfileScope&) = delete;
    ProfileScope& operator=(const ProfileScope&) = delete;
};

} // namespace Vornu::Core
