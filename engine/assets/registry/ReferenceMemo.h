#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/assets/identity/AssetKind.h"
#include "engine/core/Hash.h"
#include "engine/core/OrderedMap.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Vornu::Assets
{

/// What the resolving of references has found out about a content folder, so that the disk is asked once.
///
/// Everything in it stands for one revision of the registry and goes with the next. A file that appears or
/// goes without a scan or a registration is no asset of the registry, or still one, whatever the disk says;
/// what may come late is another choice between names that differ in case.
///
/// One thread at a time; the registry locks.
class ReferenceMemo
{
public:
    /// Forgets what it knows of another revision.
    void StartRevision(std::uint64_t revision);

    /// The asset that a text was found to name, 0 for none; nothing for a text that isn't known.
    std::optional<AssetId> FindAnswer(std::string_view text, AssetKind requiredKind) const;
    void KeepAnswer(std::string_view text, AssetKind requiredKind, AssetId id);

    /// The names in a folder by their form without case.
    struct Folder
    {
        struct Name
        {
            std::string exact; // the first that was found
            bool hasOthers = false;
        };

        bool isThere = true;
        std::string canonicalKey;
        Core::OrderedMap<std::string, Name, Core::TextHash> names;
    };

    /// Null for a folder that isn't there or that can't be read whole, which is tried again the next time.
    const Folder* List(const std::string& folder);

    /// Where a path leads whose names are taken as they stand or, where there is no such name, in the only
    /// other case that there is.
    struct Place
    {
        std::string path; // as far as it exists
        std::string canonicalKey;
        bool exists = false;
        bool differsInCase = false;
    };

    /// Nothing for a path that the names of its folders don't decide.
    std::optional<Place> FindPlace(const std::string& root, std::string_view relative);

    /// True the first time that a text is noted. Outlives revisions.
    bool NoteWarning(std::string_view text);

private:
    void DropIfLarge();

    std::uint64_t revision_ = 0;
    std::size_t size_ = 0; // bytes of text, roughly
    Core::OrderedMap<std::string, AssetId, Core::TextHash> answers_;
    Core::OrderedMap<std::string, Folder, Core::TextHash> folders_;
    Core::OrderedMap<std::string, bool, Core::TextHash> warnings_;
};

/// Letters A to Z in lower case.
std::string WithoutCase(std::string_view text);

} // namespace Vornu::Assets
