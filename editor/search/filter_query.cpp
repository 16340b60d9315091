#include "editor/search/filter_query.hpp"

#include <algorithm>
#include <set>
#include <utility>

namespace
{

constexpr char QUOTE = '"';
constexpr char ESCAPE = '\\';
constexpr char NEGATION = '-';
constexpr char COLON = ':';

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isForbidden(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && !isBlank(c)) || byte == 0x7f;
}

bool endsBareText(char c)
{
    return isBlank(c) || c == QUOTE;
}

bool isBareText(std::string_view text)
{
    return !text.empty() && std::none_of(text.begin(), text.end(), endsBareText);
}

/// Reads a text from its beginning to its end, token by token.
class FilterScanner
{
public:
    explicit FilterScanner(std::string_view text) : m_text(text) {}

    void scan()
    {
        for (skipBlanks(); !atEnd(); skipBlanks())
        {
            scanToken();
        }
    }

    std::vector<Query::Token> tokens;
    std::vector<FilterTerm> terms;
    std::vector<FilterMark> marks;

private:
    using Kind = FilterMark::Kind;

    bool atEnd() const { return m_at == m_text.size(); }
    char current() const { return m_text[m_at]; }
    void mark(Kind kind, std::size_t pos, std::size_t end) { marks.push_back({kind, pos, end - pos}); }

    void skipBlanks()
    {
        while (!atEnd() && isBlank(current()))
        {
            ++m_at;
        }
    }

    void scanToken()
    {
        FilterTerm term;
        const std::size_t pos = m_at;
        term.negated = current() == NEGATION;
        m_at += term.negated ? 1U : 0U;
        const std::size_t valuePos = m_at;
        if (atEnd() || isBlank(current()))
        {
            mark(Kind::LoneNegation, pos, m_at);
            term.ignored = true;
            add(FilterQuery::Word, pos, valuePos, m_at, std::move(term));
        }
        else if (current() == QUOTE)
        {
            const std::size_t valueEnd = scanPhrase(term);
            add(FilterQuery::Phrase, pos, valuePos + 1, valueEnd, std::move(term));
        }
        else
        {
            scanBare(term);
            add(term.field ? FilterQuery::Field : FilterQuery::Word, pos, valuePos, m_at, std::move(term));
        }
    }

    void add(int type, std::size_t pos, std::size_t valuePos, std::size_t valueEnd, FilterTerm term)
    {
        const int shift = term.negated ? FilterQuery::NegatedWord - FilterQuery::Word : 0;
        tokens.push_back({type + shift, pos, m_at - pos, valuePos, valueEnd - valuePos});
        terms.push_back(std::move(term));
    }

    /// Yields where the text in the quotes ends.
    std::size_t scanPhrase(FilterTerm& term)
    {
        const std::size_t quote = m_at;
        const bool closed = scanQuoted(term.value);
        term.ignored = term.value.empty();
        if (closed && term.value.empty())
        {
            mark(Kind::EmptyPhrase, quote, m_at);
        }
        return closed ? m_at - 1 : m_at;
    }

    /// Goes behind the closing quote, or to the end. False if there is none.
    bool scanQuoted(std::string& value)
    {
        const std::size_t quote = m_at++;
        const std::size_t marksBefore = marks.size();
        while (!atEnd() && current() != QUOTE)
        {
            const char next = m_at + 1 < m_text.size() ? m_text[m_at + 1] : '\0';
            if (current() == ESCAPE && (next == QUOTE || next == ESCAPE))
            {
                ++m_at;
            }
            else if (current() == ESCAPE && next != '\0')
            {
                mark(Kind::UnknownEscape, m_at, m_at + 2);
            }
            value += current();
            ++m_at;
        }
        if (atEnd())
        {
            marks.insert(marks.begin() + static_cast<std::ptrdiff_t>(marksBefore),
                         {Kind::UnterminatedQuote, quote, m_at - quote});
            return false;
        }
        ++m_at;
        return true;
    }

    /// A word or a field; a colon makes the difference.
    void scanBare(FilterTerm& term)
    {
        const std::size_t pos = m_at;
        const auto* const end =
            std::find_if(m_text.data() + pos, m_text.data() + m_text.size(), endsBareText);
        const std::string_view bare(m_text.data() + pos,
                                    static_cast<std::size_t>(end - (m_text.data() + pos)));
        m_at += bare.size();
        const std::size_t colon = bare.find(COLON);
        if (colon == std::string_view::npos)
        {
            term.value = bare;
            return;
        }
        term.field = true;
        term.key = bare.substr(0, colon);
        term.value = bare.substr(colon + 1);
        if (term.key.empty())
        {
            mark(Kind::EmptyKey, pos, pos + 1);
            term.ignored = true;
        }
        if (!term.value.empty())
        {
            return;
        }
        if (atEnd() || current() != QUOTE)
        {
            mark(Kind::EmptyValue, pos, m_at);
            term.ignored = true;
        }
        else if (!scanQuoted(term.value) && term.value.empty())
        {
            term.ignored = true; // closed quotes ask for an empty value, open ones are not yet typed
        }
    }

    std::string_view m_text;
    std::size_t m_at = 0;
};

/// What must be written behind an open quoted text to close it: its last backslash, if it would escape the
/// quote, is doubled.
std::string closingOf(std::string_view openQuoted)
{
    const std::size_t last = openQuoted.find_last_not_of(ESCAPE);
    const std::size_t escapes = openQuoted.size() - (last + 1);
    return escapes % 2 == 0 ? "\"" : "\\\"";
}

} // namespace

void FilterQuery::normalize()
{
    std::string text;
    std::set<std::pair<int, std::string>> seen;
    for (std::size_t index = 0; index < m_terms.size(); ++index)
    {
        std::string token = getTokenString(index);
        const std::size_t end = getTokenPos(index) + token.size();
        const auto open = std::find_if(m_marks.begin(), m_marks.end(),
                                       [&](const FilterMark& mark)
                                       {
                                           return mark.kind == FilterMark::Kind::UnterminatedQuote &&
                                                  mark.pos + mark.len == end &&
                                                  mark.pos >= getTokenPos(index);
                                       });
        if (open != m_marks.end())
        {
            token += closingOf(token);
        }
        if (seen.emplace(getTokenType(index), token).second)
        {
            text += token + ' ';
        }
    }
    // The last thing done: a listener may destroy the query. It takes its own tokens, so it takes them
    // tidied.
    setQueryString(text);
}

bool FilterQuery::isComplete() const
{
    return m_marks.empty();
}

std::string FilterQuery::quoted(std::string_view text)
{
    std::string token(1, QUOTE);
    for (const char c : text)
    {
        if (c == QUOTE || c == ESCAPE)
        {
            token += ESCAPE;
        }
        token += c;
    }
    return token + QUOTE;
}

std::string FilterQuery::wordToken(std::string_view text)
{
    const bool bare =
        isBareText(text) && text.front() != NEGATION && text.find(COLON) == std::string_view::npos;
    return bare ? std::string(text) : quoted(text);
}

std::string FilterQuery::fieldToken(std::string_view key, std::string_view value)
{
    return std::string(key) + COLON + (isBareText(value) ? std::string(value) : quoted(value));
}

bool FilterQuery::tokenize(const std::string& text, std::vector<Token>& tokens)
{
    if (std::any_of(text.begin(), text.end(), isForbidden))
    {
        return false;
    }
    FilterScanner scanner(text);
    scanner.scan();
    tokens = std::move(scanner.tokens);
    m_terms = std::move(scanner.terms);
    m_marks = std::move(scanner.marks);
    return true;
}
