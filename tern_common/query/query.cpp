#include "tern_common/query/query.hpp"

#include "tern_common/assertion.hpp"
#include "tern_common/query/life_watch.hpp"
#include "tern_common/query/token_text.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

using TernCommonDetail::LifeWatch;

namespace
{

constexpr char SPACE = ' ';

/// Worded by hand: standard libraries differ in what substr() and its kin say.
void requirePosition(const std::string& text, std::size_t pos)
{
    if (pos > text.size())
    {
        throw std::out_of_range("invalid string position");
    }
}

std::string part(const std::string& text, std::size_t pos, std::size_t len)
{
    requirePosition(text, pos);
    return text.substr(pos, len);
}

/// How many of @p len bytes at @p pos the text has.
std::size_t lengthInText(const std::string& text, std::size_t pos, std::size_t len)
{
    return std::min(len, text.size() - pos);
}

/// The one rule for gaps: one space behind a token, nothing behind a token of length 0. Where records overlap
/// or are out of order, `next` lies before the token's end and the gap wraps round to reach beyond the text:
/// all that is behind the token counts as its gap.
void normalizeGap(std::string& text, const Query::Token& token, std::size_t next)
{
    const std::size_t end = token.pos + token.len;
    const std::size_t gap = next - end;
    if (token.len != 0)
    {
        if (gap == 1 && end < text.size() && text[end] == SPACE)
        {
            return;
        }
        requirePosition(text, end);
        text.replace(end, gap, 1, SPACE);
    }
    else if (gap != 0)
    {
        requirePosition(text, end);
        text.erase(end, gap);
    }
}

} // namespace

const std::size_t Query::invalidTokenIndex;
const int Query::invalidTokenType;

Query::Query() = default;

Query::~Query()
{
    LifeWatch::endAll(m_operations);
    m_changed.destroy();
}

void Query::normalize()
{
    const LifeWatch life(m_operations);
    removeDublicates();
    if (!life.isOver())
    {
        normalizeSpaces();
    }
}

bool Query::setQueryString(const std::string& text)
{
    return text == m_queryString || commit(text);
}

bool Query::setEditedString(std::string text)
{
    return text == m_queryString || commit(std::move(text));
}

bool Query::commit(std::string text)
{
    std::vector<Token> tokens;
    if (!tokenize(text, tokens))
    {
        return false;
    }
    m_tokens.swap(tokens);
    m_queryString = std::move(text);
    m_changed.emit();
    return true; // a slot may have destroyed the query
}

const std::string& Query::getQueryString() const
{
    return m_queryString;
}

std::size_t Query::tokenCount(int /*type*/) const
{
    return m_tokens.size();
}

const Query::Token* Query::getToken(std::size_t index) const
{
    return index < m_tokens.size() ? &m_tokens[index] : nullptr;
}

std::size_t Query::getTokenIndexAt(std::size_t pos) const
{
    const auto found =
        std::find_if(m_tokens.begin(), m_tokens.end(),
                     [pos](const Token& token) { return token.pos < pos && pos <= token.pos + token.len; });
    return found == m_tokens.end() ? invalidTokenIndex : static_cast<std::size_t>(found - m_tokens.begin());
}

std::size_t Query::getTokenPos(std::size_t index) const
{
    const Token* const token = getToken(index);
    return token != nullptr ? token->pos : m_tokens.size();
}

std::size_t Query::getTokenLen(std::size_t index) const
{
    const Token* const token = getToken(index);
    return token != nullptr ? token->len : 0;
}

int Query::getTokenType(std::size_t index) const
{
    const Token* const token = getToken(index);
    return token != nullptr ? token->type : invalidTokenType;
}

std::string Query::getTokenString(std::size_t index) const
{
    const Token* const token = getToken(index);
    return token != nullptr ? part(m_queryString, token->pos, token->len) : std::string();
}

std::string Query::getTokenValue(std::size_t index) const
{
    const Token* const token = getToken(index);
    return token != nullptr ? getTokenValue(*token) : std::string();
}

std::string Query::getTokenValue(const Token& token) const
{
    return part(m_queryString, token.valuePos, token.valueLen);
}

bool Query::insertToken(std::size_t index, const std::string& token)
{
    const Token* const behind = getToken(index);
    return insertTokenString(behind != nullptr ? behind->pos : m_queryString.size(), token);
}

bool Query::insertTokenString(std::size_t pos, std::string token)
{
    if (pos > m_queryString.size())
    {
        return false;
    }
    if (pos != 0 && m_queryString[pos - 1] != SPACE)
    {
        token.insert(token.begin(), SPACE);
    }
    if (pos == m_queryString.size() || m_queryString[pos] != SPACE)
    {
        token.push_back(SPACE);
    }
    std::string text;
    text.reserve(m_queryString.size() + token.size());
    text.append(m_queryString, 0, pos).append(token).append(m_queryString, pos);
    return setEditedString(std::move(text));
}

bool Query::removeToken(std::size_t index)
{
    const Token* const token = getToken(index);
    if (token == nullptr)
    {
        return false;
    }
    std::string text = m_queryString;
    removeTokenFromString(text, *token);
    return setEditedString(std::move(text));
}

bool Query::replaceToken(std::size_t index, const std::string& token)
{
    const Token* const replaced = getToken(index);
    if (replaced == nullptr)
    {
        return false;
    }
    std::string text;
    text.reserve(m_queryString.size() + token.size() + 1);
    text = m_queryString;
    normalizeSpaceAfterToken(text, index); // behind the token: its own place stays
    requirePosition(text, replaced->pos);
    text.replace(replaced->pos, replaced->len, token);
    return setEditedString(std::move(text));
}

qua::Connection Query::connectChanged(std::function<void()> slot) const
{
    return m_changed.connect(std::move(slot));
}

bool Query::isEqual(const Token& a, const Token& b) const
{
    if (a.type != b.type)
    {
        return false;
    }
    requirePosition(m_queryString, a.valuePos);
    requirePosition(m_queryString, b.valuePos);
    const std::size_t length = lengthInText(m_queryString, a.valuePos, a.valueLen);
    return length == lengthInText(m_queryString, b.valuePos, b.valueLen) &&
           std::memcmp(m_queryString.data() + a.valuePos, m_queryString.data() + b.valuePos, length) == 0;
}

void Query::removeDublicates()
{
    if (m_tokens.size() < 2)
    {
        return;
    }
    const bool success = setEditedString(TernCommonDetail::liesInOrder(m_queryString.size(), m_tokens)
                                             ? TernCommonDetail::withoutRepetitions(m_queryString, m_tokens)
                                             : withoutRepetitionsByPairs());
    TERN_COMMON_ASSERT_ON_LINE(success, 195);
}

std::string Query::withoutRepetitionsByPairs() const
{
    std::string text = m_queryString;
    for (std::size_t i = m_tokens.size(); i-- > 0;)
    {
        for (std::size_t j = i; j-- > 0;)
        {
            if (isEqual(m_tokens[i], m_tokens[j]))
            {
                removeTokenFromString(text, m_tokens[i]); // kept: not only at the first match
            }
        }
    }
    return text;
}

void Query::normalizeSpaces()
{
    const bool success = setEditedString(TernCommonDetail::liesInOrder(m_queryString.size(), m_tokens)
                                             ? TernCommonDetail::withNormalSpaces(m_queryString, m_tokens)
                                             : withNormalSpacesByToken());
    TERN_COMMON_ASSERT_ON_LINE(success, 230);
}

std::string Query::withNormalSpacesByToken() const
{
    std::string text = m_queryString;
    std::size_t next = text.size();
    for (std::size_t index = m_tokens.size(); index-- > 0;)
    {
        normalizeGap(text, m_tokens[index], next);
        next = m_tokens[index].pos;
    }
    return text;
}

void Query::removeTokenFromString(std::string& text, const Token& token) const
{
    requirePosition(text, token.pos);
    const std::size_t end = token.pos + lengthInText(text, token.pos, token.len);
    const std::size_t behind = std::min(text.find_first_not_of(SPACE, end), text.size());
    text.erase(token.pos, behind - token.pos);
}

void Query::normalizeSpaceAfterToken(std::string& text, std::size_t index)
{
    const Token* const token = getToken(index);
    if (!TERN_COMMON_ASSERT_ON_LINE(token != nullptr, 236))
    {
        return;
    }
    const Token* const following = getToken(index + 1);
    normalizeGap(text, *token, following != nullptr ? following->pos : text.size());
}
