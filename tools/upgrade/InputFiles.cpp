#include "tools/upgrade/InputFiles.h"

#include "engine/core/system/System.h"

#include <system_error>

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
            fs::directory_iterator& iterator = open_.back();
            if (iterator == fs::directory_iterator())
            {
                open_.pop_back();
                continue;
            }
            const fs::directory_entry entry = *iterator;
            Advance(iterator, entry.path().parent_path());
            Visit(entry);
        }
    }

private:
    void Visit(const fs::directory_entry& entry)
    {
        std::error_code ignored;
        const bool isLink = entry.is_symlink(ignored);
        try
        {
            // A walk tells most types without asking the system again; a link's target must be asked for.
            const fs::file_status status =
                isLink ? Platform::EntryStatus(entry) : fs::file_status(TypeOf(entry));
            if (fs::is_regular_file(status) && IsSceneFile(entry.path()))
            {
                result_.files.push_back(entry.path());
            }
            else if (!isLink && fs::is_directory(status))
            {
                Open(entry.path());
            }
        }
        catch (const fs::filesystem_error& error)
        {
            result_.faults.emplace_back(error.what());
        }
    }

    static fs::file_type TypeOf(const fs::directory_entry& entry)
    {
        std::error_code error;
        if (entry.is_regular_file(error))
        {
            return fs::file_type::regular;
        }
        if (!error && entry.is_directory(error))
        {
            return fs::file_type::directory;
        }
        return error ? Platform::EntryStatus(entry).type() : fs::file_type::unknown;
    }

    void Open(const fs::path& folder)
    {
        std::error_code error;
        fs::directory_iterator iterator;
        do
        {
            iterator = fs::directory_iterator(folder, error);
        } while (error == std::errc::interrupted);
        if (error)
        {
            Report(folder, error);
            return;
        }
        open_.push_back(std::move(iterator));
    }

    void Advance(fs::directory_iterator& iterator, const fs::path& folder)
    {
        std::error_code error;
        iterator.increment(error);
        if (error)
        {
            Report(folder, error);
            iterator = fs::directory_iterator();
        }
    }

    void Report(const fs::path& path, const std::error_code& error)
    {
        result_.faults.push_back("recursive_directory_iterator::operator++: " +
                                 Platform::SystemErrorText(error) + ": \"" + path.native() + "\"");
    }

    InputFiles& result_;
    std::vector<fs::directory_iterator> open_;
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
