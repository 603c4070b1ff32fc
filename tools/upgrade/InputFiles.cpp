#include "tools/upgrade/InputFiles.h"

#include "engine/core/files/FolderReader.h"
#include "engine/core/system/System.h"

#include <system_error>
#include <utility>

namespace Vornu::Upgrade
{
namespace
{

namespace fs = std::filesystem;

/// Walks a directory tree in the order of a recursive iterator, parents before what they hold. Links to
/// directories are not followed. What can't be read is noted, and the walk goes on behind it.
class DirectoryWalk
{
public:
    explicit DirectoryWalk(InputFiles& result) : result_(result) {}

    void Run(const fs::path& root)
    {
        Open(root);
        while (!open_.empty())
        {
            Platform::FolderReader::Entry entry;
            int error = 0;
            if (open_.back().reader.Next(entry, error))
            {
                Visit(open_.back().path / entry.name, entry.type);
                continue;
            }
            if (error != 0)
            {
                Report(open_.back().path, error);
            }
            open_.pop_back();
        }
    }

private:
    struct Folder
    {
        fs::path path;
        Platform::FolderReader reader;
    };

    /// A walk tells most types without asking the system again; a link's target must be asked for.
    void Visit(const fs::path& path, fs::file_type type)
    {
        try
        {
            std::error_code ignored;
            type = type == fs::file_type::none ? fs::symlink_status(path, ignored).type() : type;
            const bool isLink = type == fs::file_type::symlink;
            if (isLink || type == fs::file_type::none)
            {
                type = Platform::EntryStatus(path).type();
            }
            if (type == fs::file_type::regular && IsSceneFile(path))
            {
                result_.files.push_back(path);
            }
            else if (!isLink && type == fs::file_type::directory)
            {
                Open(path);
            }
        }
        catch (const fs::filesystem_error& error)
        {
            result_.faults.emplace_back(error.what());
        }
    }

    void Open(const fs::path& path)
    {
        Folder folder{path, {}};
        if (const int error = folder.reader.Open(path))
        {
            Report(path, error);
            return;
        }
        open_.push_back(std::move(folder));
    }

    void Report(const fs::path& path, int error)
    {
        result_.faults.push_back("recursive_directory_iterator::operator++: " +
                                 Platform::SystemErrorText(error) + ": \"" + path.native() + "\"");
    }

    InputFiles& result_;
    std::vector<Folder> open_;
};

} // namespace

bool IsSceneFile(const std::filesystem::path& path)
{
    const std::filesystem::path extension = path.extension();
    return extension == ".vscene" || extension == ".vprefab";
}

InputFiles ExpandInputs(const std::vector<std::filesystem::path>& inputs)
{
    InputFiles result;
    for (const fs::path& input : inputs)
    {
        std::error_code error;
        const fs::file_status status = fs::status(input, error);
        if (fs::is_directory(status))
        {
            DirectoryWalk(result).Run(input);
        }
        else if (fs::is_regular_file(status))
        {
            result.files.push_back(input);
        }
        else
        {
            result.missing = input;
            result.files.clear();
            break;
        }
    }
    return result;
}

} // namespace Vornu::Upgrade
