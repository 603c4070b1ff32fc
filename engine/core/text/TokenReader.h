#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Vornu::Core
{

/// White space of the classic locale.
constexpr bool IsSpace(char c) noexcept
{
    // Most characters stand behind the blank.
    return static_cast<unsigned char>(c) <= ' ' && (c == ' ' || (c >= '\t' && c <= '\r'));
}

/// Reads the tokens of one line by the rules of formatted extraction from a `std::istream` in the classic
/// locale, stream state included, without a stream: white space separates tokens, a number ends at the first
/// character that can't continue it, and a failed read stops all later ones, which leave their targets alone.
///
/// A reader is a small value: keep a copy to come back to a position and its state.
class TokenReader
{
public:
    explicit TokenReader(std::string_view line) noexcept
        : begin_(line.data()), at_(begin_), end_(begin_ + line.size())
    {
    }

    /// False once a read has failed.
    explicit operator bool() const noexcept { return !failed_; }
    /// True once a read has touched the end of the line.
    bool Eof() const noexcept { return eof_; }

    /// One word up to the next white space, as a view into the line; empty and failed at the end.
    std::string_view ReadWord() noexcept;

    /// Numbers. At the end of the line the target keeps its value. A token that starts no number stores 0 and
    /// fails; one out of range stores the limit of the type and fails. For unsigned targets a minus wraps.
    TokenReader& Read(std::int32_t& value) noexcept;
    TokenReader& Read(std::int64_t& value) noexcept;
    TokenReader& Read(std::uint32_t& value) noexcept;
    TokenReader& Read(std::uint64_t& value) noexcept;
    /// A value too small for the type reads as the nearest one, zero included, and doesn't fail.
    TokenReader& Read(float& value);
    TokenReader& Read(double& value);
    /// A signed 32-bit number that is true unless 0.
    TokenReader& Read(bool& value) noexcept;
    /// Quoted text as `std::quoted` reads it: a backslash takes the next character as it stands, a text
    /// without an opening quote is one word, and one without a closing quote takes the rest and fails.
    TokenReader& Read(std::string& text);

    /// Lets reading go on at the present position, as a stream's `clear` does.
    void ClearFailure() noexcept
    {
        eof_ = false;
        failed_ = false;
    }

    /// What stands behind the white space at the present position; doesn't change the state.
    std::string_view Rest() const noexcept;

private:
    bool BeginToken() noexcept;
    template<class Integer>
    void ExtractInteger(Integer& value) noexcept;
    template<class Float>
    void ExtractFloat(Float& value);

    const char* begin_;
    const char* at_;
    const char* end_;
    bool eof_ = false;
    bool failed_ = false;
};

} // namespace Vornu::Core
