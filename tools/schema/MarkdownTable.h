#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Schema
{

/// Free text with everything escaped that Markdown would take for markup.
std::string EscapeMarkdown(std::string_view text);

/// A name or value in backticks; empty for an empty text.
std::string Code(std::string_view text);

/// A table that leaves out the columns without any content.
class MarkdownTable
{
public:
    explicit MarkdownTable(std::vector<std::string> headings) : headings_(std::move(headings)) {}

    /// Takes one cell a heading, in Markdown.
    void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

    /// The lines of the table with an empty one behind; empty when it has no row.
    std::string Text() const;

private:
    std::vector<std::string> headings_;
    std::vector<std::vector<std::string>> rows_;
};

} // namespace Vornu::Schema
