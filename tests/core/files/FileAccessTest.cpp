#include "engine/core/files/FileAccess.h"

#include "engine/core/files/Backup.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/files/TemporaryFile.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

using Test::TestFolder;
using Test::Text;

constexpr char kAccess[] = "system.posix_acl_access";
constexpr char kDefault[] = "system.posix_acl_default";
constexpr uid_t kSomeUser = 54321;

/// An ACL in the system's form: the owner's bits, those of `kSomeUser`, the group, the mask and all others.
std::string Acl(int owner, int user, int group, int mask, int other)
{
    std::string acl("\2\0\0\0", 4);
    const auto add = [&acl](int tag, int bits, std::uint32_t id)
    {
        for (const std::uint32_t value : {static_cast<std::uint32_t>(tag | bits << 16), id})
        {
            acl.append(reinterpret_cast<const char*>(&value), sizeof value);
        }
    };
    constexpr std::uint32_t kNobody = 0xffffffff;
    add(0x01, owner, kNobody);
    add(0x02, user, kSomeUser);
    add(0x04, group, kNobody);
    add(0x10, mask, kNobody);
    add(0x20, other, kNobody);
    return acl;
}

bool Set(const fs::path& path, const char* name, const std::string& value)
{
    return ::setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

std::string Get(const fs::path& path, const char* name)
{
    char value[256];
    const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
    return size < 0 ? "none" : std::string(value, static_cast<std::size_t>(size));
}

mode_t ModeOf(const fs::path& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777u : 0;
}

FileResult Replace(const fs::path& target, const AccessLimit& limit = {})
{
    TemporaryFile file(target.native() + ".tmp", target, limit);
    // From the first byte on nobody comes in who is kept out of the target, whatever the folder grants.
    EXPECT_EQ(ModeOf(file.Path()) & 077u, 0u);
    file.Write("new");
    if (!file.Close())
    {
        return {FileResult::kSystemFailure, file.ErrorText()};
    }
    return ReplaceFileAtomically(file.Path(), target, true);
}

/// A folder that grants `kSomeUser` and the group each new file; empty where the file system has no ACLs.
class FileAccessOf : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!Set(folder_.Path(), kDefault, Acl(7, 7, 5, 7, 5)))
        {
            GTEST_SKIP() << "the temporary folder has no ACLs";
        }
    }

    TestFolder folder_;
    const fs::path target_ = folder_ / "a";
    const fs::path copy_ = folder_ / "b";
};

TEST_F(FileAccessOf, AReplacementAndACopyHaveWhatTheOriginalHas)
{
    const struct
    {
        std::string acl; // empty: none
        mode_t mode;
    } rows[] = {
        {Acl(6, 4, 0, 4, 0), 0640}, // the group itself stays out, although its bits are the mask's
        {Acl(6, 0, 4, 4, 4), 0644}, {"", 0640}, {"", 0400}, {"", 02755},
    };
    for (const auto& row : rows)
    {
        fs::remove(target_);
        fs::remove(copy_);
        folder_.Write("a", "old");
        ::removexattr(target_.c_str(), kAccess);
        ASSERT_EQ(::chmod(target_.c_str(), row.mode), 0);
        ASSERT_TRUE(row.acl.empty() || Set(target_, kAccess, row.acl));
        Set(target_, "user.note", "kept"); // some file systems have ACLs alone
        const std::string note = Get(target_, "user.note");
        EXPECT_EQ(Text(CopyFileExclusive(target_, copy_)), "0 ");
        const FileResult replaced = Replace(target_);
        EXPECT_EQ(Text(replaced), "0 ");
        EXPECT_FALSE(replaced.narrowed);
        EXPECT_EQ(folder_.Read("a"), "new");
        for (const fs::path& path : {target_, copy_})
        {
            EXPECT_EQ(Get(path, kAccess), row.acl.empty() ? "none" : row.acl) << row.mode;
            EXPECT_EQ(ModeOf(path), row.mode);
            EXPECT_EQ(Get(path, "user.note"), note);
        }
    }
}

TEST_F(FileAccessOf, WithoutAclsTheNarrowerBitsStay)
{
    FileSystemCalls calls = ActiveFileSystemCalls();
    calls.fsetxattr = [](int, const char*, const void*, std::size_t)
    {
        errno = ENOTSUP;
        return -1;
    };
    const struct
    {
        std::string acl;
        mode_t mode;
    } rows[] = {
        {Acl(6, 6, 0, 6, 0), 0600},
        {Acl(6, 4, 6, 6, 4), 0644},
        {Acl(6, 0, 6, 6, 4), 0600}, // the user is kept out and might be in the group
        {Acl(6, 7, 6, 4, 0), 0640},
    };
    for (const auto& row : rows)
    {
        fs::remove(target_);
        fs::remove(copy_);
        folder_.Write("a", "old");
        ASSERT_TRUE(Set(target_, kAccess, row.acl));
        const FileSystemCalls* const real = ReplaceFileSystemCalls(&calls);
        const FileResult copied = CopyFileExclusive(target_, copy_);
        const FileResult replaced = Replace(target_);
        ReplaceFileSystemCalls(real);
        EXPECT_TRUE(copied.Succeeded() && copied.narrowed);
        EXPECT_TRUE(replaced.Succeeded() && replaced.narrowed);
        for (const fs::path& path : {target_, copy_})
        {
            EXPECT_EQ(ModeOf(path), row.mode);
            EXPECT_EQ(Get(path, kAccess), "none");
        }
    }
}

TEST_F(FileAccessOf, ANewFileGetsWhatTheFolderGivesWithinTheLimit)
{
    EXPECT_EQ(Text(Replace(target_)), "0 ");
    EXPECT_EQ(ModeOf(target_), 0664u); // the mask's bits are the group's
    EXPECT_EQ(Get(target_, kAccess), Acl(6, 7, 5, 6, 4));
    fs::remove(target_);
    EXPECT_EQ(Text(Replace(target_, {0600, {}})), "0 ");
    EXPECT_EQ(ModeOf(target_), 0600u);

    ::removexattr(folder_.Path().c_str(), kDefault);
    const mode_t mask = ::umask(027);
    for (const auto& [limit, mode] : {std::pair(AccessLimit{}, 0640u),
                                      {AccessLimit{0604, {}}, 0600u},
                                      {AccessLimit{0664, ::getegid()}, 0640u},
                                      {AccessLimit{0660, ::getegid() + 1}, 0600u}})
    {
        fs::remove(target_);
        EXPECT_EQ(Text(Replace(target_, limit)), "0 ");
        EXPECT_EQ(ModeOf(target_), mode);
    }
    ::umask(mask);
}

TEST(FileAccess, ForAnotherGroupTheBitsBecomeNarrower)
{
    if (::geteuid() != 0)
    {
        GTEST_SKIP() << "only the superuser can become another user";
    }
    const TestFolder folder;
    fs::permissions(folder.Path(), fs::perms::all);
    for (const auto& [before, after] : {std::pair(0664u, 0644u), {0640u, 0600u}, {0604u, 0600u}})
    {
        ASSERT_EQ(::chmod(folder.Write("a", "old").c_str(), before), 0);
        const pid_t child = ::fork();
        if (child == 0)
        {
            const bool changed = ::setgid(65534) == 0 && ::setuid(65534) == 0;
            const FileResult result = Replace(folder / "a");
            ::_exit(changed && result.Succeeded() && result.narrowed ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(folder.Read("a"), "new");
        EXPECT_EQ(ModeOf(folder / "a"), after);
        fs::remove(folder / "a");
    }
}

} // namespace
} // namespace Vornu::Platform
