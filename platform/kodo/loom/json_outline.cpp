#include "kodo/loom/json_outline.hpp"

#include "kodo/core/text_position.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace Kodo::Loom
{

namespace
{

using Json = nlohmann::json;
using Kind = JsonOutline::Kind;

constexpr std::size_t DEPTH = 3; ///< of the objects and lists whose contents are kept

class Reader : private nlohmann::json_sax<Json>
{
public:
    explicit Reader(JsonFault& fault) noexcept : m_fault(fault) {}

    bool read(std::string_view text)
    {
        return Json::sax_parse(text, static_cast<nlohmann::json_sax<Json>*>(this));
    }
    JsonOutline takeRoot() noexcept { return std::move(m_root); }

private:
    static constexpr std::size_t LONGEST_REASON = 200;

    bool null() override { return add(Kind::Other); }
    bool boolean(bool) override { return add(Kind::Other); }
    bool number_integer(number_integer_t) override { return add(Kind::Other); }
    bool number_unsigned(number_unsigned_t) override { return add(Kind::Other); }
    bool number_float(number_float_t, const string_t&) override { return add(Kind::Other); }
    bool binary(binary_t&) override { return add(Kind::Other); }
    bool string(string_t& text) override { return add(Kind::Text, &text); }
    bool key(string_t& name) override
    {
        if (m_tooDeep == 0)
        {
            m_key = std::move(name);
        }
        return true;
    }
    bool start_object(std::size_t) override { return open(Kind::Object); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Kind::List); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t position, const std::string&, const Json::exception& error) override
    {
        m_fault.offset = position > 0 ? position - 1 : 0;
        std::string& what = m_fault.what;
        what = error.what();
        // Its text begins with a name of its own and a place that counts bytes.
        if (what.starts_with('['))
        {
            what.erase(0, std::min(what.find("] ") + 2, what.size()));
        }
        if (const std::size_t reason = what.find(": "); what.starts_with("parse error"))
        {
            what.erase(0, reason + 2);
        }
        what = shortened(what, LONGEST_REASON); // it ends in what was read last, however long that is
        return false;
    }

    bool add(Kind kind, std::string* text = nullptr)
    {
        if (m_tooDeep > 0)
        {
            return true;
        }
        if (isInList())
        {
            auto& items = m_open.back()->items;
            text != nullptr ? items.emplace_back(std::move(*text)) : items.emplace_back();
            return true;
        }
        JsonOutline& value = place();
        value.kind = kind;
        value.text = text != nullptr ? std::move(*text) : std::string();
        return true;
    }

    bool open(Kind kind)
    {
        if (m_tooDeep > 0 || m_open.size() == DEPTH || isInList())
        {
            add(kind);
            ++m_tooDeep;
            return true;
        }
        JsonOutline& value = place();
        value.kind = kind;
        m_open.push_back(&value);
        return true;
    }

    bool close()
    {
        if (m_tooDeep > 0)
        {
            --m_tooDeep;
        }
        else
        {
            m_open.pop_back();
        }
        return true;
    }

    bool isInList() const noexcept { return !m_open.empty() && m_open.back()->kind == Kind::List; }

    /// A new value: the member of the object that is open, or the root.
    JsonOutline& place()
    {
        if (m_open.empty())
        {
            return m_root;
        }
        std::unique_ptr<JsonOutline>& member = m_open.back()->members[std::move(m_key)];
        member = std::make_unique<JsonOutline>();
        return *member;
    }

    JsonFault& m_fault;
    JsonOutline m_root;
    std::vector<JsonOutline*> m_open; ///< from the root on
    std::string m_key;
    std::size_t m_tooDeep = 0; ///< how many objects and lists are open beyond those
};

} // namespace

const JsonOutline* JsonOutline::find(const std::string& member) const
{
    const auto found = members.find(member);
    return found == members.end() ? nullptr : found->second.get();
}

std::optional<JsonOutline> readJson(std::string_view text, JsonFault& fault)
{
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos) // to the parser the end
    {
        fault = {nul, "a NUL in the text"};
        return std::nullopt;
    }
    Reader reader(fault);
    return reader.read(text) ? std::optional(reader.takeRoot()) : std::nullopt;
}

} // namespace Kodo::Loom
