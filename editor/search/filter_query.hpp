#pragma once

#include "tern_common/query/query.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Something the user may want to set right, by its place in the text.
struct FilterMark
{
    enum class Kind
    {
        UnterminatedQuote, ///< from the quote to the end of the text
        UnknownEscape,     ///< a backslash in quotes before something else than a quote or a backslash
        EmptyKey,          ///< a colon without a key before it
        EmptyValue,        ///< a key without a value
        EmptyPhrase,       ///< quotes with nothing in them, and no key before them
        LoneNegation,      ///< a '-' with nothing behind it
    };

    Kind kind;
    std::size_t pos;
    std::size_t len;

    bool operator==(const FilterMark&) const = default;
};

/// What one token asks of an item.
struct FilterTerm
{
    bool negated = false;
    bool field = false;   ///< asks for a key's value; else for a text in the name
    bool ignored = false; ///< too little of it is typed to ask for anything
    std::string key;
    std::string value; ///< without quotes and escapes

    bool operator==(const FilterTerm&) const = default;
};

/// The filter language of the editor: blank-separated tokens that must all hold,
///
///     word           "quoted text"           key:value           key:"quoted text"
///
/// each of them negated by a '-' in front. In quotes, \" is a quote and \\ a backslash. A quote behind a word
/// begins the next token; so does whatever follows a closing quote.
///
/// People type one character after another, so every text is taken and what is wrong with it is marked. Only
/// control characters, which no control shows and no name has, are refused.
class FilterQuery final : public Query
{
public:
    enum TokenType : int
    {
        Word,
        Phrase,
        Field,
        NegatedWord,
        NegatedPhrase,
        NegatedField,
    };

    FilterQuery() = default;

    /// Keeps the first of equal tokens, closes a quote left open and puts one space behind each token. In one
    /// step, so that three equal tokens cost none of their neighbours anything.
    void normalize() override;
    /// Nothing is marked.
    bool isComplete() const override;

    /// One for each token.
    const std::vector<FilterTerm>& terms() const noexcept { return m_terms; }
    /// In the order of their places.
    const std::vector<FilterMark>& marks() const noexcept { return m_marks; }

    /// @p text in quotes.
    static std::string quoted(std::string_view text);
    /// A token that asks for @p text in the name; quoted where it must be.
    static std::string wordToken(std::string_view text);
    /// A token that asks for @p value under @p key, which must be usable as a key.
    static std::string fieldToken(std::string_view key, std::string_view value);

protected:
    bool tokenize(const std::string& text, std::vector<Token>& tokens) override;

private:
    std::vector<FilterTerm> m_terms;
    std::vector<FilterMark> m_marks;
};
