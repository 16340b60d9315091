#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

/// A new directory, links in its path resolved, removed with everything in it at the end of the scope.
class TemporaryDirectory
{
public:
    TemporaryDirectory()
    {
        const std::filesystem::path parent =
            std::filesystem::canonical(std::filesystem::temp_directory_path());
        std::random_device random;
        do
        {
            m_path = parent / ("tern-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(m_path)); // false for one that is there already
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& path() const noexcept { return m_path; }
    std::filesystem::path operator/(std::string_view name) const { return m_path / name; }

    /// Writes a file, with the directories on the way to it, and gives its path.
    std::string write(std::string_view name, std::string_view content = "x") const
    {
        const std::filesystem::path file = m_path / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios_base::binary) << content;
        return file.string();
    }

private:
    std::filesystem::path m_path;
};
