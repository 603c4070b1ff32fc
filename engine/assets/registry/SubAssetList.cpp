#include "engine/assets/registry/SubAssetList.h"

namespace Vornu::Assets
{
namespace
{

/// The key of a sub-asset without the number that an importer gives to equal names.
std::string_view WithoutNumber(std::string_view key)
{
    const std::size_t last = key.find_last_not_of("0123456789");
    const bool numbered = last != std::string_view::npos && key[last] == '#' && last + 1 < key.size();
    return numbered ? key.substr(0, last) : key;
}

std::string OfKind(AssetKind kind, std::string_view key)
{
    return std::string(KindWord(kind)) + "|" + std::string(key);
}

} // namespace

Core::Guid DerivedSubGuid(const Core::Guid& source, AssetKind kind, const std::string& key)
{
    return Core::GuidFromName("vornu-subasset:" + source.ToString() + "|" + OfKind(kind, key));
}

SubAssetList::SubAssetList(AssetSidecar& sidecar) : sidecar_(sidecar)
{
    for (std::size_t place = 0; place < sidecar.subAssets.size(); ++place)
    {
        Index(place);
    }
}

void SubAssetList::Index(std::size_t place)
{
    const AssetSidecarSubAsset& sub = sidecar_.subAssets[place];
    places_.Emplace(OfKind(sub.kind, sub.name), place); // of equal keys the first counts
    groups_[OfKind(sub.kind, WithoutNumber(sub.name))].places.push_back(place);
}

Core::Guid SubAssetList::Take(AssetKind kind, const std::string& key)
{
    const std::size_t* const listed = places_.Find(OfKind(kind, key));
    const AssetSidecarSubAsset* sub = listed != nullptr ? &sidecar_.subAssets[*listed] : TakeOver(kind, key);
    if (sub == nullptr)
    {
        sidecar_.subAssets.push_back({key, kind, DerivedSubGuid(sidecar_.guid, kind, key)});
        sub = &sidecar_.subAssets.back();
        Index(sidecar_.subAssets.size() - 1);
        hasChanged_ = true;
    }
    NoteLive(key);
    return sub->guid;
}

AssetSidecarSubAsset* SubAssetList::TakeOver(AssetKind kind, const std::string& key)
{
    Group* const group = groups_.Find(OfKind(kind, WithoutNumber(key)));
    if (group == nullptr)
    {
        return nullptr;
    }
    while (group->next < group->places.size())
    {
        const std::size_t place = group->places[group->next++];
        AssetSidecarSubAsset& sub = sidecar_.subAssets[place];
        if (!live_.Contains(sub.name))
        {
            places_.Erase(OfKind(kind, sub.name));
            sub.name = key;
            places_.Emplace(OfKind(kind, key), place);
            hasChanged_ = true;
            return &sub;
        }
    }
    return nullptr;
}

} // namespace Vornu::Assets
