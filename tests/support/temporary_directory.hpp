#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// A new directory, links in its path resolved, gone with all it holds at the end of the scope.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    const std::filesystem::path& path() const noexcept { return m_path; }
    std::filesystem::path operator/(std::string_view name) const { return m_path / name; }

    /// Writes a file of these bytes, with the directories on the way to it, and gives its path.
    std::filesystem::path write(std::string_view name, std::string_view bytes = "x") const;

private:
    std::filesystem::path m_path;
};

/// The bytes of a file; a test failure and nothing where it cannot be read.
std::string readFile(const std::filesystem::path& path);
