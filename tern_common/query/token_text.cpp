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

std::uint64_t loadBytes(const char* from, std::size_t count) noexcept
{
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, from, count);
    return bytes;
}

std::uint64_t mix(std::uint64_t hash, std::uint64_t bytes) noexcept
{
    hash = (hash ^ bytes) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 32U);
}

/// Eight bytes a step; values of queries are short.
std::uint32_t hashOf(std::int32_t type, std::string_view value) noexcept
{
    constexpr std::size_t WORD = sizeof(std::uint64_t);
    const char* from = value.data();
    std::size_t left = value.size();
    std::uint64_t hash = mix(static_cast<std::uint32_t>(type), left);
    for (; left > WORD; from += WORD, left -= WORD)
    {
        hash = mix(hash, loadBytes(from, WORD));
    }
    hash = mix(hash, loadBytes(from, left));
    return static_cast<std::uint32_t>(mix(hash, 0));
}

/// For each token, how many earlier ones equal it. A hash table of token numbers finds the newest of those.
class EarlierEquals
{
public:
    EarlierEquals(std::string_view text, const Tokens& tokens)
        : m_text(text), m_tokens(tokens), m_table(std::bit_ceil(2 * tokens.size() + 1), NONE),
          m_hashes(tokens.size()), m_counts(tokens.size())
    {
        for (std::uint32_t index = 0; index < tokens.size(); ++index)
        {
            count(index);
        }
    }

    bool any() const noexcept { return m_any; }
    std::uint32_t of(std::size_t index) const noexcept { return m_counts[index]; }

private:
    static constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();

    void count(std::uint32_t index)
    {
        const std::string_view value = valueOf(m_text, m_tokens[index]);
        m_hashes[index] = hashOf(m_tokens[index].type, value);
        const std::size_t mask = m_table.size() - 1;
        std::size_t place = m_hashes[index] & mask;
        while (m_table[place] != NONE && !equals(m_table[place], index, value))
        {
            place = (place + 1) & mask;
        }
        if (m_table[place] != NONE)
        {
            m_counts[index] = m_counts[m_table[place]] + 1;
            m_any = true;
        }
        m_table[place] = index;
    }

    bool equals(std::uint32_t held, std::uint32_t index, std::string_view value) const
    {
        return m_hashes[held] == m_hashes[index] && m_tokens[held].type == m_tokens[index].type &&
               valueOf(m_text, m_tokens[held]) == value;
    }

    std::string_view m_text;
    const Tokens& m_tokens;
    std::vector<std::uint32_t> m_table;
    std::vector<std::uint32_t> m_hashes;
    std::vector<std::uint32_t> m_counts;
    bool m_any = false;
};

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
    std::string result;
    result.reserve(text.size() + tokens.size());
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
        result.append(text, copied, end - copied);
        if (wantsSpace)
        {
            result.push_back(' ');
        }
        copied = next;
    }
    return result.append(text, copied);
}

std::string withoutRepetitions(std::string_view text, const Tokens& tokens)
{
    const EarlierEquals earlier(text, tokens);
    if (!earlier.any())
    {
        return std::string(text);
    }
    TextFromBehind result(text.size());
    std::size_t copied = text.size();
    for (std::size_t index = tokens.size(); index-- > 0;)
    {
        std::uint32_t erasures = earlier.of(index);
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
