#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// A directory of the test's own, gone with all it holds at the end of the scope.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    const std::filesystem::path& path() const noexcept { return m_path; }

    /// Writes a file of these bytes and gives its path.
    std::filesystem::path write(const std::string& name, std::string_view bytes) const;

private:
    std::filesystem::path m_path;
};

/// The bytes of a file; a test failure and nothing where it cannot be read.
std::string readFile(const std::filesystem::path& path);
