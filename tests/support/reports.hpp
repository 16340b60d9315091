#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// One message on the report channel, taken apart.
struct Report
{
    std::string text; ///< the message; of a failed assertion, its expression
    std::string path; ///< of an assertion: the source file and line in the report
    int line = 0;
    int priority = 0;
    bool critical = false;
    std::string whole; ///< the message to the character
};

/// Expects exactly these reports, by text and in order, from construction to the end of the scope.
/// Outside such a scope any report fails the running test. Scopes nest; the innermost one collects.
class ExpectReports
{
public:
    ExpectReports(std::initializer_list<std::string> expected = {});
    explicit ExpectReports(std::vector<std::string> expected);
    ExpectReports(const ExpectReports&) = delete;
    ExpectReports& operator=(const ExpectReports&) = delete;
    ~ExpectReports();

    const std::vector<Report>& reports() const noexcept { return m_reports; }

private:
    friend class ReportListener;

    std::vector<std::string> m_expected;
    std::vector<Report> m_reports;
    ExpectReports* m_outer;
};

/// Collects whatever is reported in its scope, without an expectation: for tests that compare with a model.
class CollectReports
{
public:
    CollectReports();
    CollectReports(const CollectReports&) = delete;
    CollectReports& operator=(const CollectReports&) = delete;
    ~CollectReports();

    std::vector<std::string> texts() const;

private:
    friend class ReportListener;

    std::vector<Report> m_reports;
    CollectReports* m_outer;
};
