// Any bytes are a tree that can be walked through, or one message and no tree.

#include "fuzz/check.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "kodo/fs/data_section.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using Section = Kodo::SmartPointer<Kodo::DataSection>;

void checkText(const std::string& text)
{
    constexpr std::string_view BLANKS = " \t\r\n";
    FUZZ_CHECK(text.find('\0') == std::string::npos);
    FUZZ_CHECK(text.empty() || BLANKS.find(text.front()) == std::string_view::npos);
    FUZZ_CHECK(text.empty() || BLANKS.find(text.back()) == std::string_view::npos);
}

void checkSection(const Section& section, std::vector<Section>& open)
{
    checkText(section->asString());
    FUZZ_CHECK(section->readString("") == section->asString());
    FUZZ_CHECK(!section->sectionName().empty());
    std::vector<std::string> seen;
    for (const Section& child : *section)
    {
        open.push_back(child);
        const std::string name = child->sectionName();
        bool isFirst = seen.size() < 32 && name.find('/') == std::string::npos;
        for (const std::string& other : seen)
        {
            isFirst = isFirst && other != name;
        }
        FUZZ_CHECK(!isFirst || section->readString(name, "none") == child->asString());
        if (isFirst)
        {
            seen.push_back(name);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::string> messages;
    const Kodo::DebugMessageSink sink([&messages](const Kodo::DebugMessage& message)
                                      { messages.emplace_back(message.text); });
    std::vector<Section> open;
    if (Section root = Kodo::DataSection::parse({reinterpret_cast<const char*>(data), size}, "f"))
    {
        open.push_back(std::move(root));
    }
    FUZZ_CHECK(messages.size() == (open.empty() ? 1U : 0U));
    FUZZ_CHECK(messages.empty() || messages.front().starts_with("f:"));
    while (!open.empty()) // the root goes first, and its children stay
    {
        const Section section = open.back();
        open.pop_back();
        checkSection(section, open);
    }
    return 0;
}
