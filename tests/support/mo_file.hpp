#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The bytes of a compiled catalogue as the format has them: header, both tables, and the texts one after
/// another. The entries stand in the order given, without the hash table, which is optional.
class MoFile
{
public:
    using Entries = std::vector<std::pair<std::string, std::string>>;

    explicit MoFile(Entries entries, std::endian order = std::endian::little)
        : m_entries(std::move(entries)), m_order(order)
    {
    }

    /// The entry that names the encoding.
    static std::pair<std::string, std::string> header(const std::string& charset)
    {
        return {"", "Project-Id-Version: x\nContent-Type: text/plain; charset=" + charset + "\n"};
    }

    std::string bytes() const
    {
        constexpr std::uint32_t HEADER = 28;
        const auto count = static_cast<std::uint32_t>(m_entries.size());
        std::string messages;
        std::string texts;
        std::string pool;
        const auto add = [&](std::string& table, const std::string& text)
        {
            table += number(static_cast<std::uint32_t>(text.size()));
            table += number(HEADER + 16 * count + static_cast<std::uint32_t>(pool.size()));
            pool.append(text).append(1, '\0');
        };
        for (const auto& [message, text] : m_entries)
        {
            add(messages, message);
        }
        for (const auto& [message, text] : m_entries)
        {
            add(texts, text);
        }
        std::string whole;
        for (const std::uint32_t value : {0x950412DEU, 0U, count, HEADER, HEADER + 8 * count, 0U, 0U})
        {
            whole += number(value);
        }
        return whole + messages + texts + pool;
    }

    /// Four bytes in the catalogue's order.
    std::string number(std::uint32_t value) const
    {
        std::string four(4, '\0');
        for (unsigned i = 0; i < 4; ++i)
        {
            four[m_order == std::endian::little ? i : 3 - i] = static_cast<char>((value >> (8 * i)) & 0xFFU);
        }
        return four;
    }

private:
    Entries m_entries;
    std::endian m_order;
};
