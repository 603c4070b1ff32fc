#include "engine/core/files/FileAccess.h"

#include "engine/core/files/FileSystemCalls.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Vornu::Platform
{
namespace
{

constexpr const char* kAccessAcl = "system.posix_acl_access";
constexpr const char* kDefaultAcl = "system.posix_acl_default";
constexpr std::string_view kUserPrefix = "user.";
constexpr mode_t kModeBits = 07777;
constexpr mode_t kPlainBits = 0777;

/// Errors by which file systems say that they have no such attribute.
bool MeansNone(int error)
{
    return error == ENODATA || error == ENOTSUP || error == ENOSYS;
}

/// Errors that say that it isn't for this user.
bool MeansForbidden(int error)
{
    return error == EPERM || error == EACCES;
}

/// A file by its descriptor or, where it isn't open, by its path.
struct Place
{
    int descriptor = -1;
    const char* path = nullptr;

    int Status(struct stat& status) const
    {
        return (path == nullptr ? ::fstat(descriptor, &status) : ::stat(path, &status)) == 0 ? 0 : errno;
    }
    ssize_t Get(const char* name, void* value, std::size_t size) const
    {
        return path == nullptr ? ::fgetxattr(descriptor, name, value, size)
                               : ::getxattr(path, name, value, size);
    }
    ssize_t List(char* names, std::size_t size) const
    {
        return path == nullptr ? ::flistxattr(descriptor, names, size) : ::listxattr(path, names, size);
    }
};

/// Fills `out` by a call that takes a buffer and its size; what is larger than the buffer is asked for anew.
template<class Call>
int Fetch(const Call& call, std::string& out)
{
    constexpr std::size_t kFirstSize = 256;
    out.resize(kFirstSize);
    for (;;)
    {
        const ssize_t size = call(out.data(), out.size());
        if (size >= 0)
        {
            out.resize(static_cast<std::size_t>(size));
            return 0;
        }
        if (errno != ERANGE)
        {
            const int error = errno;
            out.clear();
            return MeansNone(error) ? 0 : error;
        }
        out.resize(out.size() * 4);
    }
}

int Fetch(const Place& place, const char* name, std::string& out)
{
    return Fetch([&](char* value, std::size_t size) { return place.Get(name, value, size); }, out);
}

int ReadAttributes(const Place& place, FileAccess& out)
{
    std::string names;
    int error = Fetch([&](char* list, std::size_t size) { return place.List(list, size); }, names);
    for (std::size_t at = 0; at < names.size() && error == 0; at += std::strlen(&names[at]) + 1)
    {
        const std::string name = &names[at];
        if (name.starts_with(kUserPrefix))
        {
            std::string value;
            error = Fetch(place, name.c_str(), value);
            if (MeansForbidden(error))
            {
                out.isPartial = true;
                error = 0;
                continue;
            }
            out.attributes.emplace_back(name, std::move(value));
        }
    }
    return error;
}

int Read(const Place& place, FileAccess& out)
{
    struct stat status = {};
    if (const int error = place.Status(status))
    {
        return error;
    }
    out.mode = status.st_mode & kModeBits;
    out.owner = status.st_uid;
    out.group = status.st_gid;
    const int error = Fetch(place, kAccessAcl, out.acl);
    return error != 0 ? error : ReadAttributes(place, out);
}

/// One entry of an ACL as the system hands it out, little-endian, behind a version of four bytes.
struct AclEntry
{
    static constexpr std::size_t kHeadSize = 4;
    static constexpr std::size_t kSize = 8;
    enum Tag : std::uint16_t
    {
        Owner = 0x01,
        User = 0x02,
        OwningGroup = 0x04,
        Group = 0x08,
        Mask = 0x10,
        Other = 0x20,
    };

    std::uint16_t tag = 0;
    mode_t bits = 0; // 0 to 7
};

/// Calls `visit` with each entry.
template<class Visit>
void ForEachEntry(std::string_view acl, const Visit& visit)
{
    const auto number = [acl](std::size_t at)
    {
        const auto low = static_cast<unsigned char>(acl[at]);
        const auto high = static_cast<unsigned char>(acl[at + 1]);
        return static_cast<std::uint16_t>(low | high << 8);
    };
    for (std::size_t at = AclEntry::kHeadSize; at + AclEntry::kSize <= acl.size(); at += AclEntry::kSize)
    {
        visit(AclEntry{number(at), static_cast<mode_t>(number(at + 2) & 7u)});
    }
}

/// The permission bits alone that let nobody in whom the ACL, or the bits, keep out. An entry may as well
/// take something from a user whom a wider one would let in, so the narrowest decides.
mode_t BitsWithoutAcl(const FileAccess& model)
{
    mode_t group = model.mode >> 3 & 7u; // the mask, where there is an ACL
    mode_t other = model.mode & 7u;
    ForEachEntry(model.acl,
                 [&](const AclEntry& entry)
                 {
                     const bool isNamed = entry.tag == AclEntry::User || entry.tag == AclEntry::Group;
                     group &= isNamed || entry.tag == AclEntry::OwningGroup ? entry.bits : 7u;
                     other &= isNamed ? entry.bits & model.mode >> 3 : 7u;
                 });
    return (model.mode & ~077u) | group << 3 | other;
}

/// The same for a file of another group: whom the one group kept out must not come in as anybody else.
mode_t BitsForAnyGroup(mode_t bits)
{
    const mode_t common = (bits >> 3) & bits & 7u;
    return (bits & ~077u) | common << 3 | common;
}

/// `given` tells whether the user may.
int GiveTo(const FileDescriptor& file, uid_t owner, gid_t group, bool& given)
{
    given = ::fchown(file.Get(), owner, group) == 0;
    // The last one means an owner that this system doesn't know.
    return given || MeansForbidden(errno) || MeansNone(errno) || errno == EINVAL ? 0 : errno;
}

int ApplyAttributes(const FileDescriptor& file, const FileAccess& model, bool& narrowed)
{
    for (const auto& [name, value] : model.attributes)
    {
        if (ActiveFileSystemCalls().fsetxattr(file.Get(), name.c_str(), value.data(), value.size()) != 0)
        {
            if (!MeansNone(errno) && !MeansForbidden(errno))
            {
                return errno;
            }
            narrowed = true;
        }
    }
    return 0;
}

/// Sets the ACL, or takes away one that the folder has given the file. `carried` tells whether it was set.
int ApplyAcl(const FileDescriptor& file, const std::string& acl, bool& carried)
{
    carried = !acl.empty() &&
              ActiveFileSystemCalls().fsetxattr(file.Get(), kAccessAcl, acl.data(), acl.size()) == 0;
    if (carried || (!acl.empty() && !MeansNone(errno) && !MeansForbidden(errno)))
    {
        return carried ? 0 : errno;
    }
    return ::fremovexattr(file.Get(), kAccessAcl) == 0 || MeansNone(errno) ? 0 : errno;
}

int SetMode(const FileDescriptor& file, mode_t mode)
{
    struct stat status = {};
    if (::fstat(file.Get(), &status) != 0)
    {
        return errno;
    }
    return (status.st_mode & kModeBits) == mode || ::fchmod(file.Get(), mode) == 0 ? 0 : errno;
}

/// What a new file of the folder has before any mask of the caller's own.
int DefaultMode(const std::filesystem::path& folder, mode_t& mode)
{
    std::string acl;
    const std::string& name = folder.native();
    if (const int error = Fetch(Place{-1, name.c_str()}, kDefaultAcl, acl))
    {
        return error;
    }
    if (acl.empty())
    {
        static std::mutex mutex; // the mask can only be read by setting another
        const std::lock_guard lock(mutex);
        const mode_t mask = ::umask(077);
        ::umask(mask);
        mode = 0666 & ~mask;
        return 0;
    }
    mode_t owner = 0;
    mode_t group = 0;
    mode_t other = 0;
    bool hasMask = false;
    ForEachEntry(acl,
                 [&](const AclEntry& entry)
                 {
                     owner = entry.tag == AclEntry::Owner ? entry.bits : owner;
                     other = entry.tag == AclEntry::Other ? entry.bits : other;
                     const bool isMask = entry.tag == AclEntry::Mask;
                     group = isMask || (entry.tag == AclEntry::OwningGroup && !hasMask) ? entry.bits : group;
                     hasMask |= isMask;
                 });
    mode = (owner << 6 | group << 3 | other) & 0666u;
    return 0;
}

} // namespace

int ReadFileAccess(const FileDescriptor& file, FileAccess& out)
{
    return Read({file.Get(), nullptr}, out);
}

int ReadFileAccess(const std::filesystem::path& path, FileAccess& out)
{
    return Read({-1, path.c_str()}, out);
}

int ApplyFileAccess(const FileDescriptor& file, const FileAccess& model, bool& narrowed)
{
    struct stat own = {};
    if (::fstat(file.Get(), &own) != 0)
    {
        return errno;
    }
    if (const int error = ApplyAttributes(file, model, narrowed))
    {
        return error;
    }
    narrowed = narrowed || model.isPartial;
    bool sameOwner = own.st_uid == model.owner && own.st_gid == model.group;
    bool sameGroup = own.st_gid == model.group;
    if (!sameOwner)
    {
        if (const int error = GiveTo(file, model.owner, model.group, sameOwner))
        {
            return error;
        }
        sameGroup = sameGroup || sameOwner;
    }
    if (!sameGroup)
    {
        // Only the superuser gives files away, but an owner may hand a file to a group of its own.
        if (const int error = GiveTo(file, static_cast<uid_t>(-1), model.group, sameGroup))
        {
            return error;
        }
    }
    bool carried = false;
    if (const int error = ApplyAcl(file, sameGroup ? model.acl : std::string(), carried))
    {
        return error;
    }
    // The set-id bits mean the owner they were given for, and no other.
    mode_t mode = model.mode & (sameOwner ? kModeBits : kPlainBits);
    if (!carried)
    {
        const mode_t bits = BitsWithoutAcl(model);
        mode &= ~kPlainBits | (sameGroup ? bits : BitsForAnyGroup(bits));
        narrowed = narrowed || ((mode ^ model.mode) & kPlainBits) != 0 || !model.acl.empty();
    }
    return SetMode(file, mode);
}

mode_t PrivateMode(mode_t mode) noexcept
{
    // Whoever writes a copy could read the original.
    return (mode & 0600) | 0400;
}

AccessLimit LimitOf(const FileAccess& model)
{
    return {BitsWithoutAcl(model) & 0666u, model.group};
}

int WidenNewFile(const FileDescriptor& file, const std::filesystem::path& folder, const AccessLimit& limit)
{
    struct stat own = {};
    mode_t mode = 0;
    if (::fstat(file.Get(), &own) != 0)
    {
        return errno;
    }
    if (const int error = DefaultMode(folder, mode))
    {
        return error;
    }
    const bool sameGroup = !limit.group || *limit.group == own.st_gid;
    mode &= sameGroup ? limit.mode : BitsForAnyGroup(limit.mode);
    // Bits that the file has already are the owner's.
    const int error = SetMode(file, mode | (own.st_mode & 0400u));
    // A file system without permission bits gives all files those that it was mounted with.
    return error == EPERM || MeansNone(error) ? 0 : error;
}

} // namespace Vornu::Platform
