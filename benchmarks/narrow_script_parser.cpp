#include "benchmarks/narrow_script_parser.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr unsigned char BLANK = 1;
constexpr unsigned char LETTER = 2;
constexpr unsigned char DIGIT = 4;
constexpr unsigned char NAME = 8;

constexpr std::array<unsigned char, 256> makeClasses()
{
    std::array<unsigned char, 256> classes{};
    for (unsigned c = 0; c < 128; ++c)
    {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const bool digit = c >= '0' && c <= '9';
        classes[c] =
            static_cast<unsigned char>((c == ' ' || c == '\t' ? BLANK : 0) | (letter ? LETTER : 0) |
                                       (digit ? DIGIT : 0) | (letter || digit || c == '_' ? NAME : 0));
    }
    return classes;
}

constexpr std::array<unsigned char, 256> CLASSES = makeClasses();

struct Cursor
{
    const char* at;
    const char* end;

    bool is(unsigned char kind) const
    {
        return at != end && (CLASSES[static_cast<unsigned char>(*at)] & kind) != 0;
    }
    bool is(char c) const { return at != end && *at == c; }
    void skip(unsigned char kind)
    {
        while (is(kind))
        {
            ++at;
        }
    }
};

bool parsePath(Cursor& cursor, NarrowCommand& command)
{
    const char* const list = static_cast<const char*>(
        std::memchr(cursor.at, '(', static_cast<std::size_t>(cursor.end - cursor.at)));
    const auto dots = std::count(cursor.at, list != nullptr ? list : cursor.end, '.');
    command.path.reserve(static_cast<std::size_t>(std::min<std::ptrdiff_t>(dots, 16)));
    for (;;)
    {
        if (!cursor.is(LETTER) && !cursor.is('_'))
        {
            return false;
        }
        const char* const first = cursor.at;
        cursor.skip(NAME);
        command.name.assign(first, cursor.at);
        cursor.skip(BLANK);
        if (!cursor.is('.'))
        {
            return true;
        }
        ++cursor.at;
        cursor.skip(BLANK);
        command.path.push_back(std::move(command.name));
    }
}

bool parseArgument(Cursor& cursor, std::vector<vell::Variant>& args)
{
    if (cursor.is('"'))
    {
        const char* const first = ++cursor.at;
        const auto* const last =
            static_cast<const char*>(std::memchr(first, '"', static_cast<std::size_t>(cursor.end - first)));
        if (last == nullptr)
        {
            return false;
        }
        args.emplace_back(std::string(first, last));
        cursor.at = last + 1;
        return true;
    }
    if (cursor.is(DIGIT))
    {
        std::int64_t value = 0;
        for (; cursor.is(DIGIT); ++cursor.at)
        {
            value = value * 10 + (*cursor.at - '0');
            if (value > std::numeric_limits<std::int32_t>::max())
            {
                return false;
            }
        }
        args.emplace_back(value);
        return true;
    }
    const char* const first = cursor.at;
    cursor.skip(LETTER);
    const std::string_view word(first, static_cast<std::size_t>(cursor.at - first));
    if (word != "true" && word != "false")
    {
        return false;
    }
    args.emplace_back(word == "true");
    return true;
}

bool parseArguments(Cursor& cursor, NarrowCommand& command)
{
    if (!cursor.is('('))
    {
        return false;
    }
    ++cursor.at;
    cursor.skip(BLANK);
    if (!cursor.is(')'))
    {
        std::size_t commas = 0;
        bool quoted = false;
        for (const char* at = cursor.at; at != cursor.end && (quoted || *at != ')'); ++at)
        {
            quoted ^= *at == '"';
            commas += static_cast<std::size_t>(!quoted && *at == ',');
        }
        command.args.reserve(std::min<std::size_t>(commas + 1, 16));
        for (;;)
        {
            if (!parseArgument(cursor, command.args))
            {
                return false;
            }
            cursor.skip(BLANK);
            if (!cursor.is(','))
            {
                break;
            }
            ++cursor.at;
            cursor.skip(BLANK);
        }
    }
    if (!cursor.is(')'))
    {
        return false;
    }
    ++cursor.at;
    cursor.skip(BLANK);
    return cursor.at == cursor.end;
}

std::optional<std::string> readWhole(const char* fileName)
{
    const int file = open(fileName, O_RDONLY | O_CLOEXEC);
    if (file < 0)
    {
        return {};
    }
    struct stat status = {};
    std::string text;
    if (fstat(file, &status) == 0)
    {
        text.resize(static_cast<std::size_t>(status.st_size));
        std::size_t done = 0;
        while (done < text.size())
        {
            const ssize_t count = read(file, text.data() + done, text.size() - done);
            if (count <= 0)
            {
                break;
            }
            done += static_cast<std::size_t>(count);
        }
        text.resize(done);
    }
    close(file);
    return text;
}

} // namespace

std::deque<NarrowCommand> parseNarrowScript(const char* fileName)
{
    const std::optional<std::string> text = readWhole(fileName);
    std::deque<NarrowCommand> commands;
    if (!text)
    {
        return commands;
    }
    const char* at = text->data();
    const char* const end = at + text->size();
    while (at != end)
    {
        const auto* lineEnd =
            static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
        const char* const next = lineEnd != nullptr ? lineEnd + 1 : end;
        lineEnd = lineEnd != nullptr ? lineEnd : end;
        if (lineEnd != end && lineEnd != at && lineEnd[-1] == '\r')
        {
            --lineEnd;
        }
        Cursor cursor{at, lineEnd};
        at = next;
        cursor.skip(BLANK);
        if (cursor.at == cursor.end || *cursor.at == '#')
        {
            continue;
        }
        NarrowCommand& command = commands.emplace_back();
        if (!parsePath(cursor, command) || !parseArguments(cursor, command))
        {
            return {};
        }
    }
    return commands;
}
