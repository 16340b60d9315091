#pragma once

#include "editor/app/headless_session.hpp"
#include "editor/level/level_file.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

/// Runs the headless editor on a level with a curve "quay" and a script of the test's.
class HeadlessSessionTest : public testing::Test
{
protected:
    HeadlessSessionTest()
    {
        m_options.headless = true;
        m_options.level = m_directory.write(
            "a.level", "{\"format\":\"tern-level\",\"version\":1,\"curves\":[{\"name\":\"quay\"}]}");
        m_options.save = m_directory.path() / "out.level";
    }

    int run(const std::string& script)
    {
        m_options.scripts = {m_directory.write("s.txt", script)};
        return run();
    }

    int run()
    {
        m_out.str("");
        m_errors.str("");
        const CollectReports seenByTheSession;
        return HeadlessSession(m_options, m_out, m_errors).run();
    }

    /// The messages of the last run, without the directory's name.
    std::string errors() const
    {
        std::string text = m_errors.str();
        const std::string prefix = m_directory.path().string() + "/";
        for (std::size_t at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at))
        {
            text.erase(at, prefix.size());
        }
        return text;
    }

    LevelData saved() const { return readLevelFile(*m_options.save); }

    TemporaryDirectory m_directory;
    EditorOptions m_options;
    std::ostringstream m_out;
    std::ostringstream m_errors;
};
