// Catalogues of large translated programs, as a system has them installed, against what gettext's own tool
// reads in them.

#include "kodo/fs/multi_file_system.hpp"
#include "tests/platform/map_manager.hpp"
#include "tests/support/reports.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace
{

const std::filesystem::path LOCALES = "/usr/share/locale";

struct ClosePipe
{
    void operator()(std::FILE* pipe) const { ::pclose(pipe); }
};

std::string outputOf(const std::string& command)
{
    const std::unique_ptr<std::FILE, ClosePipe> pipe(::popen(command.c_str(), "r"));
    std::string output;
    std::array<char, 65536> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe.get()))
    {
        output.append(buffer.data(), count);
    }
    return output;
}

/// What stands between the quotes of a line of a PO file.
std::string unquoted(const std::string& line)
{
    static const std::map<char, char> ESCAPES{{'n', '\n'}, {'t', '\t'}, {'a', '\a'}, {'b', '\b'},
                                              {'f', '\f'}, {'r', '\r'}, {'v', '\v'}};
    const std::size_t open = line.find('"');
    const std::size_t close = line.rfind('"');
    std::string text;
    for (std::size_t i = open + 1; i < close; ++i)
    {
        const bool isEscape = line[i] == '\\';
        const char unit = line[isEscape ? ++i : i];
        const auto escape = ESCAPES.find(unit);
        text += isEscape && escape != ESCAPES.end() ? escape->second : unit;
    }
    return text;
}

/// The fields of each entry ("msgid", "msgstr[0]" and so on) of a PO file.
std::vector<std::map<std::string, std::string>> parsePo(const std::string& po)
{
    std::vector<std::map<std::string, std::string>> entries(1);
    std::istringstream lines(po);
    std::string field;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.empty())
        {
            entries.emplace_back();
        }
        else if (line.front() != '#')
        {
            field = line.front() == '"' ? field : line.substr(0, line.find(' '));
            entries.back()[field] += unquoted(line);
        }
    }
    std::erase_if(entries, [](const auto& entry) { return entry.empty(); });
    return entries;
}

std::string latin1ToUtf8(const std::string& text)
{
    std::string result;
    for (const char unit : text)
    {
        const auto code = static_cast<unsigned>(static_cast<unsigned char>(unit));
        result += code < 0x80
                      ? std::string{unit}
                      : std::string{static_cast<char>(0xC0 + code / 64), static_cast<char>(0x80 + code % 64)};
    }
    return result;
}

enum class Charset
{
    Utf8,
    Latin1,
    Other
};

Charset charsetOf(const std::string& header)
{
    std::string name = header.substr(header.find("charset=") + 8);
    name = name.substr(0, name.find('\n'));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char unit) { return std::tolower(unit); });
    return name == "utf-8" ? Charset::Utf8 : name == "iso-8859-1" ? Charset::Latin1 : Charset::Other;
}

/// Compares every message of one catalogue; yields their number.
std::size_t compare(const Kodo::Loom::UiResourceManager& manager, const std::string& file)
{
    const auto entries = parsePo(outputOf("msgunfmt --no-wrap '" + file + "' 2>/dev/null"));
    const Charset charset = entries.empty() ? Charset::Other : charsetOf(entries.front().at("msgstr"));
    const auto converted = [charset](const std::string& text)
    { return charset == Charset::Latin1 ? latin1ToUtf8(text) : text; };
    std::size_t count = 0;
    for (auto entry : entries)
    {
        const std::string context = entry.contains("msgctxt") ? entry["msgctxt"] + '\4' : "";
        const std::string message = converted(context + entry["msgid"]);
        const std::string text = converted(entry.contains("msgstr") ? entry["msgstr"] : entry["msgstr[0]"]);
        // A number's format of the system is put in by gettext; the catalogue keeps such a message in pieces.
        const bool isInPieces = message.find("%<PRI") != std::string::npos;
        const bool isFound = !message.empty() && charset != Charset::Other && !isInPieces;
        EXPECT_EQ(manager.find("d", message), isFound ? text : "") << file << ": " << message;
        count += isFound ? 1 : 0;
    }
    return count;
}

void compareAll(const std::string& program, std::size_t leastMessages)
{
    std::string files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(LOCALES, error))
    {
        const std::string language = entry.path().filename().string();
        const std::string file = language + "/LC_MESSAGES/" + program + ".mo";
        if (std::filesystem::exists(LOCALES / file))
        {
            files += (files.empty() ? "\"" : ", \"") + language + "\": \"" + file + '"';
        }
    }
    if (files.empty() || outputOf("msgunfmt --version 2>/dev/null").empty())
    {
        GTEST_SKIP() << "the translations of " << program
                     << " or msgunfmt (package gettext) are not installed";
    }
    const ResourceTree resources;
    Kodo::FS::fileSystem().addRoot(LOCALES.string());
    resources.write("map.json", R"({"language": "de", "catalogues": {"d": {)" + files + "}}}");
    MapManager manager;
    std::size_t count = 0;
    for (const std::string& language : manager.languages())
    {
        const CollectReports reports;
        const std::string file = (LOCALES / language / "LC_MESSAGES" / (program + ".mo")).string();
        ASSERT_TRUE(manager.setLanguage(language));
        const std::size_t found = compare(manager, file);
        EXPECT_EQ(reports.texts().size(), found > 0 ? 0U : 1U) << file;
        count += found;
    }
    std::printf("%zu messages compared\n", count);
    EXPECT_GE(count, leastMessages);
}

} // namespace

TEST(RealCatalogueTest, EveryMessageOfTheCoreUtilitiesIsTheOneThatGettextReads)
{
    compareAll("coreutils", 10'000);
}

TEST(RealCatalogueTest, EveryMessageOfTheGettextToolsIsTheOneThatGettextReadsInWhateverCharset)
{
    compareAll("gettext-tools", 10'000);
}
