#include "tests/support/reports.hpp"

#include "kodo/core/debug_message_helper.hpp"

#include <gtest/gtest.h>

#include <charconv>
#include <mutex>

namespace
{

Report takeApart(const Kodo::DebugMessage& message)
{
    constexpr std::string_view PREFIX = "ASSERTION FAILED: ";
    constexpr std::string_view LINE_END = "\r\n";

    Report report;
    report.whole = message.text;
    report.text = message.text;
    report.priority = message.messagePriority;
    report.critical = message.critical;
    if (message.critical && message.text.starts_with(PREFIX))
    {
        std::string_view rest = message.text.substr(PREFIX.size());
        const std::size_t textEnd = rest.find(LINE_END);
        report.text = rest.substr(0, textEnd);
        rest = rest.substr(textEnd + LINE_END.size());
        const std::size_t lineStart = rest.rfind('(');
        report.path = rest.substr(0, lineStart);
        rest = rest.substr(lineStart + 1);
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), report.line);
        EXPECT_EQ(std::string(end, rest.data() + rest.size()), ")\r\n") << "in the report " << message.text;
    }
    return report;
}

} // namespace

/// The test program's sink: hands reports to the innermost scope, or fails the test.
class ReportListener
{
public:
    static ReportListener& instance()
    {
        static ReportListener listener;
        return listener;
    }

    void enter(ExpectReports& scope)
    {
        const std::lock_guard lock(m_mutex);
        scope.m_outer = std::exchange(m_expecting, &scope);
    }
    void leave(ExpectReports& scope)
    {
        const std::lock_guard lock(m_mutex);
        m_expecting = scope.m_outer;
    }
    void enter(CollectReports& scope)
    {
        const std::lock_guard lock(m_mutex);
        scope.m_outer = std::exchange(m_collecting, &scope);
    }
    void leave(CollectReports& scope)
    {
        const std::lock_guard lock(m_mutex);
        m_collecting = scope.m_outer;
    }

private:
    ReportListener() : m_sink([this](const Kodo::DebugMessage& message) { receive(message); }) {}

    void receive(const Kodo::DebugMessage& message)
    {
        const std::lock_guard lock(m_mutex);
        Report report = takeApart(message);
        if (m_collecting != nullptr)
        {
            m_collecting->m_reports.push_back(std::move(report));
        }
        else if (m_expecting != nullptr)
        {
            m_expecting->m_reports.push_back(std::move(report));
        }
        else
        {
            ADD_FAILURE() << "unexpected report: " << report.whole;
        }
    }

    std::mutex m_mutex;
    ExpectReports* m_expecting = nullptr;
    CollectReports* m_collecting = nullptr;
    Kodo::DebugMessageSink m_sink;
};

namespace
{
[[maybe_unused]] const ReportListener& listening = ReportListener::instance();
} // namespace

ExpectReports::ExpectReports(std::initializer_list<std::string> expected)
    : ExpectReports(std::vector<std::string>(expected))
{
}

ExpectReports::ExpectReports(std::vector<std::string> expected)
    : m_expected(std::move(expected)), m_outer(nullptr)
{
    ReportListener::instance().enter(*this);
}

ExpectReports::~ExpectReports()
{
    ReportListener::instance().leave(*this);
    std::vector<std::string> texts;
    for (const Report& report : m_reports)
    {
        texts.push_back(report.text);
    }
    EXPECT_EQ(texts, m_expected);
}

CollectReports::CollectReports() : m_outer(nullptr)
{
    ReportListener::instance().enter(*this);
}

CollectReports::~CollectReports()
{
    ReportListener::instance().leave(*this);
}

std::vector<std::string> CollectReports::texts() const
{
    std::vector<std::string> texts;
    for (const Report& report : m_reports)
    {
        texts.push_back(report.text);
    }
    return texts;
}
