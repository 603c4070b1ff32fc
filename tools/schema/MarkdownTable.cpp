#include "tools/schema/MarkdownTable.h"

#include <algorithm>
#include <cstddef>

namespace Vornu::Schema
{

std::string EscapeMarkdown(std::string_view text)
{
    constexpr std::string_view kMarkup = "\\`*_|<[&";
    std::string escaped;
    for (const char c : text)
    {
        if (kMarkup.find(c) != std::string_view::npos)
        {
            escaped += '\\';
        }
        escaped += c == '\n' ? ' ' : c;
    }
    return escaped;
}

std::string Code(std::string_view text)
{
    if (text.empty())
    {
        return {};
    }
    // A table ends a cell at a bar inside backticks, too.
    std::string code = "`";
    for (const char c : text)
    {
        code += c == '|' ? "\\|" : std::string(1, c);
    }
    return code + "`";
}

std::string MarkdownTable::Text() const
{
    if (rows_.empty())
    {
        return {};
    }
    std::vector<std::size_t> columns;
    for (std::size_t column = 0; column < headings_.size(); ++column)
    {
        if (std::any_of(rows_.begin(), rows_.end(), [&](const auto& row) { return !row[column].empty(); }))
        {
            columns.push_back(column);
        }
    }
    const auto line = [&](const std::vector<std::string>& cells)
    {
        std::string text = "|";
        for (const std::size_t column : columns)
        {
            text += (cells[column].empty() ? "" : " ") + cells[column] + " |";
        }
        return text + "\n";
    };
    std::string text = line(headings_) + "|";
    for (std::size_t i = 0; i < columns.size(); ++i)
    {
        text += "---|";
    }
    text += "\n";
    for (const std::vector<std::string>& row : rows_)
    {
        text += line(row);
    }
    return text + "\n";
}

} // namespace Vornu::Schema
