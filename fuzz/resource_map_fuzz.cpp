// Any bytes are a resource map without contradictions, or one fault.

#include "fuzz/check.hpp"
#include "kodo/loom/resource_map.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Kodo::Loom::ResourceMap map;
    std::vector<std::string> faults;
    const bool isUsable = Kodo::Loom::parseResourceMap(map, text, "m", faults);
    FUZZ_CHECK(isUsable || faults.size() == 1);
    FUZZ_CHECK(isUsable || map.catalogues.empty());
    for (const std::string& fault : faults)
    {
        FUZZ_CHECK(fault.starts_with("m:"));
    }
    const std::vector<std::string> languages = map.languages();
    FUZZ_CHECK(std::adjacent_find(languages.begin(), languages.end(), std::greater_equal<>()) ==
               languages.end());
    for (const std::string& language : languages)
    {
        FUZZ_CHECK(!language.empty() && map.knows(language));
    }
    for (const auto& [language, fallbacks] : map.fallbacks)
    {
        FUZZ_CHECK(std::all_of(fallbacks.begin(), fallbacks.end(),
                               [&map](const std::string& fallback) { return map.hasCatalogue(fallback); }));
    }
    for (const auto& [domain, files] : map.catalogues)
    {
        FUZZ_CHECK(!domain.empty() && domain.find_first_of("#:") == std::string::npos && !files.empty());
    }
    return 0;
}
