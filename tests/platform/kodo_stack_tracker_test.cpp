#include "kodo/core/stack_tracker.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

using Kodo::StackTracker;
using Record = std::vector<StackTracker::ScopeRecord>;

std::vector<std::string> outline(const Record& record)
{
    std::vector<std::string> lines;
    for (const StackTracker::ScopeRecord& scope : record)
    {
        lines.push_back(std::string(static_cast<std::size_t>(scope.depth), ' ') + scope.name);
    }
    return lines;
}

/// The time at which a scope was closed.
std::chrono::nanoseconds endOf(const StackTracker::ScopeRecord& scope)
{
    return scope.start + scope.duration;
}

TEST(StackTrackerTest, RecordsNestedScopesInTheOrderOfOpening)
{
    StackTracker::startRecording();
    StackTracker::push("outer", "harbour.cpp", 12);
    StackTracker::push("first", "quay.cpp", 3);
    StackTracker::pop();
    StackTracker::push("second", "quay.cpp", 4);
    StackTracker::pop();
    StackTracker::pop();
    const Record record = StackTracker::stopRecording();

    EXPECT_EQ(outline(record), (std::vector<std::string>{"outer", " first", " second"}));
    EXPECT_EQ(record[0].file, "harbour.cpp");
    EXPECT_EQ(record[0].line, 12);
    EXPECT_LE(record[0].start, record[1].start);
    EXPECT_LE(endOf(record[1]), record[2].start);
    EXPECT_LE(endOf(record[2]), endOf(record[0]));
}

TEST(StackTrackerTest, WithoutRecordingNothingIsKept)
{
    StackTracker::push("outer", "harbour.cpp", 12);
    StackTracker::pop();

    EXPECT_FALSE(StackTracker::isRecording());
    EXPECT_TRUE(StackTracker::stopRecording().empty());
}

TEST(StackTrackerTest, AScopeObjectClosesOnEveryWayOut)
{
    StackTracker::startRecording();
    EXPECT_TRUE(StackTracker::isRecording());
    try
    {
        KODO_PROFILE_SCOPE("thrown out of");
        KODO_PROFILE_SCOPE("a second one in the same block");
        if (StackTracker::isRecording())
        {
            KODO_PROFILE_SCOPE("a block inside");
            throw std::runtime_error("out of a scope");
        }
    }
    catch (const std::runtime_error&)
    {
    }
    {
        KODO_PROFILE_SCOPE("after");
    }
    const Record record = StackTracker::stopRecording();

    EXPECT_EQ(outline(record), (std::vector<std::string>{"thrown out of", " a second one in the same block",
                                                         "  a block inside", "after"}));
    EXPECT_EQ(record[3].file, __FILE__);
}

TEST(StackTrackerTest, ScopesOpenedBeforeRecordingStayOutOfIt)
{
    StackTracker::push("before", "harbour.cpp", 1);
    StackTracker::startRecording();
    StackTracker::push("recorded", "harbour.cpp", 2);
    StackTracker::pop();
    StackTracker::pop(); // closes what was opened before
    StackTracker::push("next", "harbour.cpp", 3);
    StackTracker::pop();

    EXPECT_EQ(outline(StackTracker::stopRecording()), (std::vector<std::string>{"recorded", "next"}));
}

TEST(StackTrackerTest, ScopesThatAreStillOpenEndWithTheRecording)
{
    StackTracker::startRecording();
    StackTracker::push("outer", "harbour.cpp", 1);
    StackTracker::push("inner", "harbour.cpp", 2);
    const Record record = StackTracker::stopRecording();
    StackTracker::pop();
    StackTracker::pop();

    EXPECT_EQ(outline(record), (std::vector<std::string>{"outer", " inner"}));
    EXPECT_LE(endOf(record[1]), endOf(record[0]));
}

TEST(StackTrackerTest, APopWithoutAScopeDoesNothing)
{
    StackTracker::startRecording();
    StackTracker::pop();
    StackTracker::push("scope", "harbour.cpp", 1);
    StackTracker::pop();
    StackTracker::pop();

    EXPECT_EQ(outline(StackTracker::stopRecording()), (std::vector<std::string>{"scope"}));
}

TEST(StackTrackerTest, StartingAgainDropsTheRecordUnderWay)
{
    StackTracker::startRecording();
    StackTracker::push("dropped", "harbour.cpp", 1);
    StackTracker::startRecording();
    StackTracker::push("kept", "harbour.cpp", 2);
    StackTracker::pop();
    StackTracker::pop();

    EXPECT_EQ(outline(StackTracker::stopRecording()), (std::vector<std::string>{"kept"}));
    EXPECT_TRUE(StackTracker::stopRecording().empty());
}

TEST(StackTrackerTest, EachThreadNestsForItself)
{
    StackTracker::startRecording();
    StackTracker::push("main", "harbour.cpp", 1);
    std::thread(
        []
        {
            KODO_PROFILE_SCOPE("worker");
            KODO_PROFILE_SCOPE("in worker");
        })
        .join();
    StackTracker::push("in main", "harbour.cpp", 2);
    const Record record = StackTracker::stopRecording();
    StackTracker::pop();
    StackTracker::pop();

    ASSERT_EQ(outline(record), (std::vector<std::string>{"main", "worker", " in worker", " in main"}));
    EXPECT_EQ(record[0].thread, 1U);
    EXPECT_EQ(record[1].thread, 2U);
    EXPECT_EQ(record[2].thread, 2U);
    EXPECT_EQ(record[3].thread, 1U);
}

TEST(StackTrackerTest, ScopesMayBeOpenedWhileAnotherThreadStartsAndStops)
{
    constexpr int ROUNDS = 300;
    std::thread worker(
        []
        {
            for (int round = 0; round < ROUNDS; ++round)
            {
                KODO_PROFILE_SCOPE("outer");
                KODO_PROFILE_SCOPE("inner");
            }
        });
    for (int round = 0; round < ROUNDS; ++round)
    {
        StackTracker::startRecording();
        for (const StackTracker::ScopeRecord& scope : StackTracker::stopRecording())
        {
            EXPECT_LE(scope.depth, 1);
        }
    }
    worker.join();
}

/// Opens a scope when the program ends, long after everything that main began is over.
class ProfiledAtExit
{
public:
    bool armed = false;

    ProfiledAtExit() = default;
    ProfiledAtExit(const ProfiledAtExit&) = delete;
    ProfiledAtExit& operator=(const ProfiledAtExit&) = delete;
    ~ProfiledAtExit()
    {
        if (armed)
        {
            KODO_PROFILE_SCOPE("at exit");
        }
    }
};
ProfiledAtExit profiledAtExit;

TEST(StackTrackerDeathTest, TheProgramMayEndWhileRecording)
{
    EXPECT_EXIT(
        {
            profiledAtExit.armed = true;
            StackTracker::startRecording();
            StackTracker::push("never closed", "harbour.cpp", 1);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

StackTracker::ScopeRecord scopeNamed(std::string name)
{
    StackTracker::ScopeRecord scope;
    scope.name = std::move(name);
    scope.file = "harbour.cpp";
    scope.line = 1234567;
    scope.thread = 1;
    scope.start = std::chrono::nanoseconds(1234567891);
    scope.duration = std::chrono::nanoseconds(1001);
    return scope;
}

nlohmann::json traceOf(const Record& record)
{
    std::ostringstream out;
    StackTracker::writeChromeTrace(out, record);
    return nlohmann::json::parse(out.str());
}

TEST(ChromeTraceTest, HoldsEachScopeAsACompleteEvent)
{
    const nlohmann::json trace = traceOf({scopeNamed("outer"), scopeNamed("inner")});

    ASSERT_EQ(trace["traceEvents"].size(), 2U);
    const nlohmann::json& event = trace["traceEvents"][0];
    EXPECT_EQ(event["ph"], "X");
    EXPECT_EQ(event["pid"], 1);
    EXPECT_EQ(event["tid"], 1);
    EXPECT_EQ(event["name"], "outer");
    EXPECT_EQ(event["ts"], 1234567.891) << "microseconds";
    EXPECT_EQ(event["dur"], 1.001);
    EXPECT_EQ(event["args"]["file"], "harbour.cpp");
    EXPECT_EQ(event["args"]["line"], 1234567);
}

TEST(ChromeTraceTest, OfAnEmptyRecordHasNoEvents)
{
    EXPECT_TRUE(traceOf({})["traceEvents"].empty());
}

TEST(ChromeTraceTest, EscapesWhatJsonDoesNotTakeBare)
{
    std::string name = "quote \" backslash \\ \x7f";
    for (char control = 0; control < 0x20; ++control)
    {
        name += control;
    }
    name += "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x92\xA1";

    EXPECT_EQ(traceOf({scopeNamed(name)})["traceEvents"][0]["name"], name);
}

TEST(ChromeTraceTest, StaysValidWhateverBytesANameHolds)
{
    EXPECT_EQ(traceOf({scopeNamed("a\xFF\"b")})["traceEvents"][0]["name"], "a\xEF\xBF\xBD\"b");
    EXPECT_EQ(traceOf({scopeNamed("a\xC3")})["traceEvents"][0]["name"], "a\xEF\xBF\xBD");
    std::string allBytes;
    for (int byte = 0; byte < 256; ++byte)
    {
        allBytes += static_cast<char>(byte);
    }
    EXPECT_EQ(traceOf({scopeNamed(allBytes)})["traceEvents"].size(), 1U);
}

TEST(ChromeTraceTest, TheStreamsOwnFormatAndLocaleDoNotMatter)
{
    class Grouping : public std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const Record record{scopeNamed("outer")};
    std::ostringstream out;
    out.imbue(std::locale(std::locale::classic(), new Grouping));
    out << std::hex << std::showbase << std::showpos << std::scientific << std::setfill('*')
        << std::setprecision(1) << std::setw(20);

    StackTracker::writeChromeTrace(out, record);

    EXPECT_EQ(nlohmann::json::parse(out.str()), traceOf(record));
    out.str("");
    out.width(0);
    out << 4096;
    EXPECT_EQ(out.str(), "0x1.000") << "the caller's format is left as it was";
}

TEST(ChromeTraceTest, TakesTheLongestTimes)
{
    StackTracker::ScopeRecord scope = scopeNamed("long");
    scope.start = std::chrono::nanoseconds::max();
    scope.duration = std::chrono::nanoseconds::max();
    scope.line = std::numeric_limits<int>::min();

    const nlohmann::json event = traceOf({scope})["traceEvents"][0];

    EXPECT_DOUBLE_EQ(event["dur"].get<double>(), 9223372036854775.807);
    EXPECT_EQ(event["args"]["line"], std::numeric_limits<int>::min());
}

} // namespace
