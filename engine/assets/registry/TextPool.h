#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace Vornu::Assets
{

/// Keeps texts for tables that share them, without the cost of a string each. They stay where they are until
/// the pool is cleared or goes.
class TextPool
{
public:
    std::string_view Keep(std::string_view text)
    {
        if (text.size() > left_)
        {
            left_ = std::max(kBlockSize, text.size());
            blocks_.push_back(std::make_unique_for_overwrite<char[]>(left_));
            next_ = blocks_.back().get();
        }
        char* const start = next_;
        std::copy(text.begin(), text.end(), start);
        next_ += text.size();
        left_ -= text.size();
        return {start, text.size()};
    }

    void Clear() { *this = TextPool(); }

private:
    static constexpr std::size_t kBlockSize = 65'536;

    std::vector<std::unique_ptr<char[]>> blocks_;
    char* next_ = nullptr;
    std::size_t left_ = 0;
};

} // namespace Vornu::Assets
