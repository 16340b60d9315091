// What localization takes from the heap.

#include "tern_common/localization/localization.hpp"

#include "kodo/loom/ui_resource_utils.hpp"
#include "tests/support/allocation_hook.hpp"
#include "tests/support/resource_tree.hpp"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <new>
#include <string>

namespace
{

/// The XML parser takes its memory past operator new; here it does not, so that it is counted.
class CountedParser
{
public:
    CountedParser()
        : m_allocate(pugi::get_memory_allocation_function()),
          m_release(pugi::get_memory_deallocation_function())
    {
        pugi::set_memory_management_functions([](std::size_t size)
                                              { return ::operator new(size, std::nothrow); },
                                              [](void* memory) { ::operator delete(memory); });
    }
    CountedParser(const CountedParser&) = delete;
    CountedParser& operator=(const CountedParser&) = delete;
    ~CountedParser() { pugi::set_memory_management_functions(m_allocate, m_release); }

private:
    pugi::allocation_function m_allocate;
    pugi::deallocation_function m_release;
};

constexpr const char* LONG_TEXT = "a text that is too long to stand in the string object itself";

class LocalizationMemoryTest : public testing::Test
{
protected:
    LocalizationMemoryTest()
    {
        m_tree.writeCatalogue("v", {{"tug", LONG_TEXT}, {"bay", "Bay"}});
        m_tree.writeVehicles("a", "<tug><userString>#v:tug</userString></tug>"
                                  "<a_vehicle_with_a_name_of_some_length><userString>#v:tug</userString>"
                                  "</a_vehicle_with_a_name_of_some_length>");
        m_tree.writeVehicles("b", "<tug><userString>#v:tug</userString></tug>");
        m_tree.writeArena("01.xml", "<name>#v:bay</name>");
    }

    ResourceTree m_tree;
    CountedParser m_parser;
};

TEST_F(LocalizationMemoryTest, DestructionGivesEverythingBack)
{
    Localization().translate("tug");
    const std::size_t before = liveHeapBytes();
    {
        Localization localization;
        localization.translate("tug");
        localization.translate("absent");
        localization.loomTranslate("#v:bay");
        EXPECT_GT(liveHeapBytes(), before);
    }
    EXPECT_EQ(liveHeapBytes(), before);
}

TEST_F(LocalizationMemoryTest, ALookupTakesItsResultAndNoMore)
{
    Localization localization;
    localization.loomTranslate("#v:tug");
    const std::string known = "#v:tug";
    const std::string shortText = "#v:bay";
    const std::string absent = "#v:an unknown message that is long enough for the heap";
    const std::string foreign = "#nothing:of this domain, and long enough for the heap";
    const std::string plain = "no key at all, and long enough to stand on the heap";
    const std::string cached = "a_vehicle_with_a_name_of_some_length";
    const auto allocationsOf = [](auto&& lookup)
    {
        const AllocationCount count;
        const std::string text = lookup();
        return count.count();
    };
    EXPECT_EQ(allocationsOf([&] { return localization.loomTranslate(known); }), 1U);
    EXPECT_EQ(allocationsOf([&] { return localization.loomTranslate(shortText); }), 0U);
    EXPECT_EQ(allocationsOf([&] { return localization.loomTranslate(absent); }), 1U);
    EXPECT_EQ(allocationsOf([&] { return localization.loomTranslate(foreign); }), 1U);
    EXPECT_EQ(allocationsOf([&] { return localization.loomTranslate(plain); }), 1U);
    EXPECT_EQ(allocationsOf([&] { return localization.translateByCache(cached); }), 1U);
    EXPECT_EQ(allocationsOf([&] { return localization.translateByCache("01"); }), 0U);
    EXPECT_EQ(allocationsOf([&] { return localization.translateByCache("absent"); }), 0U);
    EXPECT_EQ(allocationsOf([&] { return localization.translate(cached); }), 1U);
    EXPECT_EQ(allocationsOf([&] { return localization.translate(known); }), 1U);
}

TEST_F(LocalizationMemoryTest, ConstructionHoldsOneFileAtATime)
{
    constexpr int GROUPS = 8;
    constexpr int VEHICLES = 500;
    std::string list;
    for (int vehicle = 0; vehicle < VEHICLES; ++vehicle)
    {
        const std::string tag = "vehicle_" + std::to_string(vehicle);
        list += "\n    <" + tag + ">\n        <userString>#v:tug</userString>\n";
        for (int field = 0; field < 10; ++field)
        {
            list += "        <field_" + std::to_string(field) + ">some value of the game's data</field_" +
                    std::to_string(field) + ">\n";
        }
        list += "    </" + tag + ">\n";
    }
    for (int group = 0; group < GROUPS; ++group)
    {
        m_tree.writeVehicles("group_" + std::to_string(group), list);
    }
    Localization().translate("tug");
    const std::size_t before = liveHeapBytes();
    const HeapPeak peak;
    const Localization localization;
    const std::size_t cache = liveHeapBytes() - before;
    ASSERT_EQ(localization.translateByCache("vehicle_499"), LONG_TEXT);
    EXPECT_LT(peak.bytes(), 3 * list.size() + cache);
    RecordProperty("peak_by_file", std::to_string(static_cast<double>(peak.bytes() - cache) /
                                                  static_cast<double>(list.size())));
}

} // namespace
