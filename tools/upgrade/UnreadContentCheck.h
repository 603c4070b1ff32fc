#pragma once

#include "engine/assets/manager/AssetManager.h"

#include <cstdint>
#include <string>

namespace Vornu::Upgrade
{

/// Tells whether a file that is read while the check lives names assets in a part of the content folder that
/// couldn't be read.
class UnreadContentCheck
{
public:
    explicit UnreadContentCheck(const Assets::AssetManager& assets)
        : registry_(assets.GetRegistry()), unresolved_(registry_.UnresolvedReferences())
    {
    }

    /// Why the file must not be taken for read; empty if all of its references resolved so far, or all of the
    /// folder is known.
    std::string Fault() const
    {
        const std::string part =
            registry_.UnresolvedReferences() != unresolved_ ? registry_.UnreadPart() : std::string();
        return part.empty() ? part : "the content folder could not be read whole: " + part;
    }

private:
    const Assets::AssetRegistry& registry_;
    std::uint64_t unresolved_;
};

} // namespace Vornu::Upgrade
