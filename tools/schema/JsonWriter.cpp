#include "tools/schema/JsonWriter.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Vornu::Schema
{
namespace
{

constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

/// Lead bytes of sequences longer than one byte, and the second bytes that may follow each: this leaves out
/// overlong forms, surrogates and what lies above U+10FFFF.
struct Utf8Lead
{
    unsigned char first, last; // lead bytes
    unsigned char low, high;   // second bytes
    std::size_t size;
};
constexpr std::array<Utf8Lead, 8> kUtf8Leads = {{
    {0xC2, 0xDF, 0x80, 0xBF, 2},
    {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4},
    {0xF4, 0xF4, 0x80, 0x8F, 4},
}};

/// The size of the character that the text begins with; 0 when it begins with none.
std::size_t Utf8Size(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    if (byte(0) < 0x80)
    {
        return 1;
    }
    for (const Utf8Lead& lead : kUtf8Leads)
    {
        if (byte(0) < lead.first || byte(0) > lead.last)
        {
            continue;
        }
        bool fits = text.size() >= lead.size && byte(1) >= lead.low && byte(1) <= lead.high;
        for (std::size_t i = 2; fits && i < lead.size; ++i)
        {
            fits = (byte(i) & 0xC0u) == 0x80u;
        }
        return fits ? lead.size : 0;
    }
    return 0;
}

void AppendEscaped(char c, std::string& out)
{
    constexpr std::string_view kHexDigits = "0123456789abcdef";
    switch (c)
    {
    case '"':
        out += "\\\"";
        return;
    case '\\':
        out += "\\\\";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        break;
    }
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x20)
    {
        out += c;
        return;
    }
    out += "\\u00";
    out += kHexDigits[code >> 4];
    out += kHexDigits[code & 0xF];
}

} // namespace

void JsonWriter::Begin(char open, char close, Layout layout)
{
    Place();
    text_ += open;
    const bool isInside = !open_.empty() && open_.back().layout == Layout::Inline;
    open_.push_back({close, isInside ? Layout::Inline : layout});
}

void JsonWriter::End()
{
    const Container closed = open_.back();
    open_.pop_back();
    if (!closed.isEmpty && closed.layout == Layout::Lines)
    {
        NewLine();
    }
    text_ += closed.close;
    if (open_.empty())
    {
        text_ += '\n';
    }
}

void JsonWriter::Key(std::string_view name)
{
    Place();
    AppendQuoted(name);
    text_ += ": ";
    afterKey_ = true;
}

void JsonWriter::String(std::string_view text)
{
    Place();
    AppendQuoted(text);
}

void JsonWriter::Raw(std::string_view text)
{
    Place();
    text_ += text;
}

void JsonWriter::Place()
{
    if (afterKey_ || open_.empty())
    {
        afterKey_ = false;
        return;
    }
    Container& container = open_.back();
    if (!container.isEmpty)
    {
        text_ += container.layout == Layout::Lines ? "," : ", ";
    }
    container.isEmpty = false;
    if (container.layout == Layout::Lines)
    {
        NewLine();
    }
}

void JsonWriter::NewLine()
{
    text_ += '\n';
    text_.append(2 * open_.size(), ' ');
}

void JsonWriter::AppendQuoted(std::string_view text)
{
    text_ += '"';
    while (!text.empty())
    {
        const std::size_t size = Utf8Size(text);
        if (size == 1)
        {
            AppendEscaped(text.front(), text_);
        }
        else
        {
            text_ += size == 0 ? kReplacementCharacter : text.substr(0, size);
        }
        text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    text_ += '"';
}

} // namespace Vornu::Schema
