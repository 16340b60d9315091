#include "editor/search/filter_suggestions.hpp"

#include "editor/search/ascii_case.hpp"

namespace
{

/// Gathers suggestions for one token until there are enough.
class Suggestions
{
public:
    Suggestions(const FilterTerm& typed, std::string current, std::size_t limit)
        : m_typed(typed), m_current(std::move(current)), m_limit(limit)
    {
    }

    /// Offers @p token if @p text begins with what is typed.
    void offer(const std::string& text, const std::string& token)
    {
        const std::string whole = m_typed.negated ? "-" + token : token;
        if (found.size() < m_limit && whole != m_current && AsciiCase::startsWith(text, m_typed.value))
        {
            found.push_back(whole);
        }
    }

    std::vector<std::string> found;

private:
    const FilterTerm& m_typed;
    std::string m_current;
    std::size_t m_limit;
};

} // namespace

std::vector<std::string> suggestTokens(const FilterQuery& query, std::size_t cursor,
                                       const FilterVocabulary& vocabulary, std::size_t limit)
{
    const std::size_t index = query.getTokenIndexAt(cursor);
    if (index == Query::invalidTokenIndex)
    {
        return {};
    }
    // The part in front of the cursor is a text of the language itself: of one token, open or not.
    const std::string current = query.getTokenString(index);
    FilterQuery front;
    front.setQueryString(current.substr(0, cursor - query.getTokenPos(index)));
    const FilterTerm& typed = front.terms().front();

    Suggestions suggestions(typed, current, limit);
    const bool phrase = front.getTokenType(0) % FilterQuery::NegatedWord == FilterQuery::Phrase;
    for (const FilterVocabulary::Key& key : vocabulary.keys)
    {
        if (!typed.field && !phrase)
        {
            suggestions.offer(key.name, key.name + ":");
        }
        else if (typed.field && AsciiCase::equal(key.name, typed.key))
        {
            for (const std::string& value : key.values)
            {
                suggestions.offer(value, FilterQuery::fieldToken(key.name, value));
            }
        }
    }
    for (const std::string& word : vocabulary.words)
    {
        if (!typed.field)
        {
            suggestions.offer(word, phrase ? FilterQuery::quoted(word) : FilterQuery::wordToken(word));
        }
    }
    return std::move(suggestions.found);
}
