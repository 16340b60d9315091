#include "tests/support/naive_query.hpp"

bool NaiveQuery::setQueryString(const std::string& newText)
{
    if (newText == text)
    {
        return true;
    }
    std::vector<Query::Token> newTokens;
    if (!m_tokenizer(newText, newTokens))
    {
        return false;
    }
    tokens.swap(newTokens);
    text = newText;
    ++changes;
    return true;
}

std::size_t NaiveQuery::getTokenIndexAt(std::size_t pos) const
{
    for (std::size_t i = 0; i < tokens.size(); ++i)
    {
        if (tokens[i].pos < pos && pos <= tokens[i].pos + tokens[i].len)
        {
            return i;
        }
    }
    return Query::invalidTokenIndex;
}

bool NaiveQuery::insertToken(std::size_t index, const std::string& token)
{
    if (index < tokens.size())
    {
        return insertTokenString(tokens[index].pos, token);
    }
    return insertTokenString(text.size(), token);
}

bool NaiveQuery::insertTokenString(std::size_t pos, std::string token)
{
    if (pos > text.size())
    {
        return false;
    }
    if (pos != 0 && text[pos - 1] != ' ')
    {
        token = " " + token;
    }
    if (pos == text.size() || text[pos] != ' ')
    {
        token = token + " ";
    }
    std::string copy = text;
    copy.insert(pos, token);
    return setQueryString(copy);
}

void NaiveQuery::removeTokenFromString(std::string& text, const Query::Token& token)
{
    text.erase(token.pos, token.len);
    while (token.pos < text.size() && text[token.pos] == ' ')
    {
        text.erase(token.pos, 1);
    }
}

bool NaiveQuery::removeToken(std::size_t index)
{
    if (index >= tokens.size())
    {
        return false;
    }
    std::string copy = text;
    removeTokenFromString(copy, tokens[index]);
    return setQueryString(copy);
}

void NaiveQuery::normalizeGap(std::string& text, const Query::Token& token, std::size_t next)
{
    const std::size_t end = token.pos + token.len;
    const std::size_t gap = next - end;
    if (token.len != 0)
    {
        const bool oneSpace = gap == 1 && end < text.size() && text[end] == ' ';
        if (!oneSpace)
        {
            text.replace(end, gap, " ");
        }
    }
    else if (gap != 0)
    {
        text.erase(end, gap);
    }
}

void NaiveQuery::normalizeSpaceAfterToken(std::string& edited, std::size_t index) const
{
    const std::size_t next = index + 1 < tokens.size() ? tokens[index + 1].pos : edited.size();
    normalizeGap(edited, tokens[index], next);
}

bool NaiveQuery::replaceToken(std::size_t index, const std::string& token)
{
    if (index >= tokens.size())
    {
        return false;
    }
    std::string copy = text;
    normalizeSpaceAfterToken(copy, index);
    copy.replace(tokens[index].pos, tokens[index].len, token);
    return setQueryString(copy);
}

bool NaiveQuery::isEqual(const Query::Token& a, const Query::Token& b) const
{
    return a.type == b.type && text.substr(a.valuePos, a.valueLen) == text.substr(b.valuePos, b.valueLen);
}

void NaiveQuery::removeDublicates()
{
    if (tokens.size() < 2)
    {
        return;
    }
    std::string copy = text;
    for (int i = static_cast<int>(tokens.size()) - 1; i >= 0; --i)
    {
        const Query::Token token = tokens[static_cast<std::size_t>(i)];
        for (int j = i - 1; j >= 0; --j)
        {
            if (isEqual(token, tokens[static_cast<std::size_t>(j)]))
            {
                removeTokenFromString(copy, token);
            }
        }
    }
    if (!setQueryString(copy))
    {
        reports.emplace_back("success");
    }
}

void NaiveQuery::normalizeSpaces()
{
    std::string copy = text;
    std::size_t next = copy.size();
    for (int i = static_cast<int>(tokens.size()) - 1; i >= 0; --i)
    {
        const Query::Token token = tokens[static_cast<std::size_t>(i)];
        normalizeGap(copy, token, next);
        next = token.pos;
    }
    if (!setQueryString(copy))
    {
        reports.emplace_back("success");
    }
}

void NaiveQuery::normalize()
{
    removeDublicates();
    normalizeSpaces();
}
