#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Schema
{

/// Writes one JSON text, indented by two blanks a level. The caller keeps to the grammar: a key before each
/// value of an object, and every container closed.
class JsonWriter
{
public:
    /// One value a line, or all in the line of the container; what lies inside an inline one is inline too.
    enum class Layout : std::uint8_t
    {
        Lines = 0,
        Inline = 1,
    };

    void BeginObject(Layout layout = Layout::Lines) { Begin('{', '}', layout); }
    void BeginArray(Layout layout = Layout::Lines) { Begin('[', ']', layout); }
    /// Closes the container that was opened last.
    void End();

    void Key(std::string_view name);

    /// Bytes that aren't UTF-8 become replacement characters.
    void String(std::string_view text);
    void Boolean(bool value) { Raw(value ? "true" : "false"); }
    /// A number, or any other value that is written as it stands.
    void Raw(std::string_view text);

    /// A key with a value.
    void Member(std::string_view name, std::string_view text)
    {
        Key(name);
        String(text);
    }
    void Member(std::string_view name, const char* text) { Member(name, std::string_view(text)); }
    void Member(std::string_view name, bool value)
    {
        Key(name);
        Boolean(value);
    }
    void Member(std::string_view name, std::uint64_t value)
    {
        Key(name);
        Raw(std::to_string(value));
    }

    /// The text; complete once every container is closed.
    const std::string& Text() const noexcept { return text_; }

private:
    struct Container
    {
        char close = '}';
        Layout layout = Layout::Lines;
        bool isEmpty = true;
    };

    void Begin(char open, char close, Layout layout);
    /// Puts a value or key in its place: behind a comma, on a line of its own where that is the layout.
    void Place();
    void NewLine();
    void AppendQuoted(std::string_view text);

    std::string text_;
    std::vector<Container> open_;
    bool afterKey_ = false;
};

} // namespace Vornu::Schema
