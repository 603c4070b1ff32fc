#pragma once

#include "engine/core/files/Files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Vornu::Test
{

/// A new empty folder that goes away with everything in it.
class TestFolder
{
public:
    TestFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "vornu-test-XXXXXX").string();
        path_ = std::filesystem::canonical(::mkdtemp(name.data()));
    }
    ~TestFolder() { std::filesystem::remove_all(path_); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

    std::filesystem::path Write(std::string_view name, std::string_view text) const
    {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << text;
        return path_ / name;
    }

    std::string Read(std::string_view name) const
    {
        const Platform::FileContents contents = Platform::ReadFileBinary(path_ / name);
        return contents.result.Succeeded() ? contents.bytes : "<" + contents.result.message + ">";
    }

    /// Names of the entries in order, with a blank between them.
    std::string List() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
        {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        std::string list;
        for (const std::string& name : names)
        {
            list += (list.empty() ? "" : " ") + name;
        }
        return list;
    }

private:
    std::filesystem::path path_;
};

/// Folders in each other, so deep that the system takes no path to the lower ones: a part of a tree that not
/// even root reads by its path.
class DeepFolder
{
public:
    static constexpr std::size_t kNameLength = 250;

    explicit DeepFolder(const std::filesystem::path& parent)
    {
        const std::string name(kNameLength, 'd');
        int folder = ::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int depth = 0; depth < 20; ++depth)
        {
            ::mkdirat(folder, name.c_str(), 0755);
            const int next = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            ::close(std::exchange(folder, next));
        }
        ::close(folder);
    }
};

/// Sets or, without a value, removes an environment variable for the length of a scope.
class ScopedVariable
{
public:
    ScopedVariable(const char* name, std::optional<std::string> value) : name_(name)
    {
        const char* old = std::getenv(name);
        old_ = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
        Set(value);
    }
    ~ScopedVariable() { Set(old_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void Set(const std::optional<std::string>& value)
    {
        value ? ::setenv(name_, value->c_str(), 1) : ::unsetenv(name_);
    }

    const char* name_;
    std::optional<std::string> old_;
};

/// "<code> <message>" of any result with these two.
inline std::string Text(const Platform::FileResult& result)
{
    return std::to_string(result.code) + " " + result.message;
}

} // namespace Vornu::Test
