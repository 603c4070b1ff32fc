#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Vornu::Bench
{
namespace
{

namespace fs = std::filesystem;

void Require(bool success, const std::string& what)
{
    if (!success)
    {
        throw std::runtime_error("can't " + what);
    }
}

class Descriptor
{
public:
    Descriptor(const std::string& path, int flags) : number_(::open(path.c_str(), flags | O_CLOEXEC, 0600))
    {
        Require(number_ >= 0, "open " + path);
    }
    ~Descriptor() { ::close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return number_; }

    std::string Read() const
    {
        struct stat status = {};
        Require(::fstat(number_, &status) == 0, "examine a file");
        std::string text(static_cast<std::size_t>(status.st_size), '\0');
        Require(::read(number_, text.data(), text.size()) == status.st_size, "read a file");
        return text;
    }

    void Write(const std::string& text) const
    {
        Require(::write(number_, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                    ::fchmod(number_, 0644) == 0,
                "write a file");
        Flush();
    }

    void Flush() const { Require(::fsync(number_) == 0, "flush a file"); }

private:
    int number_;
};

void FlushFolder(const std::string& folder)
{
    Descriptor(folder, O_RDONLY | O_DIRECTORY).Flush();
}

/// Copies the file beside itself, through a file that has a name only once it is complete.
void BackUp(const std::string& folder, const std::string& path, const std::string& backup)
{
    const Descriptor copy(folder, O_WRONLY | O_TMPFILE);
    copy.Write(Descriptor(path, O_RDONLY).Read());
    const std::string link = "/proc/self/fd/" + std::to_string(copy.Number());
    Require(::linkat(AT_FDCWD, link.c_str(), AT_FDCWD, backup.c_str(), AT_SYMLINK_FOLLOW) == 0,
            "name a backup");
    FlushFolder(folder);
}

void Replace(const std::string& folder, const std::string& path, const std::string& text)
{
    const std::string temporary = path + ".tmp";
    Descriptor(temporary, O_WRONLY | O_CREAT | O_EXCL).Write(text);
    Require(::rename(temporary.c_str(), path.c_str()) == 0, "rename a file");
    FlushFolder(folder);
}

/// The nanoseconds that it takes to back up and replace every file of the folder that `results` has as well.
long long ReplaceAll(const std::string& folder, const fs::path& results, const std::string& backupSuffix)
{
    std::vector<std::pair<std::string, std::string>> files; // path and new text
    for (const fs::directory_entry& entry : fs::directory_iterator(results))
    {
        if (entry.path().extension() == ".vscene")
        {
            std::ifstream file(entry.path(), std::ios::binary);
            files.emplace_back(folder + "/" + entry.path().filename().native(),
                               std::string(std::istreambuf_iterator<char>(file), {}));
        }
    }
    const auto start = std::chrono::steady_clock::now();
    for (const auto& [path, text] : files)
    {
        BackUp(folder, path, path + backupSuffix);
        Replace(folder, path, text);
    }
    return std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
}

} // namespace
} // namespace Vornu::Bench

/// Does to a folder of files what a conversion does to them on the disk, and prints the nanoseconds.
int main(int argc, char** argv)
{
    if (argc != 4)
    {
        std::fprintf(stderr, "Usage: write_bench <folder> <folder of results> <suffix of backups>\n");
        return 2;
    }
    std::printf("%lld\n", Vornu::Bench::ReplaceAll(argv[1], argv[2], argv[3]));
    return 0;
}
