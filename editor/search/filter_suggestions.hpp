#pragma once

#include "editor/search/filter_query.hpp"

#include <cstddef>
#include <string>
#include <vector>

/// What a filter could sensibly ask for; the caller gathers it from what there is to find.
struct FilterVocabulary
{
    struct Key
    {
        std::string name;
        std::vector<std::string> values;
    };

    std::vector<std::string> words;
    std::vector<Key> keys;
};

/// Whole tokens to put in the place of the one under @p cursor (see Query::getTokenIndexAt and
/// Query::replaceToken), at most @p limit: what begins, in either case of ASCII letters, with what stands in
/// front of the cursor. A word is completed to keys and then to words, a quoted text to words, a field to the
/// values of its key; a negated token stays negated. In the order of the vocabulary; nothing outside all
/// tokens, and never the token that is there.
std::vector<std::string> suggestTokens(const FilterQuery& query, std::size_t cursor,
                                       const FilterVocabulary& vocabulary, std::size_t limit = 10);
