// The parser takes any line, says so in one message or none, and leaves a usable command or nothing.

#include "fuzz/check.hpp"
#include "kodo/core/debug_message_helper.hpp"
#include "tern_common/command_parser.hpp"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace
{

void check(const std::wstring& line)
{
    int messages = 0;
    const Kodo::DebugMessageSink sink(
        [&messages](const Kodo::DebugMessage& message)
        {
            FUZZ_CHECK(!message.critical); // the parser's own preconditions cannot fail
            FUZZ_CHECK(message.messagePriority == 5);
            ++messages;
        });
    CommandParser parser(line);
    try
    {
        parser.parse();
    }
    catch (const std::out_of_range&)
    {
        FUZZ_CHECK(line.find_first_of(L"0123456789") != std::wstring::npos);
        FUZZ_CHECK(messages == 0);
        return;
    }
    switch (parser.result())
    {
    case CommandParser::Result::EMPTY:
        FUZZ_CHECK(messages == 0);
        break;
    case CommandParser::Result::FAILED:
        FUZZ_CHECK(messages == 1 || (messages == 0 && line.find(L'"') != std::wstring::npos));
        break;
    case CommandParser::Result::PARSED:
        FUZZ_CHECK(messages == 0);
        FUZZ_CHECK(parser.eol());
        FUZZ_CHECK(!parser.path().empty());
        for (const std::string& name : parser.path())
        {
            FUZZ_CHECK(!name.empty());
        }
        for (const vell::Variant& argument : parser.args())
        {
            FUZZ_CHECK(!argument.isVoid());
        }
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Each byte a character, then each two bytes, so that text beyond Latin-1 and surrogates come up as well.
    std::wstring line(data, data + size);
    check(line);
    std::wstring wide;
    for (std::size_t i = 0; i + 1 < size; i += 2)
    {
        wide.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
    }
    check(wide);
    return 0;
}
