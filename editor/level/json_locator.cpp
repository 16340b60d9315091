#include "editor/level/json_locator.hpp"

#include <nlohmann/json.hpp>

#include <iterator>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace
{

using nlohmann::json;

/// Reads a text and counts how far the reader is.
class CountingIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, const char* begin, std::size_t* furthest)
        : m_at(at), m_begin(begin), m_furthest(furthest)
    {
    }
    reference operator*() const { return *m_at; }
    CountingIterator& operator++()
    {
        ++m_at;
        *m_furthest = static_cast<std::size_t>(m_at - m_begin);
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return m_at == other.m_at; }
    bool operator!=(const CountingIterator& other) const { return m_at != other.m_at; }

private:
    const char* m_at;
    const char* m_begin;
    std::size_t* m_furthest;
};

/// Follows the events of the reader and stops at the value or the repeated member looked for.
class Locator final : public nlohmann::json_sax<json>
{
public:
    /// Where the value at @p target, or with none the first mistake, stands.
    static std::size_t run(std::string_view text, const std::string* target)
    {
        Locator locator(text, target, false);
        locator.read();
        return locator.m_found;
    }

    static std::optional<RepeatedMember> findRepeated(std::string_view text)
    {
        Locator locator(text, nullptr, true);
        locator.read();
        return std::move(locator.m_repeated);
    }

    bool null() override { return scalar(); }
    bool boolean(bool) override { return scalar(); }
    bool number_integer(number_integer_t) override { return scalar(); }
    bool number_unsigned(number_unsigned_t) override { return scalar(); }
    bool number_float(number_float_t, const string_t&) override { return scalar(); }
    bool string(string_t&) override { return scalar(); }
    bool binary(binary_t&) override { return scalar(); }
    bool start_object(std::size_t) override { return open(true); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(false); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t position, const std::string&, const json::exception&) override
    {
        m_found = position > 0 ? position - 1 : 0; // the last byte read, counted from 1
        return false;
    }

    bool key(string_t& name) override
    {
        if (m_seekRepeated && !m_frames.back().keys.insert(name).second)
        {
            m_repeated = {name, nextStart()};
            return false;
        }
        m_frames.back().key = name;
        m_readBefore = m_furthest;
        return true;
    }

private:
    Locator(std::string_view text, const std::string* target, bool seekRepeated)
        : m_text(text), m_target(target), m_seekRepeated(seekRepeated)
    {
    }

    void read()
    {
        const char* const begin = m_text.data();
        const char* const end = begin + m_text.size();
        json::sax_parse(CountingIterator(begin, begin, &m_furthest),
                        CountingIterator(end, begin, &m_furthest), this);
    }

    struct Frame
    {
        bool isObject;
        std::string key;
        std::set<std::string> keys; ///< those before, where a repeated one is looked for
        std::size_t index = 0;
    };

    /// The pointer to the value that begins now.
    std::string pointer() const
    {
        json::json_pointer pointer;
        for (const Frame& frame : m_frames)
        {
            pointer /= frame.isObject ? frame.key : std::to_string(frame.index);
        }
        return pointer.to_string();
    }

    /// Notes where the value that begins now stands, if it is the one looked for.
    bool isTarget()
    {
        if (m_target == nullptr || pointer() != *m_target)
        {
            return false;
        }
        m_found = nextStart();
        return true;
    }

    /// Where the value or name that has just been read stands: behind what was read before it and the marks
    /// in between.
    std::size_t nextStart() const
    {
        const std::size_t start = m_text.find_first_not_of(" \t\r\n,:", m_readBefore);
        return start == std::string_view::npos ? 0 : start;
    }

    bool open(bool isObject)
    {
        if (isTarget())
        {
            return false;
        }
        m_frames.push_back({isObject, {}, {}, 0});
        m_readBefore = m_furthest;
        return true;
    }

    bool scalar() { return !isTarget() && next(); }

    bool close()
    {
        m_frames.pop_back();
        return next();
    }

    bool next()
    {
        if (!m_frames.empty())
        {
            ++m_frames.back().index;
        }
        // The end of a number is only seen at the mark behind it, which is read then.
        m_readBefore = m_furthest;
        return true;
    }

    std::string_view m_text;
    const std::string* m_target;
    bool m_seekRepeated;
    std::optional<RepeatedMember> m_repeated;
    std::size_t m_furthest = 0;
    std::vector<Frame> m_frames;
    std::size_t m_readBefore = 0;
    std::size_t m_found = 0;
};

} // namespace

std::size_t locateJsonValue(std::string_view text, const std::string& pointer)
{
    return Locator::run(text, &pointer);
}

std::optional<RepeatedMember> findRepeatedMember(std::string_view text)
{
    return Locator::findRepeated(text);
}

std::size_t locateJsonError(std::string_view text)
{
    return Locator::run(text, nullptr);
}
