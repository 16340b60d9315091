#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory()
{
    std::random_device random;
    do
    {
        m_path = fs::canonical(fs::temp_directory_path()) / ("tern_test_" + std::to_string(random()));
    } while (!fs::create_directory(m_path));
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

fs::path TemporaryDirectory::write(std::string_view name, std::string_view bytes) const
{
    const fs::path path = m_path / name;
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(file.flush()) << path;
    return path;
}

std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
