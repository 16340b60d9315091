#include "tests/tern_common/query/private_edits.hpp"

void callRemoveToken(const Query& query, std::string& text, const Query::Token& token);
void callNormalizeSpace(Query& query, std::string& text, std::size_t index);

/// An explicit instantiation may name private members; this one makes friends with them.
template <auto Remove, auto Normalize>
struct PrivateEditsOpener
{
    friend void callRemoveToken(const Query& query, std::string& text, const Query::Token& token)
    {
        (query.*Remove)(text, token);
    }
    friend void callNormalizeSpace(Query& query, std::string& text, std::size_t index)
    {
        (query.*Normalize)(text, index);
    }
};

template struct PrivateEditsOpener<&Query::removeTokenFromString, &Query::normalizeSpaceAfterToken>;

void PrivateEdits::removeTokenFromString(const Query& query, std::string& text, const Query::Token& token)
{
    callRemoveToken(query, text, token);
}

void PrivateEdits::normalizeSpaceAfterToken(Query& query, std::string& text, std::size_t index)
{
    callNormalizeSpace(query, text, index);
}
