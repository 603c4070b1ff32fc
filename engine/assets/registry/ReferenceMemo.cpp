#include "engine/assets/registry/ReferenceMemo.h"

#include "engine/core/files/FolderWalk.h"
#include "engine/core/files/Paths.h"
#include "engine/core/files/ReadFaults.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace Vornu::Assets
{
namespace
{

/// Files decide what is asked, so they must not decide how much is kept.
constexpr std::size_t kMaxSize = std::size_t{64} * 1024 * 1024;
constexpr std::size_t kSizeOfEntry = 128; // beside its text

/// A kind of asset takes part for a few texts only, so it stands behind what no text holds.
std::string AnswerKey(std::string_view text, AssetKind kind)
{
    std::string key(text);
    key.push_back('\0');
    key.push_back(static_cast<char>(kind));
    return key;
}

} // namespace

void ReferenceMemo::StartRevision(std::uint64_t revision)
{
    if (revision != revision_)
    {
        revision_ = revision;
        answers_ = {};
        folders_ = {};
        size_ = 0;
    }
}

std::optional<AssetId> ReferenceMemo::FindAnswer(std::string_view text, AssetKind requiredKind) const
{
    const AssetId* const id = answers_.Find(AnswerKey(text, requiredKind));
    return id == nullptr ? std::nullopt : std::optional(*id);
}

void ReferenceMemo::KeepAnswer(std::string_view text, AssetKind requiredKind, AssetId id)
{
    DropIfLarge();
    size_ += text.size() + kSizeOfEntry;
    answers_.InsertOrAssign(AnswerKey(text, requiredKind), id);
}

const ReferenceMemo::Folder* ReferenceMemo::List(const std::string& folder)
{
    if (const Folder* const known = folders_.Find(folder))
    {
        return known->isThere ? known : nullptr;
    }
    Folder listed;
    std::error_code error;
    listed.canonicalKey = Platform::NormalizedCaseKey(Platform::CanonicalPath(folder, error));
    std::size_t size = folder.size() + kSizeOfEntry;
    const auto enter = [&](std::string_view name)
    {
        size += 2 * name.size() + kSizeOfEntry;
        const auto [entry, isFirst] = listed.names.Emplace(WithoutCase(name));
        entry->hasOthers = !isFirst;
        if (isFirst)
        {
            entry->exact = name;
        }
    };
    const int listError = error ? error.value() : Platform::ListFolder(folder, enter);
    listed.isThere = listError == 0;
    if (!listed.isThere && !Platform::TellsOfAbsence(listError))
    {
        return nullptr;
    }
    DropIfLarge();
    size_ += size;
    const Folder& kept = folders_.InsertOrAssign(folder, std::move(listed));
    return kept.isThere ? &kept : nullptr;
}

std::optional<ReferenceMemo::Place> ReferenceMemo::FindPlace(const std::string& root,
                                                             std::string_view relative)
{
    // Another encoding makes another name of bytes that aren't ASCII.
    if (std::any_of(relative.begin(), relative.end(), [](char c) { return (c & 0x80) != 0; }))
    {
        return std::nullopt;
    }
    Place place;
    place.path = root;
    for (;;)
    {
        const std::size_t slash = relative.find('/');
        const std::string_view name = relative.substr(0, slash);
        const Folder* const folder = List(place.path);
        if (folder == nullptr)
        {
            return std::nullopt;
        }
        const Folder::Name* const found = folder->names.Find(WithoutCase(name));
        if (found == nullptr)
        {
            if (!place.differsInCase) // a file that has gone keeps its record under its own name alone
            {
                place.canonicalKey.assign(folder->canonicalKey).append("/").append(relative);
            }
            return place;
        }
        if (found->exact != name && found->hasOthers)
        {
            return std::nullopt;
        }
        place.differsInCase |= found->exact != name;
        place.path.append("/").append(found->exact);
        if (slash == std::string_view::npos)
        {
            place.canonicalKey.assign(folder->canonicalKey).append("/").append(found->exact);
            place.exists = true;
            return place;
        }
        relative.remove_prefix(slash + 1);
    }
}

bool ReferenceMemo::NoteWarning(std::string_view text)
{
    return warnings_.Emplace(std::string(text)).second;
}

void ReferenceMemo::DropIfLarge()
{
    if (size_ > kMaxSize)
    {
        answers_ = {};
        folders_ = {};
        size_ = 0;
    }
}

std::string WithoutCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

} // namespace Vornu::Assets
