#include "kodo/core/string_conversion.hpp"

#include "tests/support/property.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Kodo::utf8ToWide;
using Kodo::wideToUtf8;

constexpr bool WIDE_IS_UTF16 = sizeof(wchar_t) == 2;

/// U+FFFD in UTF-8.
const std::string BAD = "\xEF\xBF\xBD";

/// One wide character of any value, valid or not.
std::wstring unit(unsigned long value)
{
    return std::wstring(1, static_cast<wchar_t>(value));
}

TEST(StringConversionTest, AsciiStaysAsItIs)
{
    std::wstring wide;
    std::string narrow;
    for (int character = 0; character < 0x80; ++character)
    {
        wide += static_cast<wchar_t>(character);
        narrow += static_cast<char>(character);
    }

    EXPECT_EQ(wideToUtf8(wide), narrow);
    EXPECT_TRUE(utf8ToWide(narrow) == wide);
    EXPECT_EQ(wideToUtf8(L""), "");
    EXPECT_TRUE(utf8ToWide("").empty());
}

TEST(StringConversionTest, CharactersTakeAsManyBytesAsTheyNeed)
{
    const std::vector<std::pair<std::wstring, std::string>> pairs = {
        {L"\u0080", "\xC2\x80"},
        {L"\u00E4", "\xC3\xA4"},
        {L"\u07FF", "\xDF\xBF"},
        {L"\u0800", "\xE0\xA0\x80"},
        {L"\u20AC", "\xE2\x82\xAC"},
        {L"\uD7FF", "\xED\x9F\xBF"},
        {L"\uE000", "\xEE\x80\x80"},
        {L"\uFFFD", BAD},
        {L"\uFFFF", "\xEF\xBF\xBF"},
        {L"\U00010000", "\xF0\x90\x80\x80"},
        {L"\U0001F4A1", "\xF0\x9F\x92\xA1"},
        {L"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
    };
    for (const auto& [wide, narrow] : pairs)
    {
        EXPECT_EQ(wideToUtf8(wide), narrow);
        EXPECT_TRUE(utf8ToWide(narrow) == wide) << testing::PrintToString(narrow);
    }
}

TEST(StringConversionTest, NulIsACharacterAsAnyOther)
{
    using namespace std::string_literals;

    EXPECT_EQ(wideToUtf8(L"a\0\u00E4\0"s), "a\0\xC3\xA4\0"s);
    EXPECT_TRUE(utf8ToWide("a\0\xC3\xA4\0"s) == L"a\0\u00E4\0"s);
}

TEST(StringConversionTest, EachLoneSurrogateIsReplaced)
{
    for (const unsigned long surrogate : {0xD800UL, 0xDBFFUL, 0xDC00UL, 0xDFFFUL})
    {
        EXPECT_EQ(wideToUtf8(unit(surrogate)), BAD);
        EXPECT_EQ(wideToUtf8(L"a" + unit(surrogate) + L"b"), "a" + BAD + "b");
        EXPECT_EQ(wideToUtf8(L"\u00E4" + unit(surrogate)), "\xC3\xA4" + BAD);
    }
    EXPECT_EQ(wideToUtf8(unit(0xDC00) + unit(0xD800)), BAD + BAD);
    EXPECT_EQ(wideToUtf8(unit(0xD800) + unit(0xD800)), BAD + BAD);
}

TEST(StringConversionTest, ASurrogatePairIsACharacterInUtf16Alone)
{
    const std::string converted = wideToUtf8(unit(0xD83D) + unit(0xDCA1));

    EXPECT_EQ(converted, WIDE_IS_UTF16 ? "\xF0\x9F\x92\xA1" : BAD + BAD);
}

TEST(StringConversionTest, ValuesBeyondUnicodeAreReplaced)
{
    if (WIDE_IS_UTF16)
    {
        GTEST_SKIP() << "no such value in 16 bits";
    }
    for (const unsigned long value : {0x110000UL, 0x7FFFFFFFUL, 0x80000000UL, 0xFFFFFFFFUL, 0x80000041UL})
    {
        EXPECT_EQ(wideToUtf8(unit(value)), BAD) << value;
        EXPECT_EQ(wideToUtf8(L"a" + unit(value) + L"b"), "a" + BAD + "b") << value;
    }
}

/// What @p narrow becomes, with `?` for each U+FFFD and the other characters as they are.
std::string shown(const std::string& narrow)
{
    std::string text;
    for (const wchar_t character : utf8ToWide(narrow))
    {
        text += character == 0xFFFD ? '?' : static_cast<char>(character);
    }
    return text;
}

TEST(StringConversionTest, EachMalformedSequenceIsReplacedOnce)
{
    EXPECT_EQ(shown("a\x80z"), "a?z") << "a byte that only continues";
    EXPECT_EQ(shown("a\xC3z"), "a?z") << "a sequence broken off by a character";
    EXPECT_EQ(shown("a\xE2\x82z"), "a?z");
    EXPECT_EQ(shown("a\xF0\x9F\x92z"), "a?z");
    EXPECT_EQ(shown("a\xC3"), "a?") << "a sequence broken off by the end";
    EXPECT_EQ(shown("a\xE2\x82"), "a?");
    EXPECT_EQ(shown("a\xF0\x9F\x92"), "a?");
    EXPECT_EQ(shown("a\xC3\xC3z"), "a??z");
}

TEST(StringConversionTest, BytesThatCannotBelongTogetherAreReplacedOneByOne)
{
    EXPECT_EQ(shown("\xC0\x80z"), "??z") << "overlong in two bytes";
    EXPECT_EQ(shown("\xC1\xBFz"), "??z");
    EXPECT_EQ(shown("\xE0\x80\x80z"), "???z") << "overlong in three";
    EXPECT_EQ(shown("\xE0\x9F\xBFz"), "???z");
    EXPECT_EQ(shown("\xF0\x8F\xBF\xBFz"), "????z") << "overlong in four";
    EXPECT_EQ(shown("\xED\xA0\x80z"), "???z") << "a surrogate";
    EXPECT_EQ(shown("\xED\xBF\xBFz"), "???z");
    EXPECT_EQ(shown("\xF4\x90\x80\x80z"), "????z") << "beyond U+10FFFF";
    EXPECT_EQ(shown("\xF5\x80\x80\x80z"), "????z");
    EXPECT_EQ(shown("\xF8\x88\x80\x80\x80z"), "?????z") << "five bytes";
    EXPECT_EQ(shown("\xFC\x84\x80\x80\x80\x80z"), "??????z") << "six bytes";
    EXPECT_EQ(shown("\xFE\xFFz"), "??z");
}

TEST(StringConversionTest, NoMalformedSequenceSwallowsTheCharacterBehindIt)
{
    for (int lead = 0x80; lead < 0x100; ++lead)
    {
        const std::string text = std::string(1, static_cast<char>(lead)) + "\"z";
        EXPECT_EQ(shown(text), "?\"z") << lead;
    }
}

std::wstring anyUnicodeText()
{
    const auto codePoints = *rc::gen::container<std::vector<unsigned long>>(rc::gen::oneOf(
        rc::gen::inRange(0UL, 0x80UL), rc::gen::inRange(0x80UL, 0x800UL), rc::gen::inRange(0x800UL, 0xD800UL),
        rc::gen::inRange(0xE000UL, 0x10000UL), rc::gen::inRange(0x10000UL, 0x110000UL)));
    std::wstring text;
    for (unsigned long codePoint : codePoints)
    {
        if (WIDE_IS_UTF16 && codePoint >= 0x10000)
        {
            codePoint -= 0x10000;
            text += unit(0xD800 + (codePoint >> 10U)) + unit(0xDC00 + (codePoint & 0x3FFU));
        }
        else
        {
            text += unit(codePoint);
        }
    }
    return text;
}

RC_GTEST_PROP(StringConversionTest, UnicodeTextComesBackAsItWas, ())
{
    const std::wstring text = anyUnicodeText();

    RC_ASSERT(utf8ToWide(wideToUtf8(text)) == text);
}

RC_GTEST_PROP(StringConversionTest, WhateverGoesInWellFormedTextComesOut, (const std::string& bytes))
{
    const std::wstring wide = utf8ToWide(bytes);

    RC_ASSERT(utf8ToWide(wideToUtf8(wide)) == wide);
}

} // namespace
