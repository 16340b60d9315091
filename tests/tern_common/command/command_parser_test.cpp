#include "tern_common/command_parser.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <cwctype>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using Result = CommandParser::Result;

static_assert(static_cast<int>(Result::EMPTY) == 0 && static_cast<int>(Result::FAILED) == 1 &&
              static_cast<int>(Result::PARSED) == 2);

/// What a line parses to, with its arguments as text: i12, s"x", btrue.
struct Parsed
{
    Result result = Result::EMPTY;
    std::vector<std::string> path;
    std::vector<std::string> args;

    bool operator==(const Parsed&) const = default;
};

std::string describe(const vell::Variant& argument)
{
    bool flag = false;
    std::int64_t number = 0;
    std::string text;
    if (argument.tryCast(flag))
    {
        return flag ? "btrue" : "bfalse";
    }
    if (argument.tryCast(number))
    {
        return "i" + std::to_string(number);
    }
    return argument.tryCast(text) ? "s\"" + text + "\"" : "?";
}

Parsed parse(std::wstring_view line)
{
    CommandParser parser(line);
    parser.parse();
    Parsed parsed;
    parsed.result = parser.result();
    if (parsed.result == Result::PARSED)
    {
        EXPECT_TRUE(parser.eol());
        parsed.path = parser.path();
        for (const vell::Variant& argument : parser.args())
        {
            parsed.args.push_back(describe(argument));
        }
    }
    return parsed;
}

std::ostream& operator<<(std::ostream& out, const Parsed& parsed)
{
    out << static_cast<int>(parsed.result) << ": ";
    for (const std::string& name : parsed.path)
    {
        out << name << " ";
    }
    for (const std::string& argument : parsed.args)
    {
        out << argument << " ";
    }
    return out;
}

void expectParsed(std::wstring_view line, std::vector<std::string> path, std::vector<std::string> args = {})
{
    SCOPED_TRACE(testing::PrintToString(line));
    EXPECT_EQ(parse(line), (Parsed{Result::PARSED, std::move(path), std::move(args)}));
}

/// Expects the line to fail with one message, or in silence where @p message is null.
void expectFailed(std::wstring_view line, const char* message)
{
    SCOPED_TRACE(testing::PrintToString(line));
    ExpectReports reports(message != nullptr ? std::vector<std::string>{message}
                                             : std::vector<std::string>{});
    EXPECT_EQ(parse(line), (Parsed{Result::FAILED, {}, {}}));
    for (const Report& report : reports.reports())
    {
        EXPECT_EQ(report.priority, 5);
        EXPECT_FALSE(report.critical);
    }
}

TEST(CommandParserTest, BlankLinesAndCommentsAreEmpty)
{
    for (const wchar_t* line : {L"", L"   ", L"\t \t", L"# note", L" \t# note", L"#", L"#a.b()"})
    {
        EXPECT_EQ(parse(line), (Parsed{Result::EMPTY, {}, {}})) << testing::PrintToString(line);
    }
}

TEST(CommandParserTest, ReadsThePathAndArgumentsOfEachType)
{
    expectParsed(L"obj . sub . cmd ( 1 , \"x\" , true )", {"obj", "sub", "cmd"}, {"i1", "s\"x\"", "btrue"});
    expectParsed(L"world.roads.addPoint(12, \"name\", true)", {"world", "roads", "addPoint"},
                 {"i12", "s\"name\"", "btrue"});
    expectParsed(L"c(false,\"\")", {"c"}, {"bfalse", "s\"\""});
}

TEST(CommandParserTest, BlanksMayStandAroundEveryMark)
{
    expectParsed(L"cmd ()", {"cmd"});
    expectParsed(L"cmd( )", {"cmd"});
    expectParsed(L"\t cmd\t(\t)\t ", {"cmd"});
    expectParsed(L" a\t. b .c ( 1\t,2 ) ", {"a", "b", "c"}, {"i1", "i2"});
}

TEST(CommandParserTest, NamesHoldLettersDigitsAndUnderscores)
{
    expectParsed(L"_x1.Y_2()", {"_x1", "Y_2"});
    expectParsed(L"_()", {"_"});
    expectFailed(L"1cmd()", "Unexpected character");
    expectFailed(L"a.1b()", "Unexpected character");
    expectFailed(L"a-b()", "Unexpected character");
}

TEST(CommandParserTest, ACommentMayNotFollowACommand)
{
    expectFailed(L"a.b() # note", "Parse command: unexpected character");
    expectFailed(L"a.b() c()", "Parse command: unexpected character");
    expectFailed(L"a.b())", "Parse command: unexpected character");
    expectFailed(L"a.b()\r", "Parse command: unexpected character");
    expectFailed(L"a.b();", "Parse command: unexpected character");
}

TEST(CommandParserTest, AMissingArgumentListIsReported)
{
    expectFailed(L"cmd", "Unexpected end of line");
    expectFailed(L"cmd  ", "Unexpected end of line");
    expectFailed(L"cmd 1", "Unexpected character");
    expectFailed(L"obj.", "Unexpected end of line");
    expectFailed(L"obj. ", "Unexpected end of line");
    expectFailed(L"a..b()", "Unexpected character");
    expectFailed(L".a()", "Unexpected character");
    expectFailed(L"(1)", "Unexpected character");
}

TEST(CommandParserTest, AnUnfinishedArgumentListIsReported)
{
    expectFailed(L"cmd(", "Unexpected end of line");
    expectFailed(L"cmd(  ", "Unexpected end of line");
    expectFailed(L"cmd(1", "Unexpected end of line");
    expectFailed(L"cmd(1 ", "Unexpected end of line");
    expectFailed(L"cmd(1,", "Unexpected end of line");
    expectFailed(L"cmd(1, ", "Unexpected end of line");
    expectFailed(L"cmd(1,)", "Unexpected character");
    expectFailed(L"cmd(,1)", "Unexpected character");
    expectFailed(L"cmd(1 2)", "Unexpected character");
    expectFailed(L"cmd(1,,2)", "Unexpected character");
}

TEST(CommandParserTest, NothingButADigitALetterOrAQuoteStartsAnArgument)
{
    expectFailed(L"cmd(-1)", "Unexpected character");
    expectFailed(L"cmd(+1)", "Unexpected character");
    expectFailed(L"cmd(.5)", "Unexpected character");
    expectFailed(L"cmd(_a)", "Unexpected character");
    expectFailed(L"cmd('a')", "Unexpected character");
    expectFailed(L"cmd(1.5)", "Unexpected character");
    expectFailed(L"cmd(1a)", "Unexpected character");
}

TEST(CommandParserTest, ConstantsAreTrueAndFalseExactly)
{
    expectFailed(L"cmd(True)", "Unknown named constant");
    expectFailed(L"cmd(TRUE)", "Unknown named constant");
    expectFailed(L"cmd(truetrue)", "Unknown named constant");
    expectFailed(L"cmd(nil)", "Unknown named constant");
    expectFailed(L"cmd(true1)", "Unexpected character");
    expectFailed(L"cmd(true_)", "Unexpected character");
    expectFailed(L"cmd(tru", "Unknown named constant");
}

TEST(CommandParserTest, AStringEndsAtTheNextQuoteAndKnowsNoEscapes)
{
    expectParsed(L"c(\"a\\\")", {"c"}, {"s\"a\\\""});
    expectParsed(L"c(\"a, b) # c\", 1)", {"c"}, {"s\"a, b) # c\"", "i1"});
    expectFailed(L"c(\"a\\\"b\")", "Unexpected character");
    expectFailed(L"c(\"abc)", nullptr);
    expectFailed(L"c(\"", nullptr);
    expectFailed(L"c(1, \"abc", nullptr);
}

TEST(CommandParserTest, TextIsConvertedToUtf8)
{
    expectParsed(L"c(\"\u00e9 \u4e16\")", {"c"}, {"s\"\xC3\xA9 \xE4\xB8\x96\""});
    const std::wstring withNul(L"c(\"a\0b\")", 8);
    expectParsed(withNul, {"c"}, {std::string("s\"a\0b\"", 6)});
    expectParsed(std::wstring(L"c(\"\xD800\")"), {"c"}, {"s\"\xEF\xBF\xBD\""});
}

TEST(CommandParserTest, ANulIsACharacterLikeAnyOther)
{
    expectFailed(std::wstring(L"a\0b()", 5), "Unexpected character");
    expectFailed(std::wstring(L"a()\0", 4), "Parse command: unexpected character");
    expectFailed(std::wstring(L"\0", 1), "Unexpected character");
}

TEST(CommandParserTest, NumbersReachTheLargest32BitInteger)
{
    expectParsed(L"c(0,2147483647)", {"c"}, {"i0", "i2147483647"});
    expectParsed(L"c(007)", {"c"}, {"i7"});
    expectParsed(L"c(00000000000000000000000000000000002147483647)", {"c"}, {"i2147483647"});
}

TEST(CommandParserTest, ALargerNumberThrows)
{
    for (const wchar_t* line : {L"c(99999999999)", L"c(2147483648)", L"c(1, 18446744073709551617)",
                                L"c(99999999999999999999999999999999999999999"})
    {
        CommandParser parser(line);
        try
        {
            parser.parse();
            ADD_FAILURE() << "no exception for " << testing::PrintToString(line);
        }
        catch (const std::out_of_range& error)
        {
            EXPECT_STREQ(error.what(), "stoi argument out of range");
        }
    }
}

TEST(CommandParserTest, OnlyTheFirstMistakeIsReported)
{
    expectFailed(L"a(-, +) ] x", "Unexpected character");
    expectFailed(L"a(maybe, -1", "Unknown named constant");
}

TEST(CommandParserTest, ALineOfAMillionDotsFailsAtItsSecond)
{
    expectFailed(L"a" + std::wstring(1 << 20, L'.'), "Unexpected character");
}

TEST(CommandParserTest, PathsAndListsMayBeLong)
{
    std::wstring line = L"a";
    for (int i = 0; i < 99; ++i)
    {
        line += L".a";
    }
    line += L"(0";
    for (int i = 0; i < 99; ++i)
    {
        line += L",0";
    }
    line += L")";
    expectParsed(line, std::vector<std::string>(100, "a"), std::vector<std::string>(100, "i0"));
}

TEST(CommandParserTest, TheCursorStandsAtTheFirstCharacterAtFirst)
{
    const CommandParser parser(L"x()");
    EXPECT_FALSE(parser.eol());
    EXPECT_EQ(parser.current(), L'x');
    EXPECT_TRUE(CommandParser(L"").eol());
}

TEST(CommandParserTest, AMistakeIsAPlainMessageOfPriorityFiveWithoutCategoryAndSource)
{
    const CollectReports ignored;
    std::vector<std::string> seen;
    const Kodo::DebugMessageSink sink(
        [&seen](const Kodo::DebugMessage& message)
        {
            seen.emplace_back(message.text);
            EXPECT_EQ(message.componentPriority, 0);
            EXPECT_EQ(message.messagePriority, 5);
            EXPECT_EQ(message.category, "");
            EXPECT_EQ(message.source, 0);
            EXPECT_FALSE(message.critical);
        });
    parse(L"cmd");
    parse(L"cmd 1");
    parse(L"cmd(True)");
    parse(L"cmd() 1");
    EXPECT_EQ(seen,
              (std::vector<std::string>{"Unexpected end of line", "Unexpected character",
                                        "Unknown named constant", "Parse command: unexpected character"}));
}

#if !defined(_WIN32)
TEST(CommandParserTest, BeyondAsciiTheCLibrarysLocaleSaysWhatIsALetterOrABlank)
{
    {
        const CollectReports ignored;
        EXPECT_EQ(parse(L"gr\u00f6\u00dfe()").result,
                  Result::FAILED); // the classic locale knows no such letter
    }
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    expectParsed(L"gr\u00f6\u00dfe.\u00e9()", {"gr\xC3\xB6\xC3\x9F"
                                               "e",
                                               "\xC3\xA9"});
    expectParsed(L"\u2003a\u2003(\u20031\u2003)\u2003", {"a"}, {"i1"}); // an em space is a blank
    expectFailed(L"a(\u00e9)", "Unknown named constant");
    expectFailed(L"a(tru\u00e9)", "Unknown named constant");
    expectFailed(L"a(1\u0663)", "Unexpected character"); // digits are ASCII alone
    expectFailed(L"\u2603()", "Unexpected character");
    std::setlocale(LC_CTYPE, "C");
}
#endif

TEST(CommandParserTest, WhatWasParsedIsReadAndMovedOut)
{
    const std::wstring line = L"a.b(1)";
    CommandParser parser(line);
    parser.parse();
    const CommandParser& reader = parser;
    EXPECT_EQ(reader.path(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(reader.args().size(), 1U);
    const std::vector<std::string> path = std::move(parser.path());
    EXPECT_EQ(path.size(), 2U);
    EXPECT_TRUE(parser.path().empty());
}

TEST(CommandParserTest, AsciiIsClassifiedAsTheCLibraryDoes)
{
    for (wchar_t c = 0; c < 0x80; ++c)
    {
        const auto wide = static_cast<std::wint_t>(c);
        const std::wstring text(1, c);
        CollectReports ignored;
        SCOPED_TRACE(static_cast<int>(c));
        const bool blank = std::iswblank(wide) != 0;
        EXPECT_EQ(parse(text + L"()").result == Result::PARSED, std::iswalpha(wide) != 0 || c == L'_');
        EXPECT_EQ(parse(L"a" + text + L"()").result == Result::PARSED,
                  std::iswalnum(wide) != 0 || c == L'_' || blank);
        EXPECT_EQ(parse(L"a(" + text + L")").result == Result::PARSED, std::iswdigit(wide) != 0 || blank);
    }
}

} // namespace
