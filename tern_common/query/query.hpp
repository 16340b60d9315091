#pragma once

#include "qua/connection.hpp"
#include "tern_common/export.hpp"
#include "tern_common/query/lazy_signal.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace TernCommonDetail
{
class LifeWatch;
}

/// The text of a search query and the tokens it consists of. A subclass supplies the language: how text is
/// split. The text and its tokens only ever change together, and only to a text that the language accepts.
///
/// Indices count tokens from 0 in the tokeniser's order; positions are bytes. Editing knows one separator,
/// the space; every other character is the language's business.
///
/// Main thread only. Listeners may read, edit again, connect, disconnect or destroy the query while they are
/// called: an edit is complete when they hear of it. Arguments may refer to the query's own text, or to a
/// text that a listener replaces.
class TERN_COMMON_API Query
{
public:
    /// One token, with the part of it that counts when tokens are compared. Expected in increasing order of
    /// `pos` and not overlapping. Records that break this, or lie outside the text, make edits that nobody
    /// wants or raise std::out_of_range, and nothing worse.
    struct Token
    {
        std::int32_t type;
        std::size_t pos;
        std::size_t len; ///< of the whole token; may be 0
        std::size_t valuePos;
        std::size_t valueLen;
    };

    static const std::size_t invalidTokenIndex = static_cast<std::size_t>(-1);
    static const int invalidTokenType = -1;

    Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;
    /// Makes every connection inert, then lets go of the text.
    virtual ~Query();

    /// Drops repeated tokens, then puts the spaces in order; up to two changes are announced. A subclass may
    /// add tidying of its own. Once a listener may have destroyed the query, that must not touch it.
    virtual void normalize();

    /// Whether the text says all it should: nothing in it is half typed. For the host to ask before it
    /// applies a query; the library takes accepted text as it is.
    virtual bool isComplete() const = 0;

    /// Takes @p text if the language accepts it, and announces the change. Text that is held already is taken
    /// without asking the language. Refused text changes nothing; neither does an exception of tokenize().
    bool setQueryString(const std::string& text);
    const std::string& getQueryString() const;

    /// The number of all tokens, of whatever type: @p type is there for callers that name one.
    std::size_t tokenCount(int type) const;
    /// The first token that starts before @p pos and does not end before it: a cursor in front of a token's
    /// first character is outside, one behind its last character is inside. A token of length 0 is never
    /// found. invalidTokenIndex if there is none.
    std::size_t getTokenIndexAt(std::size_t pos) const;
    /// The number of tokens, for an index beyond them.
    std::size_t getTokenPos(std::size_t index) const;
    /// 0 for an index beyond the tokens.
    std::size_t getTokenLen(std::size_t index) const;
    /// invalidTokenType for an index beyond the tokens.
    int getTokenType(std::size_t index) const;
    /// Empty for an index beyond the tokens. A record that starts beyond the text throws std::out_of_range.
    std::string getTokenString(std::size_t index) const;
    /// As getTokenString(), of the token's value.
    std::string getTokenValue(std::size_t index) const;

    /// Inserts @p token in front of token @p index, or at the end for an index beyond the tokens, between
    /// spaces. False if the language refuses the result.
    bool insertToken(std::size_t index, const std::string& token);
    /// Inserts @p token at byte @p pos, with a space on either side where there is none; the end of the text
    /// counts as a missing one, its beginning does not. False for a position beyond the end or if the
    /// language refuses the result.
    bool insertTokenString(std::size_t pos, std::string token);
    /// Takes out token @p index and the spaces behind it. False for an index beyond the tokens or if the
    /// language refuses the result.
    bool removeToken(std::size_t index);
    /// Puts @p token, as it is, in the place of token @p index and makes the gap behind it one space (none
    /// behind a token of length 0). False for an index beyond the tokens or if the language refuses the
    /// result.
    bool replaceToken(std::size_t index, const std::string& token);

    /// Calls @p slot after each change. The caller keeps the connection.
    [[nodiscard]] qua::Connection connectChanged(std::function<void()> slot) const;

protected:
    /// Splits @p text: appends one record a token to the empty @p tokens. False if the text is not a query.
    virtual bool tokenize(const std::string& text, std::vector<Token>& tokens) = 0;

    /// The record, or null for an index beyond the tokens; valid until the text changes.
    const Token* getToken(std::size_t index) const;
    /// The value of any record that fits the current text. One that starts beyond it throws
    /// std::out_of_range.
    std::string getTokenValue(const Token& token) const;

    /// Same type and same value, byte for byte; the rest of the token does not count.
    bool isEqual(const Token& a, const Token& b) const;

    /// Keeps the first of equal tokens: takes out each later one with the spaces behind it, once for every
    /// earlier token that equals it. From the third on, that reaches text behind the token: as many bytes
    /// as the token had, and the spaces behind them, go each further time. A refused result is reported.
    void removeDublicates();
    /// Makes every gap behind a token one space (none behind a token of length 0), the last one included;
    /// text in front of the first token stays. A refused result is reported.
    void normalizeSpaces();

private:
    bool setEditedString(std::string text);
    bool commit(std::string text);
    std::string withoutRepetitionsByPairs() const;
    std::string withNormalSpacesByToken() const;
    void removeTokenFromString(std::string& text, const Token& token) const;
    void normalizeSpaceAfterToken(std::string& text, std::size_t index);

    std::string m_queryString;
    std::vector<Token> m_tokens;
    mutable TernCommonDetail::LazySignal<void()> m_changed;
    TernCommonDetail::LifeWatch* m_operations = nullptr;
};
