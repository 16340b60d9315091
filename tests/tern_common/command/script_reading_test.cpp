#include "tern_common/script_file.hpp"

#include "tern_common/script_origins.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <locale>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using Lines = std::vector<std::wstring>;

Lines readLines(std::string_view bytes)
{
    const TemporaryDirectory directory;
    ScriptFile file(directory.write("script.txt", bytes).wstring());
    Lines lines;
    while (file.readLine())
    {
        lines.emplace_back(file.line());
    }
    return lines;
}

/// Puts a global C++ locale in force for its scope.
class GlobalLocale
{
public:
    explicit GlobalLocale(const std::locale& locale) : m_before(std::locale::global(locale)) {}
    GlobalLocale(const GlobalLocale&) = delete;
    GlobalLocale& operator=(const GlobalLocale&) = delete;
    ~GlobalLocale() { std::locale::global(m_before); }

private:
    std::locale m_before;
};

TEST(ScriptFileTest, LinesEndWithALineFeed)
{
    EXPECT_EQ(readLines("a\nb\n"), (Lines{L"a", L"b"}));
    EXPECT_EQ(readLines("\n\n"), (Lines{L"", L""}));
    EXPECT_EQ(readLines(""), Lines{});
}

TEST(ScriptFileTest, TheLastLineNeedsNoLineFeed)
{
    EXPECT_EQ(readLines("a\nb"), (Lines{L"a", L"b"}));
}

TEST(ScriptFileTest, OneCarriageReturnBelongsToTheLineFeedBehindIt)
{
    EXPECT_EQ(readLines("a\r\nb\r\n"), (Lines{L"a", L"b"}));
    EXPECT_EQ(readLines("\r\n"), (Lines{L""}));
    EXPECT_EQ(readLines("a\r\r\n"), (Lines{L"a\r"}));
}

TEST(ScriptFileTest, AnyOtherCarriageReturnStays)
{
    EXPECT_EQ(readLines("a\rb\n"), (Lines{L"a\rb"}));
    EXPECT_EQ(readLines("a\r"), (Lines{L"a\r"}));
    EXPECT_EQ(readLines("a\n\r"), (Lines{L"a", L"\r"}));
}

TEST(ScriptFileTest, EachByteBecomesOneCharacterInTheClassicLocale)
{
    std::string bytes;
    std::wstring expected;
    for (int byte = 0; byte < 256; ++byte)
    {
        if (byte != '\n')
        {
            bytes.push_back(static_cast<char>(byte));
            expected.push_back(static_cast<wchar_t>(byte));
        }
    }
    EXPECT_EQ(readLines(bytes + "\nlast"), (Lines{expected, L"last"}));
}

TEST(ScriptFileTest, ALocaleThatOnlyChangesNumbersReadsAsTheClassicOne)
{
    struct Commas : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
    };
    const GlobalLocale global(std::locale(std::locale::classic(), new Commas));
    EXPECT_EQ(readLines("\xC3\xA9\n"), (Lines{L"\u00C3\u00A9"}));
}

TEST(ScriptFileTest, AnotherGlobalLocaleStaysInForce)
{
    const GlobalLocale global(std::locale("C.UTF-8"));
    EXPECT_EQ(readLines("\xC3\xA9 \xE2\x98\x83\nb\r\nc"), (Lines{L"\u00E9 \u2603", L"b", L"c"}));
}

TEST(ScriptFileTest, ALineMayBeAMegabyteLong)
{
    const std::size_t length = std::size_t{1} << 20U;
    const Lines lines = readLines(std::string(length, 'x') + "\r\n" + std::string(length + 1, '\xFF'));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], std::wstring(length, L'x'));
    EXPECT_EQ(lines[1], std::wstring(length + 1, L'\xFF'));
}

TEST(ScriptFileTest, NulBytesAreCharacters)
{
    EXPECT_EQ(readLines(std::string_view("a\0b\n\0", 5)),
              (Lines{std::wstring(L"a\0b", 3), std::wstring(1, L'\0')}));
}

RC_GTEST_PROP(ScriptFileTest, AnyBytesAreSplitAtLineFeedsWhereverABlockEnds, ())
{
    // Lengths around the reader's block size, so that line ends fall on its borders.
    const auto filler = *rc::gen::inRange<std::size_t>(0, 40000);
    const auto tail =
        *rc::gen::container<std::string>(rc::gen::elementOf(std::string("ab\r\n\n\0\x80\xFF", 8)));
    const std::string bytes = std::string(filler, 'f') + tail;

    Lines expected;
    std::size_t begin = 0;
    for (std::size_t end = bytes.find('\n'); begin < bytes.size(); end = bytes.find('\n', begin))
    {
        const bool terminated = end != std::string::npos;
        std::string line = bytes.substr(begin, terminated ? end - begin : std::string::npos);
        begin = terminated ? end + 1 : bytes.size();
        if (terminated && line.ends_with('\r'))
        {
            line.pop_back();
        }
        std::wstring wide;
        for (const char c : line)
        {
            wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
        }
        expected.push_back(wide);
    }
    RC_ASSERT(readLines(bytes) == expected);
}

TEST(ScriptOriginsTest, ConsecutiveLinesShareAnEntry)
{
    const auto script = std::make_shared<const std::wstring>(L"s");
    ScriptOrigins origins;
    for (std::size_t line = 1; line <= 100000; ++line)
    {
        origins.push(script, line);
    }
    EXPECT_EQ(origins.runCount(), 1U);
}

RC_GTEST_PROP(ScriptOriginsTest, GivesLinesBackInOrder,
              (const std::vector<std::pair<bool, std::uint8_t>>& pushes))
{
    const ScriptOrigins::Script scripts[] = {std::make_shared<const std::wstring>(L"a"),
                                             std::make_shared<const std::wstring>(L"b")};
    ScriptOrigins origins;
    ScriptOrigins second;
    std::size_t line = 0;
    std::vector<std::pair<ScriptOrigins::Script, std::size_t>> expected;
    for (const auto& [other, step] : pushes)
    {
        line += 1 + step % 2;
        (expected.size() < pushes.size() / 2 ? origins : second).push(scripts[other ? 1 : 0], line);
        expected.emplace_back(scripts[other ? 1 : 0], line);
    }
    origins.append(std::move(second));
    for (const auto& origin : expected)
    {
        RC_ASSERT(origins.pop() == origin);
    }
    RC_ASSERT(origins.runCount() == 0U);
}

} // namespace
