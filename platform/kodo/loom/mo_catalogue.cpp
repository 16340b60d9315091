#include "kodo/loom/mo_catalogue.hpp"

#include "kodo/core/text_hash.hpp"
#include "kodo/core/text_position.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace Kodo::Loom
{

namespace
{

constexpr std::uint32_t MAGIC = 0x950412DE;
constexpr std::size_t HEADER_SIZE = 20;  ///< up to and with the place of the second table
constexpr std::size_t LONGEST_NAME = 40; ///< of a charset, in a message

constexpr std::uint32_t swapped(std::uint32_t value) noexcept
{
    return (value >> 24U) | ((value >> 8U) & 0xFF00U) | ((value << 8U) & 0xFF0000U) | (value << 24U);
}

std::string lowered(std::string_view text)
{
    std::string lower(text);
    for (char& unit : lower)
    {
        unit = unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit - 'A' + 'a') : unit;
    }
    return lower;
}

/// What the header entry says after "charset=", in small letters; empty when it doesn't.
std::string charsetOf(std::string_view header)
{
    constexpr std::string_view KEY = "charset=";
    const std::string lower = lowered(header);
    const std::size_t key = lower.find(KEY);
    if (key == std::string::npos)
    {
        return {};
    }
    const std::size_t begin = key + KEY.size();
    return lower.substr(begin, lower.find_first_of(" \t\r\n;", begin) - begin);
}

bool isAmong(const std::string& charset, std::initializer_list<std::string_view> names)
{
    return std::find(names.begin(), names.end(), charset) != names.end();
}

} // namespace

/// Takes a file apart. Each number that the file gives is checked before it is used.
class MoCatalogue::Reader
{
public:
    explicit Reader(std::string_view file) noexcept : m_file(file) {}

    /// All entries of the file, the header among them; or what is wrong.
    std::string read(std::vector<Entry>& entries)
    {
        if (m_file.size() < HEADER_SIZE)
        {
            return "the catalogue is cut off";
        }
        const std::uint32_t magic = number(0);
        m_swapped = magic == swapped(MAGIC);
        if (!m_swapped && magic != MAGIC)
        {
            return "this is no catalogue of messages";
        }
        if (number(4) >> 16U > 1)
        {
            return "the catalogue has a format of a later time";
        }
        const std::uint32_t count = number(8);
        const Table messages{number(12), count};
        const Table texts{number(16), count};
        if (!isInside(messages) || !isInside(texts))
        {
            return "a table of the catalogue is cut off";
        }
        if (messages.overlaps(texts.at, texts.size()))
        {
            return "the tables of the catalogue overlap";
        }
        return readEntries(entries, messages, texts);
    }

private:
    struct Table
    {
        std::uint64_t at;
        std::uint64_t count;
        std::uint64_t size() const noexcept { return count * 8; }
        bool overlaps(std::uint64_t otherAt, std::uint64_t otherSize) const noexcept
        {
            return at < otherAt + otherSize && otherAt < at + size();
        }
    };

    /// Where a text is, without the NUL behind it.
    struct Place
    {
        std::uint64_t at;
        std::uint64_t size;
    };

    std::uint32_t number(std::size_t at) const noexcept
    {
        std::uint32_t value = 0;
        std::memcpy(&value, m_file.data() + at, sizeof value);
        return m_swapped ? swapped(value) : value;
    }

    bool isInside(const Table& table) const noexcept
    {
        return table.at >= HEADER_SIZE && table.at + table.size() <= m_file.size();
    }

    std::string readEntries(std::vector<Entry>& entries, const Table& messages, const Table& texts)
    {
        constexpr const char* OVERLAP = "the texts of the catalogue overlap";
        entries.reserve(static_cast<std::size_t>(messages.count));
        std::uint64_t textSize = 0;
        for (std::uint64_t i = 0; i < messages.count; ++i)
        {
            const Place message = placeAt(messages.at + i * 8);
            const Place text = placeAt(texts.at + i * 8);
            if (!isInside(message) || !isInside(text))
            {
                return "a text of the catalogue is cut off";
            }
            for (const Place& place : {message, text})
            {
                if (place.at < HEADER_SIZE || messages.overlaps(place.at, place.size + 1) ||
                    texts.overlaps(place.at, place.size + 1))
                {
                    return OVERLAP;
                }
            }
            textSize += message.size + text.size;
            entries.push_back({textOf(message), textOf(text)});
        }
        // Texts may share their bytes, but else a small file could stand for a great deal of text.
        return textSize <= m_file.size() ? std::string() : OVERLAP;
    }

    Place placeAt(std::uint64_t entry) const noexcept
    {
        return {number(static_cast<std::size_t>(entry) + 4), number(static_cast<std::size_t>(entry))};
    }

    /// With the NUL behind it.
    bool isInside(const Place& place) const noexcept
    {
        return place.at + place.size < m_file.size() &&
               m_file[static_cast<std::size_t>(place.at + place.size)] == '\0';
    }

    std::string_view textOf(const Place& place) const noexcept
    {
        const std::string_view text =
            m_file.substr(static_cast<std::size_t>(place.at), static_cast<std::size_t>(place.size));
        return text.substr(0, text.find('\0')); // plural forms stand behind
    }

    std::string_view m_file;
    bool m_swapped = false;
};

MoCatalogue::MoCatalogue(FS::FileContent file, std::string& fault) : m_file(std::move(file))
{
    fault = Reader(m_file.view()).read(m_entries);
    const auto isHeader = [](const Entry& entry) { return entry.message.empty(); };
    const auto header = std::find_if(m_entries.begin(), m_entries.end(), isHeader);
    const std::string charset = header != m_entries.end() ? charsetOf(header->text) : std::string();
    const bool isLatin1 = isAmong(charset, {"iso-8859-1", "iso_8859-1", "latin1", "l1"});
    // "CHARSET" is what the tools put where nobody has said yet.
    if (fault.empty() && !isLatin1 &&
        !isAmong(charset, {"", "utf-8", "utf8", "us-ascii", "ascii", "charset"}))
    {
        fault = "the catalogue is written in " + shortened(charset, LONGEST_NAME) + ", not in UTF-8";
    }
    if (!fault.empty())
    {
        m_entries.clear();
        m_file = {};
        return;
    }
    std::erase_if(m_entries, [](const Entry& entry) { return entry.message.empty() || entry.text.empty(); });
    if (isLatin1)
    {
        toUtf8();
    }
    makeIndex();
}

void MoCatalogue::toUtf8()
{
    std::size_t size = 0;
    for (const Entry& entry : m_entries)
    {
        size += 2 * (entry.message.size() + entry.text.size());
    }
    m_converted.reserve(size); // once, so that the views hold
    const auto convert = [this](std::string_view text)
    {
        const std::size_t begin = m_converted.size();
        for (const char unit : text)
        {
            const auto character = static_cast<unsigned char>(unit);
            if (character >= 0x80)
            {
                m_converted += static_cast<char>(0xC0U | (character >> 6U));
                m_converted += static_cast<char>(0x80U | (character & 0x3FU));
            }
            else
            {
                m_converted += unit;
            }
        }
        return std::string_view(m_converted).substr(begin);
    };
    for (Entry& entry : m_entries)
    {
        entry.message = convert(entry.message);
        entry.text = convert(entry.text);
    }
    m_file = {};
}

void MoCatalogue::makeIndex()
{
    m_slots.assign(std::bit_ceil(std::max<std::size_t>(2 * m_entries.size(), 2)), Slot());
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = 0; i < m_entries.size(); ++i)
    {
        const std::string_view message = m_entries[i].message;
        if (find(message).empty()) // of two texts for a message the first one holds
        {
            const std::uint64_t hash = hashText(message);
            auto at = static_cast<std::size_t>(hash) & mask;
            while (m_slots[at].entry != 0)
            {
                at = (at + 1) & mask;
            }
            m_slots[at] = {static_cast<std::uint32_t>(hash >> 32U), static_cast<std::uint32_t>(i + 1)};
        }
    }
}

std::string_view MoCatalogue::find(std::string_view message) const noexcept
{
    if (m_slots.empty())
    {
        return {};
    }
    const std::uint64_t hash = hashText(message);
    const std::size_t mask = m_slots.size() - 1;
    for (auto at = static_cast<std::size_t>(hash) & mask; m_slots[at].entry != 0; at = (at + 1) & mask)
    {
        if (m_slots[at].hash == static_cast<std::uint32_t>(hash >> 32U))
        {
            const Entry& entry = m_entries[m_slots[at].entry - 1];
            if (entry.message == message)
            {
                return entry.text;
            }
        }
    }
    return {};
}

} // namespace Kodo::Loom
