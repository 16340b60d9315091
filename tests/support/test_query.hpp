#pragma once

#include "tern_common/query/query.hpp"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Splits a text as a query language does: false refuses it.
using Tokenizer = std::function<bool(const std::string& text, std::vector<Query::Token>& tokens)>;

/// Words between spaces; the value is the word. The type of all is 0.
bool splitWords(const std::string& text, std::vector<Query::Token>& tokens);

/// A language with more to it: words, "quoted text" whose value stands between the quotes, and operators of
/// one character, ( ) | & ! = < >, all of which may touch. White space of any kind separates.
bool splitExpression(const std::string& text, std::vector<Query::Token>& tokens);
enum ExpressionType : int
{
    WORD,
    QUOTED,
    OPERATOR
};

/// Takes any text and finds what it is given, whatever the text.
Tokenizer fixedTokens(std::vector<Query::Token> tokens);

/// A record whose value is the whole token.
Query::Token token(std::size_t pos, std::size_t len, int type = 0);

/// A query with a tokeniser that tests can exchange, and its protected part in the open.
class TestQuery : public Query
{
public:
    explicit TestQuery(Tokenizer tokenizer = splitWords) : m_tokenizer(std::move(tokenizer)) {}
    explicit TestQuery(const std::string& text, Tokenizer tokenizer = splitWords)
        : m_tokenizer(std::move(tokenizer))
    {
        setQueryString(text);
    }

    void setTokenizer(Tokenizer tokenizer) { m_tokenizer = std::move(tokenizer); }
    int tokenizeCalls() const noexcept { return m_tokenizeCalls; }

    bool isComplete() const override { return true; }

    using Query::getToken;
    using Query::getTokenValue;
    using Query::isEqual;
    using Query::normalizeSpaces;
    using Query::removeDublicates;

protected:
    bool tokenize(const std::string& text, std::vector<Token>& tokens) override
    {
        ++m_tokenizeCalls;
        return m_tokenizer(text, tokens);
    }

private:
    Tokenizer m_tokenizer;
    int m_tokenizeCalls = 0;
};

/// The texts of all tokens.
std::vector<std::string> tokenStrings(const Query& query);
