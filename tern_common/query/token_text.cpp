#include "tern_common/query/token_text.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

namespace
{

using Tokens = std::vector<Query::Token>;

std::string_view valueOf(std::string_view text, const Query::Token& token)
{
    return text.substr(token.valuePos, token.valueLen);
}

template <class Word>
std::uint64_t load(const char* from) noexcept
{
    Word word;
    std::memcpy(&word, from, sizeof(word));
    return word;
}

/// Up to eight bytes in one word, by reads of fixed size that may overlap; equal bytes make equal words.
std::uint64_t loadUpToEight(const char* from, std::size_t count) noexcept
{
    if (count >= 4)
    {
        return load<std::uint32_t>(from) << 32U | load<std::uint32_t>(from + count - 4);
    }
    if (count == 0)
    {
        return 0;
    }
    return load<unsigned char>(from) << 16U | load<unsigned char>(from + count / 2) << 8U |
           load<unsigned char>(from + count - 1);
}

std::uint64_t mix(std::uint64_t hash, std::uint64_t bytes) noexcept
{
    hash = (hash ^ bytes) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 32U);
}

/// Eight bytes a step: most values of queries take one.
std::uint32_t hashOf(std::int32_t type, std::string_view value) noexcept
{
    constexpr std::size_t STEP = 8;
    const char* from = value.data();
    std::size_t left = value.size();
    std::uint64_t hash = mix(static_cast<std::uint32_t>(type), left);
    for (; left > STEP; from += STEP, left -= STEP)
    {
        hash = mix(hash, load<std::uint64_t>(from));
    }
    return static_cast<std::uint32_t>(mix(hash, loadUpToEight(from, left)));
}

/// Whether token @p index is equal to the earlier one @p held.
bool areEqual(std::string_view text, const Tokens& tokens, std::size_t held, std::size_t index)
{
    return tokens[held].type == tokens[index].type &&
           valueOf(text, tokens[held]) == valueOf(text, tokens[index]);
}

using Counts = std::vector<std::uint32_t>;

/// Few tokens: comparing them all is quicker than making a table.
bool countByPairs(std::string_view text, const Tokens& tokens, Counts& counts)
{
    bool any = false;
    for (std::size_t index = 1; index < tokens.size(); ++index)
    {
        for (std::size_t held = index; held-- > 0;)
        {
            if (areEqual(text, tokens, held, index))
            {
                counts[index] = counts[held] + 1; // the newest of the earlier ones has counted the rest
                any = true;
                break;
            }
        }
    }
    return any;
}

/// Many tokens: a hash table of token numbers finds the newest of the earlier equals.
bool countByTable(std::string_view text, const Tokens& tokens, Counts& counts)
{
    struct Place
    {
        std::uint32_t hash = 0;
        std::uint32_t next = 0; // the token's number and 1; 0 while the place is free
    };
    std::vector<Place> table(std::bit_ceil(2 * tokens.size()));
    const std::size_t mask = table.size() - 1;
    bool any = false;
    for (std::uint32_t index = 0; index < tokens.size(); ++index)
    {
        const std::uint32_t hash = hashOf(tokens[index].type, valueOf(text, tokens[index]));
        std::size_t at = hash & mask;
        while (table[at].next != 0 &&
               (table[at].hash != hash || !areEqual(text, tokens, table[at].next - 1, index)))
        {
            at = (at + 1) & mask;
        }
        if (table[at].next != 0)
        {
            counts[index] = counts[table[at].next - 1] + 1;
            any = true;
        }
        table[at] = {hash, index + 1};
    }
    return any;
}

/// Counts for each token the earlier ones that equal it. False if no token is repeated.
bool countEarlierEquals(std::string_view text, const Tokens& tokens, Counts& counts)
{
    constexpr std::size_t FEW = 24;
    return tokens.size() <= FEW ? countByPairs(text, tokens, counts) : countByTable(text, tokens, counts);
}

/// A text that is made from its end towards its beginning. Its first byte is the top of a stack, so that
/// erasing at the front is popping and every byte moves at most once.
class TextFromBehind
{
public:
    explicit TextFromBehind(std::size_t capacity) : m_buffer(capacity, '\0'), m_top(capacity) {}

    void push(std::string_view text)
    {
        m_top -= text.size();
        text.copy(m_buffer.data() + m_top, text.size());
    }

    /// Erases up to @p count bytes and the spaces that follow them. False if there was nothing to erase.
    bool pop(std::size_t count)
    {
        const std::size_t before = m_top;
        m_top += std::min(count, m_buffer.size() - m_top);
        m_top = std::min(m_buffer.find_first_not_of(' ', m_top), m_buffer.size());
        return m_top != before;
    }

    std::string take() &&
    {
        m_buffer.erase(0, m_top);
        return std::move(m_buffer);
    }

private:
    std::string m_buffer;
    std::size_t m_top;
};

/// Appends pieces of a text to a buffer that was made large enough for all of them. A short piece is copied
/// in one step of fixed size, with what follows it: twice as fast as a call for each.
class PieceWriter
{
public:
    PieceWriter(std::string_view text, std::size_t capacity) : m_text(text), m_buffer(capacity + STEP, '\0')
    {
    }

    void piece(std::size_t pos, std::size_t count) noexcept
    {
        const bool inOneStep = count <= STEP && m_text.size() - pos >= STEP;
        char* const to = m_buffer.data() + m_size;
        if (inOneStep)
        {
            std::memcpy(to, m_text.data() + pos, STEP);
        }
        else
        {
            std::memcpy(to, m_text.data() + pos, count);
        }
        m_size += count;
    }
    void space() noexcept { m_buffer[m_size++] = ' '; }
    std::string take() &&
    {
        m_buffer.resize(m_size);
        return std::move(m_buffer);
    }

private:
    static constexpr std::size_t STEP = 16;

    std::string_view m_text;
    std::string m_buffer;
    std::size_t m_size = 0;
};

} // namespace

namespace TernCommonDetail
{

bool liesInOrder(std::size_t size, const Tokens& tokens) noexcept
{
    std::size_t end = 0;
    for (const Query::Token& token : tokens)
    {
        if (token.pos < end || token.pos > size || token.len > size - token.pos || token.valuePos > size)
        {
            return false;
        }
        end = token.pos + token.len;
    }
    return tokens.size() < std::numeric_limits<std::uint32_t>::max();
}

std::string withNormalSpaces(std::string_view text, const Tokens& tokens)
{
    PieceWriter result(text, text.size() + tokens.size());
    std::size_t copied = 0; // what lies behind this is copied when a gap that is out of order ends the run
    for (std::size_t index = 0; index < tokens.size(); ++index)
    {
        const std::size_t end = tokens[index].pos + tokens[index].len;
        const std::size_t next = index + 1 < tokens.size() ? tokens[index + 1].pos : text.size();
        const bool wantsSpace = tokens[index].len != 0;
        if (wantsSpace ? next - end == 1 && text[end] == ' ' : next == end)
        {
            continue;
        }
        result.piece(copied, end - copied);
        if (wantsSpace)
        {
            result.space();
        }
        copied = next;
    }
    result.piece(copied, text.size() - copied);
    return std::move(result).take();
}

std::string withoutRepetitions(std::string_view text, const Tokens& tokens)
{
    Counts counts(tokens.size());
    if (!countEarlierEquals(text, tokens, counts))
    {
        return std::string(text);
    }
    TextFromBehind result(text.size());
    std::size_t copied = text.size();
    for (std::size_t index = tokens.size(); index-- > 0;)
    {
        std::uint32_t erasures = counts[index];
        if (erasures == 0)
        {
            continue;
        }
        const Query::Token& token = tokens[index];
        result.push(text.substr(token.pos, copied - token.pos));
        copied = token.pos;
        while (erasures-- > 0 && result.pop(token.len))
        {
        }
    }
    result.push(text.substr(0, copied));
    return std::move(result).take();
}

} // namespace TernCommonDetail
