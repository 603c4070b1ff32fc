#include "engine/assets/identity/AssetSidecar.h"

#include "engine/core/files/FileSystemCalls.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace Vornu::Assets
{
namespace
{

using Test::TestFolder;

const std::string kGuidText = "3f2a9c1e-7b40-4d2e-9a11-5c0de1a2b3c4";
const Core::Guid kGuid = *Core::Guid::TryParse(kGuidText);

TEST(AssetSidecar, ReadsWhatTheFormatAllowsAndNamesWhatItRefuses)
{
    const std::string head = "vmeta 1\nguid " + kGuidText + "\n";
    const std::string plain = head + "importer native 1\nsettings\nend\n";
    const struct
    {
        const char* name;
        std::string text;
        std::string result; // the text as written again, or the error
    } rows[] = {
        {"as written", head + "importer texture 1\nsettings\nencoding \"auto\"\nmax_size \"0\"\nend\n",
         head + "importer texture 1\nsettings\nencoding \"auto\"\nmax_size \"0\"\nend\n"},
        {"sub-assets", plain + "subassets\nmesh \"Bo \\\"dy\" " + kGuidText + "\nend\n",
         plain + "subassets\nmesh \"Bo \\\"dy\" " + kGuidText + "\nend\n"},
        {"carriage returns", "vmeta 1\r\nguid " + kGuidText + "\r\nsettings\r\na \"b\"\r\nend\r\n",
         head + "importer native 1\nsettings\na \"b\"\nend\n"},
        {"any order, blocks add up, later lines win",
         "settings\n# c\na \"1\"\n#\nend\ncolor red\nguid 00000000000000000000000000000001\nsettings\n"
         "a 2 3\nb\nc \"x\n end \nguid " +
             kGuidText + "\nimporter x\nvmeta 1",
         head + "importer x 1\nsettings\na \"1\"\na \"2\"\nb \"\"\nc \"x\"\nend\n"},
        {"empty", "", "Missing vmeta header."},
        {"no guid", "vmeta 1\n", "Missing vmeta guid."},
        {"no version", "guid " + kGuidText, "Missing vmeta header."},
        {"version 0", "vmeta 0\n", "Invalid vmeta version."},
        {"no number", "vmeta x\n", "Invalid vmeta version."},
        {"version 2", "vmeta 2\n", "vmeta version 2 is newer than this engine reads."},
        {"nil guid", "guid " + std::string(32, '0'), "Invalid vmeta guid."},
        {"short guid", "guid 12", "Invalid vmeta guid."},
        {"sub-asset without guid", head + "subassets\nmesh \"a\"\n", "Malformed sub-asset at line 4."},
        {"open quote", head + "subassets\nmesh \"a " + kGuidText, "Malformed sub-asset at line 4."},
        {"kind", head + "\nsubassets\nunknown \"a\" " + kGuidText, "Invalid sub-asset at line 5."},
        {"sub-asset guid", head + "subassets\nmesh \"a\" 12", "Invalid sub-asset at line 4."},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        std::string error;
        const std::optional<AssetSidecar> sidecar = ParseSidecar(row.text, &error);
        EXPECT_EQ(sidecar ? SerializeSidecar(*sidecar) : error, row.result);
    }
}

TEST(AssetSidecar, NamesAndDefaults)
{
    EXPECT_EQ(SidecarPath("a/Hero.fbx"), "a/Hero.fbx.vmeta");
    EXPECT_EQ(AssetPathOfSidecar("a/Hero.fbx.VMETA"), "a/Hero.fbx");
    EXPECT_EQ(AssetPathOfSidecar("a/Hero.vmeta"), "");
    const struct
    {
        const char* path;
        const char* text;
    } rows[] = {
        {"a.PNG", "texture 1\nsettings\nencoding \"auto\"\nmax_size \"0\"\nend\n"},
        {"a.GLB", "model 1\nsettings\nend\n"},
        {"a.obj", "model 1\nsettings\nend\n"},
        {"a.vmesh", "native 1\nsettings\nend\n"},
        {"a.wav", "audio 1\nsettings\nend\n"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(SerializeSidecar(MakeDefaultSidecar(KindFromExtension(row.path), row.path, kGuid)),
                  "vmeta 1\nguid " + kGuidText + "\nimporter " + row.text);
    }
    AssetSidecar sidecar = MakeDefaultSidecar(AssetKind::Texture, "a.png", kGuid);
    EXPECT_FALSE(SetSidecarSetting(sidecar, "max_size", "0"));
    EXPECT_TRUE(SetSidecarSetting(sidecar, "max_size", "512"));
    EXPECT_TRUE(SetSidecarSetting(sidecar, "srgb", ""));
    EXPECT_EQ(sidecar.settings, (std::vector<std::pair<std::string, std::string>>{
                                    {"encoding", "auto"}, {"max_size", "512"}, {"srgb", ""}}));
}

TEST(AssetSidecar, AWriteReplacesTheFileWholeOrLeavesIt)
{
    const TestFolder folder;
    const fs::path path = folder / "a.png.vmeta";
    AssetSidecar sidecar = MakeDefaultSidecar(AssetKind::Texture, "a.png", kGuid);
    ASSERT_TRUE(WriteSidecar(path, sidecar));
    const auto modified = fs::last_write_time(path) - std::chrono::hours(1);
    fs::last_write_time(path, modified);
    EXPECT_TRUE(WriteSidecar(path, sidecar));
    EXPECT_EQ(fs::last_write_time(path), modified);

    const std::string before = folder.Read("a.png.vmeta");
    const auto refused = [&](const AssetSidecar& wanted)
    {
        std::string error;
        EXPECT_FALSE(WriteSidecar(path, wanted, &error));
        EXPECT_EQ(folder.Read("a.png.vmeta"), before);
        EXPECT_EQ(folder.List(), "a.png.vmeta");
        return error;
    };
    for (const auto& [key, value] : std::vector<std::pair<std::string, std::string>>{
             {"k", "two\nlines"}, {"two words", ""}, {"end", ""}, {"", "x"}, {"#k", ""}})
    {
        AssetSidecar odd = sidecar;
        odd.settings = {{key, value}};
        EXPECT_EQ(refused(odd), "Cannot write sidecar.") << key;
    }
    SetSidecarSetting(sidecar, "k", "\"\\ x");
    Platform::FileSystemCalls calls = Platform::ActiveFileSystemCalls();
    calls.rename = [](const char*, const char*)
    {
        errno = EACCES;
        return -1;
    };
    const Platform::FileSystemCalls* const real = Platform::ReplaceFileSystemCalls(&calls);
    EXPECT_EQ(refused(sidecar), "Failed to replace file: Permission denied");
    calls.write = [](int, const void*, std::size_t) -> ssize_t
    {
        errno = ENOSPC;
        return -1;
    };
    EXPECT_EQ(refused(sidecar), "Failed while writing sidecar.");
    Platform::ReplaceFileSystemCalls(real);

    EXPECT_TRUE(WriteSidecar(path, sidecar));
    EXPECT_EQ(ReadSidecar(path), sidecar);
    std::string error;
    EXPECT_FALSE(WriteSidecar(folder / "none/a.vmeta", sidecar, &error));
    EXPECT_EQ(error, "Cannot write sidecar.");
    EXPECT_FALSE(ReadSidecar(folder / "none", &error));
    EXPECT_EQ(error, "Cannot open sidecar.");
    EXPECT_FALSE(ReadSidecar("/proc/self/mem", &error));
    EXPECT_EQ(error, "Failed while reading sidecar.");
}

TEST(AssetSidecar, OnlyARegularFileOfSomeSizeIsReadAndOnlyItsOwnPlaceWritten)
{
    const TestFolder folder;
    AssetSidecar sidecar = MakeDefaultSidecar(AssetKind::Material, "a.vmat", {0, 7});
    ASSERT_TRUE(WriteSidecar(folder / "good", sidecar));
    fs::create_symlink("good", folder / "link");
    fs::create_symlink("none", folder / "dangling");
    fs::create_symlink("/dev/zero", folder / "endless");
    fs::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    folder.Write("large", "");
    fs::resize_file(folder / "large", kMaxSidecarSize + 1);
    EXPECT_EQ(ReadSidecar(folder / "link"), sidecar);
    EXPECT_TRUE(WriteSidecar(folder / "link", sidecar)); // as it is
    const struct
    {
        const char* name;
        const char* error;
        const char* fault;
    } rows[] = {
        {"dangling", "Cannot open sidecar.", "No such file or directory"},
        {"endless", "The sidecar is not a regular file.", "not a regular file"},
        {"folder", "The sidecar is not a regular file.", "not a regular file"},
        {"fifo", "The sidecar is not a regular file.", "not a regular file"},
        {"large", "The sidecar is larger than 67108864 bytes.", ""},
        {"none", "Cannot open sidecar.", ""},
    };
    for (const auto& row : rows)
    {
        const SidecarReading reading = ReadSidecarFile(folder / row.name);
        EXPECT_EQ(reading.error + ", " + reading.fault, row.error + std::string(", ") + row.fault);
    }
    SetSidecarSetting(sidecar, "k", "v");
    const std::string before = folder.List();
    for (const char* const name : {"link", "dangling", "endless", "folder", "fifo"})
    {
        std::string error;
        EXPECT_FALSE(WriteSidecar(folder / name, sidecar, &error));
        EXPECT_EQ(error, "The sidecar is not a regular file.") << name;
    }
    EXPECT_EQ(folder.List(), before);
}

TEST(AssetSidecar, FollowsItsAsset)
{
    const TestFolder folder;
    folder.Write("a.fbx", "model");
    folder.Write("a.fbx.vmeta", "meta");
    folder.Write("a.fbx.materials/m.vmatdata", "");
    EXPECT_EQ(ExistingSidecars(folder / "a.fbx"),
              (std::vector<fs::path>{folder / "a.fbx.vmeta", folder / "a.fbx.materials"}));
    EXPECT_TRUE(RenameAssetWithSidecars(folder / "a.fbx", folder / "b.fbx"));
    EXPECT_EQ(folder.List(), "b.fbx b.fbx.materials b.fbx.vmeta");

    folder.Write("c.fbx", "other");
    std::string error;
    EXPECT_FALSE(RenameAssetWithSidecars(folder / "b.fbx", folder / "c.fbx", &error));
    EXPECT_EQ(error, "File exists");
    folder.Write("c.fbx.vmeta", "taken");
    EXPECT_FALSE(MoveSidecars(folder / "b.fbx", folder / "c.fbx", &error));
    EXPECT_EQ(error, "Sidecar already exists: " + (folder / "c.fbx.vmeta").string());
    EXPECT_EQ(folder.List(), "b.fbx b.fbx.vmeta c.fbx c.fbx.materials c.fbx.vmeta");
    EXPECT_TRUE(MoveSidecars(folder / "b.fbx", folder / "b.fbx", &error));
}

} // namespace
} // namespace Vornu::Assets
