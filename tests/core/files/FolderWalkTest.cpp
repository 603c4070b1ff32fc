#include "engine/core/files/FolderWalk.h"

#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

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
    const FileResult walk =
        WalkFolder(folder.Path(),
                   [&](const FolderEntry& entry)
                   {
                       const std::optional<FileStamp> stamp = entry.ReadStamp();
                       EXPECT_EQ(stamp, ReadFileStamp(entry.Path())) << entry.Path();
                       EXPECT_EQ(entry.Name(), fs::path(entry.Path()).filename().native());
                       found.push_back(fs::path(entry.Path()).lexically_relative(folder.Path()).native() +
                                       (entry.IsFolder() ? " folder" : "") + (entry.IsLink() ? " link" : "") +
                                       (entry.IsRegularFile() ? " file " + std::to_string(stamp->size) : ""));
                   });
    EXPECT_EQ(walk, FileResult());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, (std::vector<std::string>{"a file 5", "deep folder", "deep/er folder",
                                               "deep/er/b file 0", "deep/link link file 5", "deep/up link",
                                               "empty folder", "gone link", "pipe"}));
}

TEST(FolderWalk, EndsAtWhatItCantRead)
{
    const TestFolder folder;
    folder.Write("sub/a", "");
    std::vector<std::string> found;
    const FileResult walk = WalkFolder(folder.Path(),
                                       [&](const FolderEntry& entry)
                                       {
                                           found.emplace_back(entry.Name());
                                           fs::remove_all(folder / "sub");
                                       });
    EXPECT_EQ(walk.message, (folder / "sub").native() + ": No such file or directory");
    EXPECT_EQ(found, std::vector<std::string>{"sub"});
    EXPECT_EQ(WalkFolder(folder / "none", [](const FolderEntry&) {}).code, FileResult::kSystemFailure);
}

} // namespace
} // namespace Vornu::Platform
