// Any bytes are a catalogue in which every entry is found, or a fault and nothing else.

#include "fuzz/check.hpp"
#include "kodo/loom/mo_catalogue.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Kodo::Loom::MoCatalogue;
    Kodo::FS::FileContent file = Kodo::FS::FileContent::ofSize(size);
    std::copy_n(reinterpret_cast<const char*>(data), size, file.data.get());
    std::string fault;
    const MoCatalogue catalogue(std::move(file), fault);
    FUZZ_CHECK(fault.empty() || catalogue.entries().empty());
    FUZZ_CHECK(catalogue.find("").empty());
    std::size_t length = 0;
    for (const MoCatalogue::Entry& entry : catalogue.entries())
    {
        FUZZ_CHECK(!entry.message.empty() && !entry.text.empty());
        FUZZ_CHECK(entry.message.find('\0') == std::string_view::npos);
        FUZZ_CHECK(entry.text.find('\0') == std::string_view::npos);
        length += entry.message.size() + entry.text.size();
    }
    FUZZ_CHECK(length <= 2 * size);
    for (std::size_t i = 0; i < std::min<std::size_t>(catalogue.entries().size(), 256); ++i)
    {
        const std::string_view message = catalogue.entries()[i].message;
        const auto first = std::find_if(catalogue.entries().begin(), catalogue.entries().end(),
                                        [message](const auto& entry) { return entry.message == message; });
        FUZZ_CHECK(catalogue.find(message) == first->text);
    }
    return 0;
}
