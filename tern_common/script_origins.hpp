#pragma once

#include <cstddef>
#include <deque>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

/// The script lines that queued commands come from, first in, first out. Commands on consecutive lines share
/// one entry, so that a long script costs next to nothing.
class ScriptOrigins
{
public:
    using Script = std::shared_ptr<const std::wstring>;

    void push(const Script& script, std::size_t line)
    {
        if (m_runs.empty() || m_runs.back().script != script ||
            m_runs.back().line + m_runs.back().count != line)
        {
            m_runs.push_back({script, line, 0});
        }
        ++m_runs.back().count;
    }

    /// Takes the front line; there must be one.
    std::pair<Script, std::size_t> pop()
    {
        Run& front = m_runs.front();
        std::pair<Script, std::size_t> result{front.script, front.line};
        ++front.line;
        if (--front.count == 0)
        {
            m_runs.pop_front();
        }
        return result;
    }

    /// Appends the lines of @p other. Where memory runs out, nothing is appended.
    void append(ScriptOrigins&& other)
    {
        m_runs.insert(m_runs.end(), std::move_iterator(other.m_runs.begin()),
                      std::move_iterator(other.m_runs.end()));
        other.m_runs.clear();
    }

    std::size_t runCount() const noexcept { return m_runs.size(); }

private:
    struct Run
    {
        Script script;
        std::size_t line;
        std::size_t count;
    };

    std::deque<Run> m_runs;
};
