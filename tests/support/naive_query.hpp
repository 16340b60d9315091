#pragma once

#include "tests/support/test_query.hpp"

#include <cstddef>
#include <string>
#include <vector>

/// A query written for being obviously right: each rule as it is told, on a copy of the text, one string
/// operation after another. Throws what the standard library throws.
class NaiveQuery
{
public:
    explicit NaiveQuery(Tokenizer tokenizer) : m_tokenizer(std::move(tokenizer)) {}

    void setTokenizer(Tokenizer tokenizer) { m_tokenizer = std::move(tokenizer); }

    bool setQueryString(const std::string& text);
    std::size_t getTokenIndexAt(std::size_t pos) const;
    bool insertToken(std::size_t index, const std::string& token);
    bool insertTokenString(std::size_t pos, std::string token);
    bool removeToken(std::size_t index);
    bool replaceToken(std::size_t index, const std::string& token);
    bool isEqual(const Query::Token& a, const Query::Token& b) const;
    void removeDublicates();
    void normalizeSpaces();
    void normalize();

    static void removeTokenFromString(std::string& text, const Query::Token& token);
    void normalizeSpaceAfterToken(std::string& text, std::size_t index) const;

    std::string text;
    std::vector<Query::Token> tokens;
    int changes = 0;                  ///< how often the change was announced
    std::vector<std::string> reports; ///< texts of failed checks

private:
    static void normalizeGap(std::string& text, const Query::Token& token, std::size_t next);

    Tokenizer m_tokenizer;
};
