#include "engine/core/text/TokenReader.h"
#include "fuzz/FuzzFiles.h"

#include <cstring>
#include <iomanip>
#include <sstream>
#include <type_traits>

namespace
{

using namespace Vornu;

/// Reads one line twice, with the reader and with a stream.
class Pair
{
public:
    explicit Pair(std::string_view line) : line_(line), reader_(line), stream_(std::string(line))
    {
        stream_.imbue(std::locale::classic());
    }

    /// `type` names what comes next.
    void Read(char type)
    {
        switch (type)
        {
        case 'i':
            return ReadNumber<std::int32_t>(77);
        case 'I':
            return ReadNumber<std::int64_t>(77);
        case 'u':
            return ReadNumber<std::uint32_t>(77);
        case 'U':
            return ReadNumber<std::uint64_t>(77);
        case 'f':
            return ReadNumber<float>(77);
        case 'd':
            return ReadNumber<double>(77);
        case 'b':
            return ReadFlag();
        case 'q':
            return ReadQuoted();
        case 'c':
            reader_.ClearFailure();
            stream_.clear();
            return;
        default:
            return ReadWord();
        }
    }

    /// What was read is compared where it was; this is the state and the place behind it.
    void CheckState()
    {
        Fuzz::Require(static_cast<bool>(reader_) == !stream_.fail(), "one fails, one doesn't");
        Fuzz::Require(reader_.Eof() == stream_.eof(), "one is at the end, one isn't");
        const auto at = static_cast<std::size_t>(stream_.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in));
        std::string_view rest = line_.substr(at);
        while (!rest.empty() && Core::IsSpace(rest.front()))
        {
            rest.remove_prefix(1);
        }
        Fuzz::Require(reader_.Rest() == rest, "two places");
    }

private:
    template<class Number>
    void ReadNumber(Number start)
    {
        Number mine = start;
        Number theirs = start;
        reader_.Read(mine);
        stream_ >> theirs;
        Fuzz::Require(std::memcmp(&mine, &theirs, sizeof mine) == 0,
                      std::to_string(mine) + " and " + std::to_string(theirs));
    }

    void ReadFlag()
    {
        bool mine = true;
        std::int32_t theirs = 1;
        reader_.Read(mine);
        stream_ >> theirs;
        Fuzz::Require(mine == (theirs != 0), "two flags");
    }

    void ReadQuoted()
    {
        std::string mine = "before";
        std::string theirs = "before";
        reader_.Read(mine);
        stream_ >> std::quoted(theirs);
        Fuzz::Require(mine == theirs, "two quoted texts: " + mine + " and " + theirs);
    }

    void ReadWord()
    {
        std::string theirs;
        const std::string mine(reader_.ReadWord());
        stream_ >> theirs;
        Fuzz::Require(mine == theirs, "two words: " + mine + " and " + theirs);
    }

    std::string_view line_;
    Core::TokenReader reader_;
    std::istringstream stream_;
};

} // namespace

/// The first line names types, one a character, which the rest is read as: exactly as by a stream.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input = Fuzz::AsText(data, size);
    const std::size_t end = input.find('\n');
    if (end == std::string_view::npos)
    {
        return 0;
    }
    Pair pair(input.substr(end + 1));
    for (const char type : input.substr(0, end))
    {
        pair.Read(type);
        pair.CheckState();
    }
    return 0;
}
