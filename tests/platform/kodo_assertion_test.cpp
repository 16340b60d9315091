#include "kodo/core/assertion.hpp"

#include "kodo/core/debug_message_helper.hpp"

#include "tern_common/assertion.hpp"
#include "tests/support/reports.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace
{

using Kodo::pathBelow;

constexpr bool isBelow(const char* file, std::string_view root, std::string_view expected)
{
    return std::string_view(pathBelow(file, root)) == expected;
}

static_assert(isBelow("/src/harbour/quay/lamp.cpp", "harbour", "quay/lamp.cpp"));
static_assert(isBelow("C:\\src\\harbour\\quay\\lamp.cpp", "harbour", "quay\\lamp.cpp"));
static_assert(isBelow("C:\\src/harbour\\quay/lamp.cpp", "harbour", "quay/lamp.cpp"));
static_assert(isBelow("harbour/lamp.cpp", "harbour", "lamp.cpp"));
static_assert(isBelow("../harbour/lamp.cpp", "harbour", "lamp.cpp"));
// Of several directories of that name it is the last.
static_assert(isBelow("/harbour/harbour/lamp.cpp", "harbour", "lamp.cpp"));
static_assert(isBelow("/harbour/build/../harbour/quay/lamp.cpp", "harbour", "quay/lamp.cpp"));
// The name alone counts, not a part of another one, nor the file's own.
static_assert(isBelow("/src/harbour/old_harbour/lamp.cpp", "harbour", "old_harbour/lamp.cpp"));
static_assert(isBelow("/src/harbour/harbour2/lamp.cpp", "harbour", "harbour2/lamp.cpp"));
static_assert(isBelow("/src/harbour/harbour.cpp", "harbour", "harbour.cpp"));
static_assert(isBelow("/src/harbour/quay/harbour", "harbour", "quay/harbour"));
static_assert(isBelow("/src/harbour/quay/old_harbour", "harbour", "quay/old_harbour"));
// Without such a directory the whole path stands.
static_assert(isBelow("/src/quay/lamp.cpp", "harbour", "/src/quay/lamp.cpp"));
static_assert(isBelow("/src/old_harbour/lamp.cpp", "harbour", "/src/old_harbour/lamp.cpp"));
static_assert(isBelow("/src/harbour2/lamp.cpp", "harbour", "/src/harbour2/lamp.cpp"));
static_assert(isBelow("/src/harbour", "harbour", "/src/harbour"));
static_assert(isBelow("harbour", "harbour", "harbour"));
static_assert(isBelow("lamp", "harbour", "lamp"));
static_assert(isBelow("", "harbour", ""));

TEST(AssertionTest, AReportIsTheSameToTheByte)
{
    const ExpectReports reports{"x"};

    Kodo::reportAssertion("x", "path", 12);

    ASSERT_EQ(reports.reports().size(), 1U);
    const Report& report = reports.reports().front();
    EXPECT_EQ(report.whole, "ASSERTION FAILED: x\r\npath(12)\r\n");
    EXPECT_TRUE(report.critical);
    EXPECT_EQ(report.priority, Kodo::DebugMessageHelper::CRITICAL_PRIORITY);
}

TEST(AssertionTest, PercentSignsInAnExpressionAreText)
{
    const ExpectReports reports{"a %d b == \"%s%n\""};

    Kodo::reportAssertion("a %d b == \"%s%n\"", "100%s", -1);

    ASSERT_EQ(reports.reports().size(), 1U);
    EXPECT_EQ(reports.reports().front().whole, "ASSERTION FAILED: a %d b == \"%s%n\"\r\n100%s(-1)\r\n");
}

TEST(AssertionTest, AnExpressionOfAnyLengthIsReportedWhole)
{
    for (const std::size_t length : {400U, 480U, 490U, 511U, 512U, 513U, 100000U})
    {
        const std::string expression(length, 'e');
        const ExpectReports reports{expression};

        Kodo::reportAssertion(expression.c_str(), "path", 12);

        ASSERT_EQ(reports.reports().size(), 1U);
        EXPECT_EQ(reports.reports().front().whole, "ASSERTION FAILED: " + expression + "\r\npath(12)\r\n");
    }
}

TEST(AssertionTest, TheMacroYieldsTheValueAndReportsWhatIsFalse)
{
    int evaluated = 0;
    EXPECT_TRUE(KODO_ASSERT(++evaluated == 1));

    const ExpectReports reports{"evaluated == 0"};
    const int line = __LINE__ + 1;
    EXPECT_FALSE(KODO_ASSERT(evaluated == 0));

    EXPECT_EQ(evaluated, 1);
    ASSERT_EQ(reports.reports().size(), 1U);
    EXPECT_EQ(reports.reports().front().line, line);
    EXPECT_EQ(reports.reports().front().path, __FILE__);
}

TEST(AssertionTest, TheMacroTakesWhateverConvertsToBool)
{
    const int value = 0;
    const int* pointer = &value;
    EXPECT_TRUE(KODO_ASSERT(pointer));

    pointer = nullptr;
    const ExpectReports reports{"pointer"};
    EXPECT_FALSE(KODO_ASSERT(pointer));
}

TEST(AssertionTest, TheTextThePathAndTheLineCanBeGiven)
{
    const ExpectReports reports{"the lamp is lit"};

    EXPECT_FALSE(KODO_ASSERT_AT(1 == 2, "the lamp is lit", "quay/lamp.cpp", 76));

    ASSERT_EQ(reports.reports().size(), 1U);
    EXPECT_EQ(reports.reports().front().path, "quay/lamp.cpp");
    EXPECT_EQ(reports.reports().front().line, 76);
}

TEST(AssertionTest, TheLibrarysMacrosKeepTheTextOfTheExpression)
{
    const char* token = nullptr;
    const ExpectReports reports{"token != nullptr", "fixed text", "token != nullptr"};

    EXPECT_FALSE(TERN_COMMON_ASSERT(token != nullptr)); // nullptr and NULL may be macros: not expanded
    EXPECT_FALSE(TERN_COMMON_ASSERT_AS(token, "fixed text"));
    EXPECT_FALSE(TERN_COMMON_ASSERT_ON_LINE(token != nullptr, 195));

    ASSERT_EQ(reports.reports().size(), 3U);
    EXPECT_EQ(reports.reports()[2].line, 195);
    EXPECT_TRUE(reports.reports()[0].path.ends_with("kodo_assertion_test.cpp"));
}

} // namespace
