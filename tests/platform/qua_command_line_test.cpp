#include "qua/command_line.hpp"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

using qua::Detail::ProgramCandidates;
using qua::Detail::splitArguments;

namespace
{

using Texts = std::vector<std::string>;

/// Every candidate of the line with what is left behind it, as "program|rest".
Texts candidatesOf(std::string_view line)
{
    Texts result;
    ProgramCandidates candidates(line);
    while (const auto candidate = candidates.next())
    {
        result.push_back(candidate->program + "|" + std::string(line.substr(candidate->argumentsAt)));
    }
    return result;
}

/// Writes an argument so that it is read back as one.
std::string quoted(const std::string& argument)
{
    std::string result = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument)
    {
        result.append(c == '"' ? backslashes + 1 : 0, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        result += c;
    }
    return result.append(backslashes, '\\') + '"';
}

} // namespace

TEST(CommandLineArgumentsTest, NoTextHasNoArguments)
{
    EXPECT_EQ(splitArguments(""), Texts{});
    EXPECT_EQ(splitArguments(" \t "), Texts{});
}

TEST(CommandLineArgumentsTest, BlanksAndTabsSeparateButLineFeedsDoNot)
{
    EXPECT_EQ(splitArguments("  a \t b\tc  "), (Texts{"a", "b", "c"}));
    EXPECT_EQ(splitArguments("a\nb"), (Texts{"a\nb"}));
}

TEST(CommandLineArgumentsTest, QuotesKeepBlanksAndCommasTogetherAndMayMakeAnEmptyArgument)
{
    EXPECT_EQ(splitArguments(R"("a b,c" -uniquePerApp)"), (Texts{"a b,c", "-uniquePerApp"}));
    EXPECT_EQ(splitArguments(R"("" x)"), (Texts{"", "x"}));
    EXPECT_EQ(splitArguments(R"(a"b c"d)"), (Texts{"ab cd"}));
}

TEST(CommandLineArgumentsTest, BackslashesMeanSomethingBeforeAQuoteOnly)
{
    EXPECT_EQ(splitArguments(R"("abc" d e)"), (Texts{"abc", "d", "e"}));
    EXPECT_EQ(splitArguments(R"(a\\b d"e f"g h)"), (Texts{R"(a\\b)", "de fg", "h"}));
    EXPECT_EQ(splitArguments(R"(a\\\"b c d)"), (Texts{R"(a\"b)", "c", "d"}));
    EXPECT_EQ(splitArguments(R"(a\\\\"b c" d e)"), (Texts{R"(a\\b c)", "d", "e"}));
    EXPECT_EQ(splitArguments(R"("a\ b" c\)"), (Texts{R"(a\ b)", R"(c\)"}));
}

TEST(CommandLineArgumentsTest, TwoQuotesWithinQuotesStandForOneAndTheQuotedTextGoesOn)
{
    EXPECT_EQ(splitArguments(R"(a"b"" c d)"), (Texts{R"(ab" c d)"}));
    EXPECT_EQ(splitArguments(R"("a""b" c)"), (Texts{R"(a"b)", "c"}));
}

TEST(CommandLineArgumentsTest, AMissingClosingQuoteEndsWithTheText)
{
    EXPECT_EQ(splitArguments(R"("a b)"), (Texts{"a b"}));
    EXPECT_EQ(splitArguments(R"(")"), (Texts{""}));
}

RC_GTEST_PROP(CommandLineArgumentsTest, WhatIsQuotedByTheRulesComesBackAsItWas, ())
{
    const auto arguments = *rc::gen::container<Texts>(
        rc::gen::container<std::string>(rc::gen::elementOf(std::string("a\\\" \t,\xC3\xA4\xFF'$\n"))));
    std::string line;
    for (const std::string& argument : arguments)
    {
        line += ' ' + quoted(argument);
    }
    RC_ASSERT(splitArguments(line) == arguments);
}

TEST(CommandLineProgramTest, AnUnquotedProgramMayEndAtEachBlank)
{
    EXPECT_EQ(candidatesOf("/opt/my editor/ed \"a b\""),
              (Texts{"/opt/my| editor/ed \"a b\"", "/opt/my editor/ed| \"a b\"", "/opt/my editor/ed \"a| b\"",
                     "/opt/my editor/ed \"a b\"|"}));
}

TEST(CommandLineProgramTest, ARunOfBlanksIsOnePlaceToEnd)
{
    EXPECT_EQ(candidatesOf("a \t b"), (Texts{"a| \t b", "a \t b|"}));
    EXPECT_EQ(candidatesOf("a  "), (Texts{"a|  "}));
}

TEST(CommandLineProgramTest, AQuotedProgramEndsWithItsQuotesAndKeepsItsBackslashes)
{
    EXPECT_EQ(candidatesOf(R"("/opt/my editor/ed" a)"), (Texts{"/opt/my editor/ed| a"}));
    EXPECT_EQ(candidatesOf(R"("c:\dir\" a)"), (Texts{R"(c:\dir\| a)"}));
    EXPECT_EQ(candidatesOf(R"("a b"c d)"), (Texts{"a bc| d"}));
}

TEST(CommandLineProgramTest, NoLineNamesNoProgram)
{
    EXPECT_EQ(candidatesOf(""), Texts{});
    EXPECT_EQ(candidatesOf("   "), Texts{});
}

TEST(CommandLineProgramTest, ThousandsOfBlanksAreTriedNoFurtherThanAPathIsLong)
{
    std::string line = "/nothing";
    for (int i = 0; i < 100'000; ++i)
    {
        line += " x";
    }
    ProgramCandidates candidates(line);
    std::size_t count = 0;
    while (const auto candidate = candidates.next())
    {
        ++count;
        ASSERT_LE(candidate->program.size(), 32767U);
    }
    EXPECT_GT(count, 1000U);
    EXPECT_LT(count, 20'000U);
}
