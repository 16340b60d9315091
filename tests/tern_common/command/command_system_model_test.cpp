// Compares the command system with a simple model on random scripts, waits and completion orders.

#include "tern_common/command_system.hpp"

#include "tests/support/futures.hpp"
#include "tests/support/random_seed.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

/// What one tick shows to the outside.
struct TickResult
{
    std::vector<std::string> started;
    std::vector<std::string> reports;
    std::string exception;
    bool idle = true;

    bool operator==(const TickResult&) const = default;
};

/// The rules of the executor, straight: a list of lines and the state of the running one.
class Model
{
public:
    void queue(const std::vector<std::string>& lines)
    {
        m_queue.insert(m_queue.end(), lines.begin(), lines.end());
    }

    /// Settles the oldest or newest pending hold, if there is one.
    void settle(int id, bool well) { m_settled[id] = well; }

    TickResult tick()
    {
        TickResult result;
        if (m_wait && *m_wait == 0)
        {
            m_waitOver = true;
            m_wait.reset();
        }
        else if (m_wait)
        {
            --*m_wait;
        }
        advance(result);
        result.idle = m_queue.empty() && m_running == Nothing;
        return result;
    }

private:
    enum Running
    {
        Nothing,
        Ready,
        Failed,
        Waiting,
        Held
    };

    void advance(TickResult& result)
    {
        if ((m_running == Waiting && !m_waitOver) || (m_running == Held && !m_settled.contains(m_heldId)))
        {
            return;
        }
        const bool failed = m_running == Failed || (m_running == Held && !m_settled[m_heldId]);
        m_running = Nothing;
        if (failed)
        {
            result.exception = "stored";
            return;
        }
        if (m_queue.empty())
        {
            return;
        }
        const std::string line = m_queue.front();
        m_queue.pop_front();
        start(line, result);
    }

    void start(const std::string& line, TickResult& result)
    {
        if (line.starts_with("wait("))
        {
            m_wait = std::stoi(line.substr(5));
            m_waitOver = false;
            m_running = Waiting;
        }
        else if (line.starts_with("nowhere"))
        {
            result.reports.emplace_back("object");
        }
        else if (line == "obj.nothing()")
        {
            result.reports.emplace_back("command");
        }
        else if (line == "throw()")
        {
            result.exception = "thrown";
        }
        else
        {
            result.started.push_back(line);
            if (line == "obj.mark(\"x\")")
            {
                result.started.back() = "obj.mark(0)";
                result.reports.emplace_back("argv->tryCast(a)");
            }
            m_running = line == "fail()" ? Failed : line == "hold()" ? Held : Ready;
            m_heldId += m_running == Held ? 1 : 0;
        }
    }

    std::deque<std::string> m_queue;
    Running m_running = Nothing;
    std::optional<int> m_wait;
    bool m_waitOver = false;
    int m_heldId = -1;
    std::map<int, bool> m_settled;
};

/// The real thing, with commands that note their calls.
class Subject
{
public:
    Subject()
    {
        CommandObject& root = m_system.rootObject();
        root.addChild("obj", &m_object);
        m_object.addCommand("mark",
                            [this](int value)
                            {
                                m_started.push_back("obj.mark(" + std::to_string(value) + ")");
                                return readyFuture();
                            });
        root.addCommand("fail",
                        [this]
                        {
                            m_started.emplace_back("fail()");
                            return failedFuture<std::runtime_error>("stored");
                        });
        root.addCommand("throw", []() -> std::future<void> { throw std::runtime_error("thrown"); });
        root.addCommand("hold",
                        [this]
                        {
                            m_started.emplace_back("hold()");
                            return m_held.emplace_back().get_future();
                        });
    }

    void queue(const std::vector<std::string>& lines)
    {
        std::string script = "# made by a test\n";
        for (const std::string& line : lines)
        {
            script += line + "\n";
        }
        m_system.parseScriptFile(m_directory.write("script.txt", script).wstring());
    }

    std::size_t heldCount() const { return m_held.size(); }

    void settle(std::size_t id, bool well)
    {
        if (well)
        {
            m_held[id].set_value();
        }
        else
        {
            m_held[id].set_exception(std::make_exception_ptr(std::runtime_error("stored")));
        }
    }

    TickResult tick()
    {
        const CollectReports reports;
        TickResult result;
        try
        {
            m_system.tick();
        }
        catch (const std::exception& error)
        {
            result.exception = error.what();
        }
        result.started = std::exchange(m_started, {});
        result.reports = reports.texts();
        result.idle = m_system.isIdle();
        return result;
    }

private:
    TemporaryDirectory m_directory;
    CommandObject m_object;
    CommandSystem m_system;
    std::vector<std::string> m_started;
    std::vector<std::promise<void>> m_held;
};

TEST(CommandSystemModelTest, AgreesWithTheModelOnRandomScriptsWaitsAndCompletions)
{
    std::mt19937_64 random(randomSeed());
    const auto pick = [&random](std::size_t count) { return static_cast<std::size_t>(random() % count); };
    const std::vector<std::string> commands{"obj.mark(1)", "obj.mark(22)", "obj.mark(\"x\")", "hold()",
                                            "wait(0)",     "wait(1)",      "wait(4)",         "fail()",
                                            "throw()",     "nowhere.a()",  "obj.nothing()"};
    int starts = 0;
    for (int run = 0; run < 60; ++run)
    {
        Subject subject;
        Model model;
        std::vector<std::size_t> pending;
        std::size_t held = 0;
        for (int step = 0; step < 250; ++step)
        {
            if (pick(12) == 0)
            {
                std::vector<std::string> lines(pick(8));
                for (std::string& line : lines)
                {
                    line = commands[pick(commands.size())];
                }
                subject.queue(lines);
                model.queue(lines);
            }
            if (!pending.empty() && pick(4) == 0)
            {
                const bool well = pick(3) != 0;
                subject.settle(pending.back(), well);
                model.settle(static_cast<int>(pending.back()), well);
                pending.pop_back();
            }
            const TickResult expected = model.tick();
            const TickResult result = subject.tick();
            ASSERT_TRUE(result == expected)
                << "run " << run << " step " << step << ": " << testing::PrintToString(result.started)
                << " vs " << testing::PrintToString(expected.started) << ", "
                << testing::PrintToString(result.reports) << " vs "
                << testing::PrintToString(expected.reports) << ", " << result.exception << " vs "
                << expected.exception;
            starts += static_cast<int>(result.started.size());
            while (held < subject.heldCount())
            {
                pending.push_back(held++);
            }
        }
    }
    EXPECT_GT(starts, 500);
}

} // namespace
