#include "engine/assets/registry/AssetRegistry.h"

#include "engine/assets/registry/AssetScan.h"
#include "engine/core/Hash.h"
#include "engine/core/files/FolderLock.h"
#include "tests/assets/LogLines.h"
#include "tests/core/Failure.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

namespace fs = std::filesystem;

namespace Vornu::Assets
{
namespace
{

using Test::DeepFolder;
using Test::FailureOf;
using Test::LogLines;
using Test::TestFolder;

constexpr AssetMountMode kAuthoring = AssetMountMode::Authoring;
constexpr AssetMountMode kReadOnly = AssetMountMode::ReadOnly;

/// The GUID of number `n`.
Core::Guid GuidNumber(std::uint64_t n)
{
    return {0, n};
}

std::string SidecarText(std::uint64_t n)
{
    return "vmeta 1\nguid " + GuidNumber(n).ToString() + "\nimporter native 1\nsettings\nend\n";
}

Core::Guid ContentGuid(const std::string& relative)
{
    return Core::GuidFromName("vornu-asset:content:" + relative);
}

class AssetRegistryMount : public testing::Test
{
protected:
    AssetRegistryMount() { Core::GetLogger().SetConsoleEnabled(false); }

    /// The GUID of a file; null if it isn't registered.
    Core::Guid GuidAt(std::string_view name) const
    {
        return assets_.GuidOf(assets_.FindByPath(root_ / name));
    }

    TestFolder root_;
    AssetRegistry assets_;
    LogLines log_;
};

TEST_F(AssetRegistryMount, AuthoringGivesEveryAssetASidecarAndReadOnlyNone)
{
    root_.Write("a.PNG", "x");
    root_.Write("sub/Hero.fbx", "x");
    root_.Write("notes.txt", "x");
    root_.Write("Hero.vmeta", "x");
    fs::create_directory(root_ / "folder.png");
    fs::create_symlink("a.PNG", root_ / "link.png");
    assets_.Mount(root_.Path() / ".", kReadOnly);
    EXPECT_EQ(root_.List(), "Hero.vmeta a.PNG folder.png link.png notes.txt sub");
    EXPECT_EQ(assets_.ListRecords().size(), 2u);
    EXPECT_EQ(GuidAt("a.PNG"), ContentGuid("a.PNG"));
    EXPECT_EQ(GuidAt("link.png"), ContentGuid("a.PNG"));
    EXPECT_EQ(assets_.FindInfo(ContentGuid("a.PNG"))->sidecarVersion, 0u);
    const AssetId id = assets_.FindByPath(root_ / "sub/Hero.fbx");
    const std::uint64_t revision = assets_.GetRevision();

    assets_.Mount(root_.Path(), kAuthoring);
    EXPECT_EQ(root_.List(), "Hero.vmeta a.PNG a.PNG.vmeta folder.png link.png notes.txt sub");
    EXPECT_EQ(root_.Read("a.PNG.vmeta"),
              "vmeta 1\nguid " + ContentGuid("a.PNG").ToString() +
                  "\nimporter texture 1\nsettings\nencoding \"auto\"\nmax_size \"0\"\nend\n");
    EXPECT_GT(assets_.GetRevision(), revision);
    EXPECT_EQ(assets_.FindByPath(root_ / "sub/../sub/Hero.fbx"), id);
    const auto record = assets_.FindRecord(id);
    EXPECT_EQ(record->name, "Hero.fbx");
    EXPECT_EQ(record->path, root_ / "sub/Hero.fbx");
    EXPECT_EQ(record->kind, AssetKind::Scene);
    EXPECT_EQ(assets_.FindInfo(record->guid)->sidecarVersion, 1u);
    EXPECT_EQ(log_.Take(), "");
}

TEST_F(AssetRegistryMount, ASidecarCountsInEitherSpelling)
{
    root_.Write("a.vmat", "");
    root_.Write("a.vmat.VMETA", SidecarText(7));
    assets_.Mount(root_.Path(), kAuthoring);
    EXPECT_EQ(GuidAt("a.vmat"), GuidNumber(7));
    root_.Write("a.vmat.vmeta", SidecarText(8));
    assets_.Refresh();
    EXPECT_EQ(GuidAt("a.vmat"), GuidNumber(8));
    EXPECT_EQ(root_.List(), "a.vmat a.vmat.VMETA a.vmat.vmeta");
}

TEST_F(AssetRegistryMount, WaitsForAnotherProgram)
{
    root_.Write("a.vmat", "");
    auto held = std::make_optional<Platform::FolderLock>(root_.Path(), std::chrono::milliseconds(0));
    std::thread other([&] { assets_.Mount(root_.Path(), kAuthoring); });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(root_.List(), "a.vmat");
    held.reset();
    other.join();
    EXPECT_EQ(root_.List(), "a.vmat a.vmat.vmeta");
    EXPECT_EQ(log_.Take(), "");
}

TEST_F(AssetRegistryMount, MissingFolders)
{
    const std::string none = (root_ / "none").string();
    root_.Write("file", "");
    EXPECT_EQ(FailureOf([&] { assets_.Mount(none, kReadOnly); }),
              "Read-only asset content directory is missing: " + none);
    EXPECT_EQ(
        FailureOf<fs::filesystem_error>([&] { assets_.Mount(root_ / "file", kAuthoring); }).substr(0, 19),
        "create_directories:");
    EXPECT_EQ(assets_.GetContentRoot(), "");
    assets_.Mount(none, kAuthoring);
    EXPECT_TRUE(fs::is_directory(none));
    EXPECT_TRUE(assets_.ListRecords().empty());
    fs::remove(none);
    assets_.Refresh();
    EXPECT_TRUE(assets_.ListRecords().empty());
}

TEST_F(AssetRegistryMount, TheHolderOfTheLastScanKeepsADuplicatedGuid)
{
    root_.Write("b.vmat", "b");
    root_.Write("b.vmat.vmeta", SidecarText(7));
    assets_.Mount(root_.Path(), kAuthoring);
    const AssetId id = assets_.FindByGuid(GuidNumber(7));
    for (const char* const copy : {"a.vmat", "c.vmat"})
    {
        root_.Write(copy, "b");
        root_.Write(std::string(copy) + ".vmeta", SidecarText(7));
    }
    assets_.Refresh();
    EXPECT_EQ(GuidAt("b.vmat"), GuidNumber(7));
    EXPECT_EQ(assets_.FindByPath(root_ / "b.vmat"), id);
    EXPECT_EQ(root_.Read("b.vmat.vmeta"), SidecarText(7));
    EXPECT_EQ(assets_.ListRecords().size(), 3u);
    EXPECT_NE(root_.Read("a.vmat.vmeta"), root_.Read("c.vmat.vmeta"));
    EXPECT_EQ(ReadSidecar(root_ / "a.vmat.vmeta")->guid, GuidAt("a.vmat"));
    const auto warning = [&](const char* name)
    {
        return "[Warn] Duplicate asset GUID " + GuidNumber(7).ToString() + " in " + (root_ / name).string() +
               " (copied sidecar); assigning a new identity.\n";
    };
    EXPECT_EQ(log_.Take(), warning("a.vmat") + warning("c.vmat"));

    // Without a memory the first path keeps it, and a read-only registry derives the other.
    root_.Write("a.vmat.vmeta", SidecarText(7));
    AssetRegistry fresh;
    fresh.Mount(root_.Path(), kReadOnly);
    EXPECT_EQ(fresh.GuidOf(fresh.FindByPath(root_ / "a.vmat")), GuidNumber(7));
    EXPECT_EQ(fresh.GuidOf(fresh.FindByPath(root_ / "b.vmat")),
              Core::GuidFromName("vornu-duplicate:" + GuidNumber(7).ToString() + ":" +
                                 (root_ / "b.vmat").string()));
    EXPECT_EQ(root_.Read("b.vmat.vmeta"), SidecarText(7));
}

TEST_F(AssetRegistryMount, ASidecarFollowsItsRenamedFile)
{
    root_.Write("a.vmat", "content");
    root_.Write("a.vmat.vmeta", SidecarText(7));
    root_.Write("b.vmat", "other");
    root_.Write("b.vmat.vmeta", SidecarText(8));
    assets_.Mount(root_.Path(), kAuthoring);
    fs::rename(root_ / "a.vmat", root_ / "moved.vmat");
    root_.Write("copy.vmat", "content");
    fs::last_write_time(root_ / "copy.vmat", fs::last_write_time(root_ / "moved.vmat"));
    fs::rename(root_ / "b.vmat", root_ / "b.vskel"); // another extension
    assets_.Refresh();
    // The first of the two that fit takes it.
    EXPECT_EQ(GuidAt("copy.vmat"), GuidNumber(7));
    EXPECT_EQ(GuidAt("moved.vmat"), ContentGuid("moved.vmat"));
    EXPECT_EQ(GuidAt("b.vskel"), ContentGuid("b.vskel"));
    EXPECT_EQ(root_.List(), "b.vmat.vmeta b.vskel b.vskel.vmeta copy.vmat copy.vmat.vmeta moved.vmat "
                            "moved.vmat.vmeta");
    EXPECT_EQ(log_.Take(),
              "[Info] Asset sidecar followed renamed file: " + (root_ / "copy.vmat").string() + "\n");
}

TEST_F(AssetRegistryMount, TwoOrphansThatFitOneFileStay)
{
    const auto time = fs::last_write_time(root_.Write("a.vmat", "same"));
    fs::last_write_time(root_.Write("b.vmat", "same"), time);
    assets_.Mount(root_.Path(), kAuthoring);
    fs::rename(root_ / "a.vmat", root_ / "c.vmat");
    fs::remove(root_ / "b.vmat");
    assets_.Refresh();
    EXPECT_EQ(root_.List(), "a.vmat.vmeta b.vmat.vmeta c.vmat c.vmat.vmeta");
    EXPECT_EQ(GuidAt("c.vmat"), ContentGuid("c.vmat"));
}

TEST_F(AssetRegistryMount, AnUnreadableSidecarIsKept)
{
    root_.Write("a.vmat", "");
    const std::string path = (root_ / "a.vmat.vmeta").string();
    const std::string warning = "[Warn] Ignoring unreadable asset sidecar " + path + ": Invalid vmeta guid.";
    root_.Write("a.vmat.vmeta", "guid first");
    assets_.Mount(root_.Path(), kReadOnly);
    EXPECT_EQ(Core::GetLogger().CopyHistory().back().category, Core::LogCategory::General);
    EXPECT_EQ(log_.Take(), warning + "\n");
    assets_.Mount(root_.Path(), kAuthoring);
    EXPECT_EQ(log_.Take(), warning + " A new identity is assigned.\n");
    root_.Write("a.vmat.vmeta", "guid second");
    assets_.Refresh();
    EXPECT_EQ(root_.List(), "a.vmat a.vmat.vmeta a.vmat.vmeta.unreadable a.vmat.vmeta.unreadable-2");
    EXPECT_EQ(root_.Read("a.vmat.vmeta.unreadable") + ", " + root_.Read("a.vmat.vmeta.unreadable-2"),
              "guid first, guid second");
    EXPECT_EQ(ReadSidecar(path)->guid, ContentGuid("a.vmat"));
}

TEST_F(AssetRegistryMount, ASidecarThatTheSystemFailsToReadStays)
{
    root_.Write("a.vmat", "");
    fs::create_symlink("/proc/self/mem", root_ / "a.vmat.vmeta"); // opens, and fails to be read
    root_.Write("b.vmat", "");
    assets_.Mount(root_.Path(), kAuthoring);
    EXPECT_EQ(root_.List(), "a.vmat a.vmat.vmeta b.vmat b.vmat.vmeta");
    EXPECT_TRUE(fs::is_symlink(root_ / "a.vmat.vmeta"));
    EXPECT_EQ(assets_.UnreadPart(), (root_ / "a.vmat.vmeta").string() + ": Input/output error");
    EXPECT_TRUE(assets_.IsProvisional(assets_.FindByPath(root_ / "a.vmat")));
    EXPECT_FALSE(assets_.IsProvisional(assets_.FindByPath(root_ / "b.vmat")));
    fs::remove(root_ / "a.vmat.vmeta");
    assets_.Refresh();
    EXPECT_EQ(assets_.UnreadPart(), "");
    EXPECT_FALSE(assets_.IsProvisional(assets_.FindByPath(root_ / "a.vmat")));
}

TEST_F(AssetRegistryMount, NothingIsWrittenThroughLinksOfAFolder)
{
    const TestFolder elsewhere;
    const auto link = [&](const char* name, const std::string& text)
    { fs::create_symlink(elsewhere.Write(name, text), root_ / name); };
    root_.Write("0.vmat", "");
    root_.Write("0.vmat.vmeta", SidecarText(7));
    for (const char* const name : {"broken.vmat", "copied.vmat", "dangling.vmat", "good.vmat"})
    {
        root_.Write(name, "");
    }
    link("broken.vmat.vmeta", "guid first");
    link("copied.vmat.vmeta", SidecarText(7));
    link("good.vmat.vmeta", SidecarText(8));
    link("asset.vmat", "");                              // an asset that stands elsewhere,
    elsewhere.Write("asset.vmat.vmeta", SidecarText(7)); // with a copied sidecar of its own
    fs::create_symlink(elsewhere / "none", root_ / "dangling.vmat.vmeta");
    const std::string before = root_.List() + elsewhere.List() + elsewhere.Read("copied.vmat.vmeta") +
                               elsewhere.Read("asset.vmat.vmeta");
    assets_.Mount(root_.Path(), kAuthoring);
    const std::string at = root_.Path().string() + "/";
    const std::string duplicate = "[Warn] Duplicate asset GUID " + GuidNumber(7).ToString() + " in ";
    const std::string end = " (copied sidecar); assigning a new identity.\n";
    const std::string unreadable = "[Warn] Ignoring unreadable asset sidecar " + at;
    std::string expected =
        unreadable + "broken.vmat.vmeta: Invalid vmeta guid. A new identity is assigned.\n" + unreadable +
        "dangling.vmat.vmeta: Cannot open sidecar. A new identity is assigned.\n";
    std::string log = log_.Take();
    EXPECT_EQ(log.substr(0, expected.size()), expected);
    EXPECT_NE(log.find(duplicate + at + "copied.vmat" + end), std::string::npos) << log;
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 4) << log;
    EXPECT_EQ(root_.List() + elsewhere.List() + elsewhere.Read("copied.vmat.vmeta") +
                  elsewhere.Read("asset.vmat.vmeta"),
              before);
    EXPECT_EQ(GuidAt("good.vmat"), GuidNumber(8));
    EXPECT_EQ(GuidAt("copied.vmat"),
              Core::GuidFromName("vornu-duplicate:" + GuidNumber(7).ToString() + ":" + at + "copied.vmat"));
    EXPECT_EQ(GuidAt("broken.vmat"), ContentGuid("broken.vmat"));
    EXPECT_EQ(assets_.UnreadPart(), at + "broken.vmat.vmeta: Invalid vmeta guid.");
}

TEST_F(AssetRegistryMount, WhatIsFoundDoesNotDependOnWhatCantBeRead)
{
    const DeepFolder deep(root_.Path());
    for (int i = 0; i < 40; ++i)
    {
        root_.Write(std::to_string(i) + "/a.vmat", "");
    }
    assets_.Mount(root_.Path(), kAuthoring);
    EXPECT_EQ(assets_.ListRecords().size(), 40u);
    EXPECT_NE(assets_.UnreadPart().find(": File name too long"), std::string::npos);
}

TEST_F(AssetRegistryMount, FilesAreEnteredOneByOne)
{
    const TestFolder elsewhere;
    assets_.Mount(root_.Path(), kAuthoring);
    const fs::path outside = elsewhere.Write("a.vmat", "");
    const AssetId id = assets_.RegisterFile(AssetKind::Material, outside);
    EXPECT_EQ(assets_.GuidOf(id), Core::GuidFromName("vornu-asset:path:" + outside.string()));
    EXPECT_EQ(elsewhere.List(), "a.vmat");

    root_.Write("a.vmat.vmeta", SidecarText(7));
    EXPECT_EQ(assets_.GuidOf(assets_.RegisterFile(AssetKind::Material, root_.Write("a.vmat", ""))),
              GuidNumber(7));
    root_.Write("b.vmat.vmeta", SidecarText(7));
    const AssetId copy = assets_.RegisterFile(AssetKind::Material, root_.Write("b.vmat", ""));
    EXPECT_NE(assets_.GuidOf(copy), GuidNumber(7));
    // A moved file keeps its id and leaves its old place.
    fs::rename(root_ / "a.vmat", root_ / "c.vmat");
    fs::rename(root_ / "a.vmat.vmeta", root_ / "c.vmat.vmeta");
    const AssetId moved = assets_.RegisterFile(AssetKind::Material, root_ / "c.vmat");
    EXPECT_EQ(assets_.GuidOf(moved), GuidNumber(7));
    EXPECT_EQ(assets_.FindByPath(root_ / "a.vmat"), 0u);
    EXPECT_EQ(assets_.FindSidecar(root_ / "a.vmat"), std::nullopt);

    const std::uint64_t revision = assets_.GetRevision();
    EXPECT_TRUE(assets_.SetFileSetting(root_ / "c.vmat", "k", "v"));
    EXPECT_TRUE(assets_.SetFileSetting(root_ / "c.vmat", "k", "v"));
    EXPECT_EQ(assets_.GetRevision(), revision + 1);
    EXPECT_EQ(ReadSidecar(root_ / "c.vmat.vmeta"), assets_.FindSidecar(root_ / "c.vmat"));
    EXPECT_EQ(assets_.FindSidecar(root_ / "c.vmat")->settings.size(), 1u);
    EXPECT_FALSE(assets_.SetFileSetting(outside, "k", "v"));
}

TEST_F(AssetRegistryMount, SubAssetsAreListedInTheSidecarOfTheirSource)
{
    const fs::path hero = root_.Write("Hero.fbx", "");
    root_.Write("Hero.fbx.vmeta", SidecarText(7) + "subassets\nmesh \"Leg#1\" " + GuidNumber(8).ToString() +
                                      "\nmesh \"Body\" " + GuidNumber(9).ToString() + "\nend\n");
    assets_.Mount(root_.Path(), kAuthoring);
    EXPECT_EQ(assets_.SourceOfSubGuid(GuidNumber(8)), hero);
    const auto add = [&](AssetKind kind, const char* key)
    { return assets_.GuidOf(assets_.RegisterSubAsset(kind, hero, {}, key, key)); };
    EXPECT_EQ(add(AssetKind::Mesh, "Body"), GuidNumber(9));
    EXPECT_EQ(add(AssetKind::Mesh, "Leg#2"), GuidNumber(8)); // renumbered
    const Core::Guid leg = Core::GuidFromName("vornu-subasset:" + GuidNumber(7).ToString() + "|mesh|Leg#3");
    EXPECT_EQ(add(AssetKind::Mesh, "Leg#3"), leg); // Leg#2 is in use
    EXPECT_EQ(add(AssetKind::Material, "Body"),
              Core::GuidFromName("vornu-subasset:" + GuidNumber(7).ToString() + "|material|Body"));
    EXPECT_EQ(assets_.FindInfo(leg)->dependencies, std::vector<Core::Guid>{GuidNumber(7)});
    std::string listed;
    const std::optional<AssetSidecar> written = ReadSidecar(SidecarPath(hero));
    ASSERT_TRUE(written);
    for (const AssetSidecarSubAsset& sub : written->subAssets)
    {
        listed += sub.name + " ";
    }
    EXPECT_EQ(listed, "Leg#2 Body Leg#3 Body ");
    EXPECT_EQ(assets_.FindSubAsset(hero, "Body", AssetKind::Material),
              assets_.FindByGuid(add(AssetKind::Material, "Body")));
    EXPECT_EQ(assets_.FindSubAsset(hero, "Body", AssetKind::Texture), 0u);
    EXPECT_EQ(assets_.ListRecordsOfKind(AssetKind::Mesh).front()->subKey, "Body");

    const std::uint64_t revision = assets_.GetRevision();
    assets_.RemoveAssetsOfFile(hero);
    assets_.RemoveAssetsOfFile(hero);
    EXPECT_EQ(assets_.GetRevision(), revision + 1);
    EXPECT_EQ(assets_.FindByGuid(leg), 0u);
    EXPECT_EQ(assets_.SourceOfSubGuid(leg), hero);

    // A source that isn't there has no sidecar to list anything.
    const AssetId lone = assets_.RegisterSubAsset(AssetKind::Mesh, root_ / "no.fbx", {}, "k", "n");
    EXPECT_EQ(assets_.GuidOf(lone),
              Core::GuidFromName("vornu-subasset:" + ContentGuid("no.fbx").ToString() + "|mesh|k"));
    assets_.RegisterBuiltin(AssetKind::Mesh, "Builtin/Cube");
    assets_.Refresh();
    EXPECT_EQ(assets_.ListRecords().size(), 2u);
    EXPECT_EQ(assets_.ListRecords().back()->name, "Builtin/Cube");
}

TEST(AssetScan, TheStampHashesSizeAndTimeSince1601)
{
    const TestFolder folder;
    const fs::path path = folder.Write("a", "abc");
    fs::last_write_time(path,
                        std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(1))));
    // One second behind 1970, which began 11,644,473,600 seconds behind 1601.
    const std::uint64_t ticks = 116'444'736'010'000'000;
    std::string bytes("\3\0\0\0\0\0\0\0", 8);
    for (int i = 0; i < 8; ++i)
    {
        bytes.push_back(static_cast<char>(ticks >> (8 * i)));
    }
    EXPECT_EQ(ContentStamp(path), Core::Fnv1a(bytes));
    EXPECT_EQ(ContentStamp(folder / "none"), 0u);
}

TEST(FolderLock, KeepsOthersOutForAsLongAsTheyWait)
{
    using Platform::FolderLock;
    constexpr std::chrono::milliseconds kShort{20};
    const TestFolder folder;
    {
        const FolderLock held(folder.Path(), kShort);
        EXPECT_EQ(held.Result(), FolderLock::Outcome::Held);
        EXPECT_EQ(FolderLock(folder.Path(), kShort).Result(), FolderLock::Outcome::TimedOut);
    }
    EXPECT_EQ(FolderLock(folder.Path(), kShort).Result(), FolderLock::Outcome::Held);
    EXPECT_EQ(FolderLock(folder / "none", kShort).Result(), FolderLock::Outcome::Unavailable);
}

} // namespace
} // namespace Vornu::Assets
