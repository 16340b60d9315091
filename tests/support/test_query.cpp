#include "tests/support/test_query.hpp"

#include <algorithm>

Query::Token token(std::size_t pos, std::size_t len, int type)
{
    return {type, pos, len, pos, len};
}

bool splitWords(const std::string& text, std::vector<Query::Token>& tokens)
{
    for (std::size_t pos = text.find_first_not_of(' '); pos != std::string::npos;)
    {
        const std::size_t end = std::min(text.find(' ', pos), text.size());
        tokens.push_back(token(pos, end - pos));
        pos = text.find_first_not_of(' ', end);
    }
    return true;
}

bool splitExpression(const std::string& text, std::vector<Query::Token>& tokens)
{
    constexpr const char* BLANKS = " \t\r\n";
    constexpr const char* OPERATORS = "()|&!=<>";
    for (std::size_t pos = text.find_first_not_of(BLANKS); pos != std::string::npos;)
    {
        std::size_t end = pos + 1;
        if (text[pos] == '"')
        {
            const std::size_t quote = text.find('"', end);
            end = quote == std::string::npos ? text.size() : quote + 1;
            const std::size_t valueEnd = std::min(quote, text.size());
            tokens.push_back({QUOTED, pos, end - pos, pos + 1, valueEnd - pos - 1});
        }
        else if (std::string_view(OPERATORS).find(text[pos]) != std::string_view::npos)
        {
            tokens.push_back(token(pos, 1, OPERATOR));
        }
        else
        {
            end = std::min(text.find_first_of(std::string(BLANKS) + OPERATORS + '"', pos), text.size());
            tokens.push_back(token(pos, end - pos, WORD));
        }
        pos = text.find_first_not_of(BLANKS, end);
    }
    return true;
}

Tokenizer fixedTokens(std::vector<Query::Token> tokens)
{
    return [tokens = std::move(tokens)](const std::string&, std::vector<Query::Token>& found)
    {
        found = tokens;
        return true;
    };
}

std::vector<std::string> tokenStrings(const Query& query)
{
    std::vector<std::string> strings;
    for (std::size_t index = 0; index < query.tokenCount(0); ++index)
    {
        strings.push_back(query.getTokenString(index));
    }
    return strings;
}
