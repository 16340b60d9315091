// The query's operations on texts of 10 to 10,000 tokens, beside copying the text and beside editing it step
// by step. Ratios of medians end the run.

#include "benchmarks/ratio_report.hpp"
#include "tests/support/naive_query.hpp"
#include "tests/support/test_query.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

constexpr std::size_t TOKEN_COUNTS[] = {10, 100, 1'000, 10'000};

/// The time that one call took, alone, in seconds, and the reading of the clock with it: up to 100 tokens
/// memcpy takes less than that, so the ratios to it are then smaller than those of the calls alone.
template <class Call>
double secondsOf(Call call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "wrong result: %s\n", what);
    std::exit(1);
}

/// Words of four to ten letters, each repeated once on average: half of the tokens are repetitions. Every
/// other gap is out of order.
std::string textOf(std::size_t count)
{
    std::mt19937_64 random(count);
    std::vector<std::string> words;
    for (std::size_t index = 0; index < count / 2; ++index)
    {
        const std::string word = "w" + std::to_string(index * 7919 + 100);
        words.push_back(word + std::string(static_cast<std::size_t>(random() % 4), 'x'));
    }
    words.resize(count);
    std::copy_n(words.begin(), count / 2, words.begin() + static_cast<std::ptrdiff_t>(count / 2));
    std::shuffle(words.begin(), words.end(), random);
    std::string text;
    for (std::size_t index = 0; index < words.size(); ++index)
    {
        text += words[index];
        text.append(index % 2 + 1, ' ');
    }
    return text;
}

/// Takes edits without splitting them: what is measured is the edit, not a tokeniser.
class PreparedQuery : public TestQuery
{
public:
    PreparedQuery() : TestQuery(tokenizer()) {}
    explicit PreparedQuery(const std::string& text) : TestQuery(tokenizer()) { prepare(text); }

    void prepare(const std::string& text)
    {
        if (m_text != text)
        {
            m_text = text;
            m_tokens.clear();
            splitWords(text, m_tokens);
        }
        setQueryString(text);
    }
    const std::vector<Token>& prepared() const noexcept { return m_tokens; }

private:
    Tokenizer tokenizer()
    {
        return [this](const std::string& text, std::vector<Token>& tokens)
        {
            if (text == m_text)
            {
                tokens = m_tokens;
            }
            return true;
        };
    }

    std::string m_text;
    std::vector<Token> m_tokens;
};

/// The double loop over views, and erasing in place: the plain way, without a copy too many.
std::string doubleLoop(const std::string& text, const std::vector<Query::Token>& tokens)
{
    const std::string_view view(text);
    std::string copy = text;
    for (std::size_t i = tokens.size(); i-- > 0;)
    {
        const std::string_view value = view.substr(tokens[i].valuePos, tokens[i].valueLen);
        for (std::size_t j = i; j-- > 0;)
        {
            if (tokens[j].type == tokens[i].type &&
                view.substr(tokens[j].valuePos, tokens[j].valueLen) == value)
            {
                NaiveQuery::removeTokenFromString(copy, tokens[i]);
            }
        }
    }
    return copy;
}

std::string gapByGap(const std::string& text, const std::vector<Query::Token>& tokens)
{
    std::string copy = text;
    std::size_t next = copy.size();
    for (auto token = tokens.rbegin(); token != tokens.rend(); ++token)
    {
        const std::size_t end = token->pos + token->len;
        if (next - end != 1 || copy[end] != ' ')
        {
            copy.replace(end, next - end, 1, ' ');
        }
        next = token->pos;
    }
    return copy;
}

/// Measures @p edit of a query that holds @p text each time, alone.
void measureEdit(benchmark::State& state, const std::string& text, const std::string& expected,
                 const std::function<void(PreparedQuery&)>& edit)
{
    PreparedQuery query;
    for (auto iteration : state)
    {
        query.prepare(text);
        state.SetIterationTime(secondsOf([&] { edit(query); }));
    }
    if (query.getQueryString() != expected)
    {
        fail("the edited text");
    }
}

void copyText(benchmark::State& state)
{
    const std::string text = textOf(static_cast<std::size_t>(state.range(0)));
    std::string copy(text.size(), '\0');
    for (auto iteration : state)
    {
        state.SetIterationTime(secondsOf(
            [&]
            {
                std::memcpy(copy.data(), text.data(), text.size());
                benchmark::ClobberMemory();
            }));
    }
}

std::string textOf(const benchmark::State& state)
{
    return textOf(static_cast<std::size_t>(state.range(0)));
}

void removeDublicates(benchmark::State& state)
{
    const std::string text = textOf(state);
    const std::string expected = doubleLoop(text, PreparedQuery(text).prepared());
    if (expected.size() > text.size() * 2 / 3)
    {
        fail("the text has too few repetitions");
    }
    measureEdit(state, text, expected, [](PreparedQuery& query) { query.removeDublicates(); });
}

/// Measures a reference that makes a new text of the old one and its tokens.
void measureReference(benchmark::State& state,
                      std::string (*edit)(const std::string&, const std::vector<Query::Token>&))
{
    const std::string text = textOf(state);
    const PreparedQuery query(text);
    std::string result;
    for (auto iteration : state)
    {
        state.SetIterationTime(secondsOf([&] { result = edit(text, query.prepared()); }));
        benchmark::DoNotOptimize(result.data());
    }
}

void removeDublicatesByDoubleLoop(benchmark::State& state)
{
    measureReference(state, doubleLoop);
}

void normalizeSpaces(benchmark::State& state)
{
    const std::string text = textOf(state);
    const std::string expected = gapByGap(text, PreparedQuery(text).prepared());
    measureEdit(state, text, expected, [](PreparedQuery& query) { query.normalizeSpaces(); });
}

void normalizeSpacesGapByGap(benchmark::State& state)
{
    measureReference(state, gapByGap);
}

/// The edit of the middle token, checked against the naive query.
template <class Edit>
void measureTokenEdit(benchmark::State& state, Edit edit)
{
    const std::string text = textOf(state);
    const auto middle = static_cast<std::size_t>(state.range(0)) / 2;
    NaiveQuery naive(splitWords);
    naive.setQueryString(text);
    edit(naive, middle);
    measureEdit(state, text, naive.text, [&](PreparedQuery& query) { edit(query, middle); });
}

/// The same edit on a naive query; its tokeniser gives back the tokens that the first text has.
template <class Edit>
void measureNaiveTokenEdit(benchmark::State& state, Edit edit)
{
    const std::string text = textOf(state);
    const std::vector<Query::Token> tokens = PreparedQuery(text).prepared();
    NaiveQuery naive([](const std::string&, std::vector<Query::Token>&) { return true; });
    for (auto iteration : state)
    {
        naive.text = text;
        naive.tokens = tokens;
        state.SetIterationTime(secondsOf([&] { edit(naive, tokens.size() / 2); }));
    }
}

const std::string& newToken()
{
    static const std::string token = "replacement";
    return token;
}
constexpr auto insertMiddle = [](auto& query, std::size_t middle) { query.insertToken(middle, newToken()); };
constexpr auto removeMiddle = [](auto& query, std::size_t middle) { query.removeToken(middle); };
constexpr auto replaceMiddle = [](auto& query, std::size_t middle)
{ query.replaceToken(middle, newToken()); };

void insertToken(benchmark::State& state)
{
    measureTokenEdit(state, insertMiddle);
}
void insertTokenNaively(benchmark::State& state)
{
    measureNaiveTokenEdit(state, insertMiddle);
}
void removeToken(benchmark::State& state)
{
    measureTokenEdit(state, removeMiddle);
}
void removeTokenNaively(benchmark::State& state)
{
    measureNaiveTokenEdit(state, removeMiddle);
}
void replaceToken(benchmark::State& state)
{
    measureTokenEdit(state, replaceMiddle);
}
void replaceTokenNaively(benchmark::State& state)
{
    measureNaiveTokenEdit(state, replaceMiddle);
}

/// A cursor behind the last token: the longest search.
void getTokenIndexAt(benchmark::State& state)
{
    const PreparedQuery query(textOf(state));
    const std::size_t last = query.prepared().size() - 1;
    const std::size_t pos = query.getTokenPos(last) + 1;
    std::size_t found = 0;
    for (auto iteration : state)
    {
        state.SetIterationTime(secondsOf([&] { found = query.getTokenIndexAt(pos); }));
    }
    if (found != last)
    {
        fail("getTokenIndexAt");
    }
}
void getTokenIndexAtNaively(benchmark::State& state)
{
    NaiveQuery query(splitWords);
    query.setQueryString(textOf(state));
    const std::size_t pos = query.tokens.back().pos + 1;
    for (auto iteration : state)
    {
        state.SetIterationTime(secondsOf([&] { benchmark::DoNotOptimize(query.getTokenIndexAt(pos)); }));
    }
}

struct Measured
{
    const char* name;
    void (*run)(benchmark::State&);
};

constexpr Measured MEASURED[] = {
    {"memcpy", copyText},
    {"removeDublicates", removeDublicates},
    {"removeDublicatesByDoubleLoop", removeDublicatesByDoubleLoop},
    {"normalizeSpaces", normalizeSpaces},
    {"normalizeSpacesGapByGap", normalizeSpacesGapByGap},
    {"insertToken", insertToken},
    {"insertTokenNaively", insertTokenNaively},
    {"removeToken", removeToken},
    {"removeTokenNaively", removeTokenNaively},
    {"replaceToken", replaceToken},
    {"replaceTokenNaively", replaceTokenNaively},
    {"getTokenIndexAt", getTokenIndexAt},
    {"getTokenIndexAtNaively", getTokenIndexAtNaively},
};

/// An operation beside its reference, with a limit for each of TOKEN_COUNTS. Where texts are short, taking
/// the new text weighs more than making it, and the references don't do that.
struct Compared
{
    const char* subject;
    const char* reference;
    std::array<double, std::size(TOKEN_COUNTS)> limits;
};

constexpr Compared COMPARED[] = {
    {"removeDublicates", "removeDublicatesByDoubleLoop", {2.5, 0.5, 0.05, 1.0 / 150}},
    {"removeDublicates", "memcpy", {20, 80, 200, 200}},
    {"normalizeSpaces", "normalizeSpacesGapByGap", {2.5, 1.5, 0.5, 0.05}},
    {"normalizeSpaces", "memcpy", {20, 40, 60, 20}},
    {"insertToken", "insertTokenNaively", {1.2, 1.2, 1, 1}},
    {"removeToken", "removeTokenNaively", {1.2, 1.2, 1, 1}},
    {"replaceToken", "replaceTokenNaively", {1.2, 1.2, 1, 1}},
    {"getTokenIndexAt", "getTokenIndexAtNaively", {1.3, 1.2, 1.1, 1.1}},
};

std::string nameOf(const char* operation, std::size_t count)
{
    return std::string(operation) + "/" + std::to_string(count) + "/manual_time";
}

} // namespace

int main(int argc, char** argv)
{
    for (const Measured& measured : MEASURED)
    {
        benchmark::internal::Benchmark* const registered =
            benchmark::RegisterBenchmark(measured.name, measured.run)->UseManualTime();
        for (const std::size_t count : TOKEN_COUNTS)
        {
            registered->Arg(static_cast<std::int64_t>(count));
        }
    }
    std::vector<Ratio> ratios;
    for (const Compared& compared : COMPARED)
    {
        for (std::size_t size = 0; size < std::size(TOKEN_COUNTS); ++size)
        {
            ratios.push_back({nameOf(compared.subject, TOKEN_COUNTS[size]),
                              nameOf(compared.reference, TOKEN_COUNTS[size]), compared.limits[size]});
        }
    }
    return runBenchmarks(argc, argv, ratios);
}
