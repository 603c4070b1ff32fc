#include "engine/core/files/FolderWalk.h"

#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <climits>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

using Test::DeepFolder;
using Test::TestFolder;

TEST(FolderWalk, VisitsEverythingBelowAndFollowsNoLink)
{
    const TestFolder folder;
    folder.Write("a", "12345");
    folder.Write("deep/er/b", "");
    fs::create_directory(folder / "empty");
    fs::create_directory_symlink(folder.Path(), folder / "deep/up");
    fs::create_symlink(folder / "a", folder / "deep/link");
    fs::create_symlink("nowhere", folder / "gone");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);

    std::vector<std::string> found;
    std::vector<std::string> faults;
    WalkFolder(
        folder.Path(),
        [&](const FolderEntry& entry)
        {
            const std::optional<FileStamp> stamp = entry.ReadStamp();
            EXPECT_EQ(stamp, ReadFileStamp(entry.Path())) << entry.Path();
            EXPECT_EQ(entry.Name(), fs::path(entry.Path()).filename().native());
            int error = 0;
            const bool isFile = entry.IsRegularFile(error);
            EXPECT_EQ(error, entry.Name() == "gone" ? ENOENT : 0);
            found.push_back(fs::path(entry.Path()).lexically_relative(folder.Path()).native() +
                            (entry.IsFolder() ? " folder" : "") + (entry.IsLink() ? " link" : "") +
                            (isFile ? " file " + std::to_string(stamp->size) : ""));
        },
        [&](const std::string& path, int) { faults.push_back(path); });
    EXPECT_EQ(faults, std::vector<std::string>());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, (std::vector<std::string>{"a file 5", "deep folder", "deep/er folder",
                                               "deep/er/b file 0", "deep/link link file 5", "deep/up link",
                                               "empty folder", "gone link", "pipe"}));
}

TEST(FolderWalk, GoesOnBehindWhatItCantRead)
{
    const TestFolder folder;
    const DeepFolder deep(folder.Path()); // its lower half lies beyond the system's limit
    for (const char* const name : {"a/1", "gone/2", "z/3"})
    {
        folder.Write(name, "");
    }
    std::string found;
    std::vector<std::string> faults;
    WalkFolder(
        folder.Path(),
        [&](const FolderEntry& entry)
        {
            fs::remove_all(folder / "gone");
            found += entry.Name().size() == 1 && !entry.IsFolder() ? entry.Name() : "";
        },
        [&](const std::string& path, int error)
        { faults.push_back(std::to_string(error) + " " + std::to_string(path.size())); });
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, "13");
    std::size_t length = folder.Path().native().size();
    while (length < PATH_MAX)
    {
        length += 1 + DeepFolder::kNameLength;
    }
    EXPECT_EQ(faults, std::vector<std::string>{std::to_string(ENAMETOOLONG) + " " + std::to_string(length)});

    faults.clear();
    WalkFolder(
        folder / "none", [](const FolderEntry&) {},
        [&](const std::string& path, int error) { faults.push_back(path + std::to_string(error)); });
    EXPECT_EQ(faults, std::vector<std::string>{(folder / "none").native() + std::to_string(ENOENT)});
}

} // namespace
} // namespace Vornu::Platform
