#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

struct __dirstream;

namespace Vornu::Platform
{

/// Reads the names in one folder, in the order in which the system gives them. Unlike the iterators of the
/// standard library it reports a lack of memory as an exception and doesn't end the program.
class FolderReader
{
public:
    struct Entry
    {
        std::string_view name; // valid until the next one is read
        /// Links aren't followed; `none` where the system doesn't tell the type with the name.
        std::filesystem::file_type type = std::filesystem::file_type::none;
    };

    /// 0 or the error number.
    int Open(const std::filesystem::path& folder) noexcept;

    /// False behind the last entry, without `error`, and when the system fails to tell, with it.
    bool Next(Entry& entry, int& error) noexcept;

private:
    struct Closer
    {
        void operator()(__dirstream* stream) const noexcept;
    };
    std::unique_ptr<__dirstream, Closer> stream_;
};

} // namespace Vornu::Platform
