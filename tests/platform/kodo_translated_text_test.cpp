// Keys of any form, against a plain reading of them.

#include "kodo/loom/ui_resource_utils.hpp"
#include "tests/platform/map_manager.hpp"
#include "tests/support/property.hpp"
#include "tests/support/resource_tree.hpp"

#include <map>
#include <regex>
#include <string>
#include <vector>

RC_GTEST_PROP(TranslatedTextProperty, AnyTextIsTranslatedAsAPatternHasIt, ())
{
    const std::map<std::string, std::string> texts{
        {"a", "A"}, {"b.a", "BA"}, {"a: b", "sentence"}, {"-a", "dash"}, {"\xC3\xA4", "umlaut"}};
    const ResourceTree resources;
    resources.write("map.json", R"({"language": "x", "catalogues": {"d": {"x": "x.mo"}}})");
    resources.write("x.mo", makeCatalogue(texts));
    const MapManager manager;
    const auto pieces = rc::gen::element<std::string>("#", ":", "#d:", "#d:", "d", "a", "a", "b.a", "a: b",
                                                      "-a", "\xC3\xA4", " ", ".", "-", "/", "_", "(", "\n");
    std::string key;
    for (const std::string& piece : *rc::gen::container<std::vector<std::string>>(pieces))
    {
        key += piece;
    }
    std::string expected = key;
    static const std::regex REFERENCE("#([^#:]*):([^]*)");
    static const std::regex NAME("[\\w./\x80-\xFF-]*[\\w\x80-\xFF]");
    std::smatch reference;
    if (std::regex_search(key, reference, REFERENCE) && reference[1] == "d")
    {
        const std::string rest = reference[2];
        std::smatch name;
        const bool hasName = std::regex_search(rest, name, NAME, std::regex_constants::match_continuous);
        const auto whole = texts.find(rest);
        const auto named = texts.find(hasName ? name.str() : "");
        if (whole != texts.end())
        {
            expected = reference.prefix().str() + whole->second;
        }
        else if (named != texts.end())
        {
            expected = reference.prefix().str() + named->second + name.suffix().str();
        }
    }
    RC_ASSERT(Kodo::Loom::UiResourceUtils::getTranslatedText(key, manager) == expected);
}
