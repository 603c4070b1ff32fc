#include "engine/assets/registry/AssetReference.h"

#include "engine/core/Hash.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/files/Folders.h"
#include "tests/assets/LogLines.h"
#include "tests/core/Failure.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <string>
#include <utility>

#include <fcntl.h>

namespace fs = std::filesystem;

namespace Vornu::Assets
{
namespace
{

using Test::FailureOf;
using Test::LogLines;
using Test::ScopedVariable;
using Test::TestFolder;

class AssetReferences : public testing::Test
{
protected:
    AssetReferences()
    {
        Core::GetLogger().SetConsoleEnabled(false);
        root_.Write("Sub/Hero.fbx", "");
        root_.Write("Caf\u00e9.png", "");
        root_.Write("case.vmat", "");
        root_.Write("Case.vmat", "");
        assets_.Mount(root_.Path(), AssetMountMode::ReadOnly);
        cube_ = assets_.RegisterBuiltin(AssetKind::Mesh, "Builtin/Cube");
        hero_ = assets_.FindByPath(root_ / "Sub/Hero.fbx");
        coffee_ = assets_.FindByPath(root_ / "Caf\u00e9.png");
        body_ = Add(AssetKind::Mesh, "Cache/12_Body.vmesh", "Body");
        skin_ = Add(AssetKind::Material, "Cache/Caf\u00e9.vmesh", "J");
    }

    AssetId Add(AssetKind kind, const char* child, const char* key)
    {
        return assets_.RegisterSubAsset(kind, root_ / "Sub/Hero.fbx", root_ / child, key, key);
    }

    TestFolder root_;
    AssetRegistry assets_;
    AssetId cube_ = 0;
    AssetId hero_ = 0;
    AssetId coffee_ = 0;
    AssetId body_ = 0;
    AssetId skin_ = 0;
};

TEST_F(AssetReferences, EveryFormResolves)
{
    const std::string guid = assets_.GuidOf(hero_).ToString();
    std::string upper = guid;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return static_cast<char>(std::toupper(c)); });
    const std::string root = root_.Path().string();
    const std::string derived = "derived:content:Sub/Hero.fbx|";
    const struct
    {
        std::string text;
        AssetId id;
    } rows[] = {
        {"", 0},
        {"guid:" + guid, hero_},
        {"guid:" + upper, hero_},
        {"guid:" + guid + "0", 0},
        {"guid:" + Core::Guid{}.ToString(), 0},
        {"GUID:" + guid, 0},
        {"builtin:Builtin/Cube", cube_},
        {"builtin:Cube", 0},
        {"content:Sub/Hero.fbx", hero_},
        {"content:Sub\\.\\Hero.fbx", hero_},
        {"content:Sub/None.fbx", 0},
        {std::string("content:Sub/Hero.fbx\0x", 22), 0},
        {"path:" + root + "/Sub/Hero.fbx", hero_},
        {"content:Caf\u00e9.png", coffee_},
        {"content:Caf\xe9.png", coffee_},
        {"path:" + root + "/Caf\xe9.png", coffee_},
        {"content:SUB/hero.FBX", hero_},
        {"path:" + root + "/sub/Hero.fbx", 0},
        {"content:CAF\xe9.png", coffee_},
        {"content:CASE.vmat", 0}, // two fit
        {"other:Sub/Hero.fbx", 0},
        {derived + "subkey:426f6479", body_},
        {derived + "subkey:4a", skin_},
        {derived + "subkey:4A", skin_},
        {derived + "subkey:4", 0},
        {derived + "subkey:4g", 0},
        {derived + "content:Cache/12_Body.vmesh", body_},
        {derived + "content:Cache/Body.vmesh", body_},
        {derived + "path:" + root + "/Cache/7_Body.vmesh", body_},
        {derived + "content:Cache/1_2_Body.vmesh", 0},
        {derived + "content:Cache/Caf\xe9.vmesh", skin_},
        {derived + "x", 0},
        {"derived:guid:" + guid + "|subkey:4a", skin_},
        {"derived:content:Caf\u00e9.png|subkey:4a", 0},
        {"derived:content:Sub/Hero.fbx", 0},
        {"derived:|subkey:4a", 0},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(ResolveAssetReference(assets_, row.text), row.id) << row.text;
    }
    EXPECT_EQ(ResolveAssetReference(assets_, derived + "subkey:4a", AssetKind::Mesh), 0u);
    EXPECT_EQ(ResolveAssetReference(assets_, derived + "content:Cache/Body.vmesh", AssetKind::Material), 0u);
    EXPECT_EQ(ResolveAssetReference(assets_, "guid:" + guid, AssetKind::Mesh), hero_);
}

TEST_F(AssetReferences, PathsAndTheirText)
{
    bool legacy = false;
    EXPECT_EQ(ResolveReferencePath(assets_, "content:Caf\u00e9.png", &legacy), root_ / "Caf\u00e9.png");
    EXPECT_FALSE(legacy);
    EXPECT_EQ(ResolveReferencePath(assets_, "content:Caf\xe9.png", &legacy), root_ / "Caf\u00e9.png");
    EXPECT_TRUE(legacy);
    EXPECT_EQ(ResolveReferencePath(assets_, "content:no/../\xe9"), root_ / "\xe9");
    EXPECT_EQ(ResolveReferencePath(assets_, "path:"), "");
    EXPECT_EQ(ResolveReferencePath(assets_, "builtin:Builtin/Cube"), "");
    EXPECT_EQ(ResolveReferencePath(assets_, "guid:" + assets_.GuidOf(skin_).ToString()),
              root_ / "Sub/Hero.fbx");
    EXPECT_EQ(ResolveReferencePath(assets_, "derived:content:a|b|c"), root_ / "a");
    EXPECT_EQ(ResolveReferencePath(AssetRegistry(), "content:a"), "");

    const std::string root = root_.Path().string();
    EXPECT_EQ(FormatPathReference(assets_, root_ / "Sub/../Sub/x y"), "content:Sub/x y");
    EXPECT_EQ(FormatPathReference(assets_, root_.Path()), "path:" + root);
    EXPECT_EQ(FormatPathReference(assets_, root + "x"), "path:" + root + "x");
    EXPECT_EQ(FormatPathReference(assets_, ""), "");
    EXPECT_EQ(FormatAssetReference(assets_, cube_), "builtin:Builtin/Cube");
    EXPECT_EQ(FormatAssetReference(assets_, skin_), "guid:" + assets_.GuidOf(skin_).ToString());
    EXPECT_EQ(FormatAssetReference(assets_, 0), "");
    EXPECT_TRUE(IsPathReference("path:x") && IsPathReference("derived:"));
    EXPECT_FALSE(IsPathReference("guid:x") || IsPathReference("Path:x"));
}

TEST_F(AssetReferences, AnotherCaseIsReportedOnce)
{
    LogLines log;
    ResolveAssetReference(assets_, "content:sub/hero.fbx");
    ResolveReferencePath(assets_, "content:sub/hero.fbx");
    EXPECT_EQ(ResolveReferencePath(assets_, "content:none/../Sub/Hero.fbx"), root_ / "Sub/Hero.fbx");
    EXPECT_EQ(log.Take(), "[Warn] Asset reference 'content:sub/hero.fbx' differs in case from " +
                              (root_ / "Sub/Hero.fbx").string() + "\n");
}

TEST_F(AssetReferences, AreFoundInAnyText)
{
    const std::string guid(36, '1');
    const std::string odd = "content:" + std::string(28, 'z');
    const std::string nul(1, '\0');
    std::string found;
    for (const std::string& text :
         ScanAssetReferences("a \"content:x y\" guid:" + guid + "guid:" + guid +
                             "2 builtin:b path:p\nderived:content:a|guid:b\r"
                             "guid:" +
                             odd + "content:n" + nul + "xcontent:\"content guid:9\nz"))
    {
        found += "<" + text + ">";
    }
    EXPECT_EQ(found, "<content:x y><guid:" + guid + "><guid:" + guid +
                         "><derived:content:a|guid:b><guid:" + odd + "><content:n><content:><guid:9\nz>");
}

TEST_F(AssetReferences, OldScenesNamePathsByTheirHash)
{
    const ScopedVariable settings("VORNU_USER_SETTINGS_DIR", "/old/settings");
    const std::string project = "/old/settings/UnsavedProject/Content/";
    const std::string root = root_.Path().string() + "/";
    const struct
    {
        std::string text;
        AssetId id;
    } rows[] = {
        {root + "Sub/Hero.fbx", hero_},
        {project + "Sub/Hero.fbx", hero_},
        {(Core::DefaultContentFolder() / "Sub/Hero.fbx").string(), hero_},
        {project + "Sub/Hero.fbx#Body", body_},
        {project + "Caf\u00e9.png", coffee_},
        {project + "Caf\xe9.png", coffee_},
        {project + "Cache/12_Body.vmesh", 0},
        {"Builtin/Cube", 0},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(ResolveLegacyAssetId(assets_, Core::Fnv1a(row.text)), row.id) << row.text;
    }
    EXPECT_EQ(ResolveLegacyAssetId(assets_, 0), 0u);
    EXPECT_EQ(ResolveLegacyAssetId(assets_, cube_), cube_);
    EXPECT_EQ(ResolveLegacyAssetId(assets_, 1), 0u);
    const AssetId added = Add(AssetKind::Mesh, "x", "new");
    EXPECT_EQ(ResolveLegacyAssetId(assets_, Core::Fnv1a(root + "Sub/Hero.fbx#new")), added);
}

TEST_F(AssetReferences, TheCodecWantsTheKindOfTheProperty)
{
    const Reflection::SchemaCodecContext codec = MakeSceneCodecContext(assets_);
    Reflection::AssetTypeInfo mesh;
    mesh.name = "Mesh";
    mesh.nativeId = 1;
    Reflection::AssetTypeInfo texture = mesh;
    texture.name = "Texture";
    texture.nativeId = 4;
    EXPECT_EQ(codec.assetToText(cube_, mesh), "builtin:Builtin/Cube");
    EXPECT_EQ(FailureOf([&] { codec.assetToText(cube_, texture); }),
              "Unregistered asset or mismatched asset type: Texture");
    EXPECT_EQ(FailureOf([&] { codec.assetToText(1, mesh); }),
              "Unregistered asset or mismatched asset type: Mesh");
    EXPECT_EQ(codec.textToAsset("content:Caf\xe9.png", texture), coffee_);
    const auto load = [&](const char* text) { return FailureOf([&] { codec.textToAsset(text, texture); }); };
    EXPECT_EQ(load("content:none"), "Unresolved asset or mismatched asset type: Texture / content:none");
    assets_.SetStrippedKinds({std::begin(kStrippedKinds), std::end(kStrippedKinds)});
    std::string stripped;
    for (std::uint32_t kind = 0; kind <= 20; ++kind)
    {
        stripped += assets_.IsStripped(static_cast<AssetKind>(kind)) ? std::to_string(kind) + " " : "";
    }
    EXPECT_EQ(stripped, "3 4 5 6 14 15 16 17 ");
    EXPECT_EQ(codec.textToAsset("content:none", texture), kStrippedAssetId);
    EXPECT_EQ(load("builtin:Builtin/Cube"),
              "Unresolved asset or mismatched asset type: Texture / builtin:Builtin/Cube");
}

/// Counts how often folders and files are opened, and may refuse it.
class Openings
{
public:
    Openings()
    {
        count_ = 0;
        refusal_ = 0;
        calls_ = Platform::ActiveFileSystemCalls();
        calls_.open = [](const char* path, int flags, mode_t mode)
        {
            ++count_;
            errno = refusal_;
            return refusal_ != 0 ? -1 : ::open(path, flags, mode);
        };
        real_ = Platform::ReplaceFileSystemCalls(&calls_);
    }
    ~Openings() { Platform::ReplaceFileSystemCalls(real_); }

    int Take() { return std::exchange(count_, 0); }
    void Refuse(int error) { refusal_ = error; }

private:
    static inline int count_ = 0;
    static inline int refusal_ = 0;
    Platform::FileSystemCalls calls_;
    const Platform::FileSystemCalls* real_ = nullptr;
};

TEST_F(AssetReferences, AFolderIsListedOncePerRevision)
{
    Openings openings;
    for (const char* const text :
         {"content:Sub/a.png", "content:Sub/b.png", "content:Sub\\b.png", "content:sub/HERO.fbx",
          "content:sub/none.fbx", "content:none/a.png", "content:none/b.png"})
    {
        const bool isHero = std::string_view(text).ends_with("HERO.fbx");
        EXPECT_EQ(ResolveAssetReference(assets_, text), isHero ? hero_ : 0) << text;
        EXPECT_EQ(ResolveAssetReference(assets_, text), isHero ? hero_ : 0) << text;
    }
    EXPECT_EQ(openings.Take(), 2); // "Sub" and the content folder

    // A file becomes an asset by being entered, and no earlier.
    root_.Write("Sub/a.png", "");
    EXPECT_EQ(ResolveAssetReference(assets_, "content:Sub/a.png"), 0u);
    const AssetId late = assets_.RegisterFile(AssetKind::Texture, root_ / "Sub/a.png");
    EXPECT_EQ(ResolveAssetReference(assets_, "content:Sub/a.png"), late);
    EXPECT_EQ(ResolveAssetReference(assets_, "content:Sub/A.png"), late);
    root_.Write("Sub/A.png", "");
    EXPECT_EQ(ResolveAssetReference(assets_, "content:Sub/A.png"), late);
    assets_.Refresh();
    EXPECT_EQ(ResolveAssetReference(assets_, "content:Sub/A.png"), assets_.FindByPath(root_ / "Sub/A.png"));
}

TEST_F(AssetReferences, WhatTheSystemFailsToTellIsAskedAgain)
{
    Openings openings;
    const std::uint64_t unresolved = assets_.UnresolvedReferences();
    openings.Refuse(EIO);
    EXPECT_EQ(ResolveAssetReference(assets_, "content:Sub/HERO.fbx"), 0u);
    EXPECT_EQ(assets_.UnresolvedReferences(), unresolved + 1);
    openings.Refuse(0);
    EXPECT_EQ(ResolveAssetReference(assets_, "content:Sub/HERO.fbx"), hero_);
    EXPECT_EQ(ResolveAssetReference(assets_, ""), 0u);
    EXPECT_EQ(assets_.UnresolvedReferences(), unresolved + 1);
}

} // namespace
} // namespace Vornu::Assets
