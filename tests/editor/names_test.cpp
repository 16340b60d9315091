// Names in the headless editor, by the real program.

#include "tests/support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace
{

using Lines = std::vector<std::string>;

class NamesTest : public testing::Test
{
protected:
    /// The exit code of the editor; what it says is kept.
    int run(const std::string& arguments)
    {
        const std::string out = (m_directory / "out.txt").string();
        const std::string errors = (m_directory / "errors.txt").string();
        const std::string line = "cd '" TERN_SOURCE_DIR "' && '" TERN_EDITOR_PROGRAM "' " + arguments + " >" +
                                 out + " 2>" + errors;
        const int status = std::system(line.c_str());
        m_out = readFile(out);
        m_errors = readFile(errors);
#if defined(_WIN32)
        return status;
#else
        return WEXITSTATUS(status);
#endif
    }

    int runSample(const std::string& arguments)
    {
        return run("--headless --level samples/harbour.level " + arguments);
    }

    /// The lines of the output that begin so, without that.
    Lines lines(const std::string& beginning) const
    {
        Lines found;
        std::istringstream stream(m_out);
        for (std::string line; std::getline(stream, line);)
        {
            if (line.starts_with(beginning))
            {
                found.push_back(line.substr(beginning.size()));
            }
        }
        return found;
    }

    bool says(const std::string& line) const
    {
        return m_out.starts_with(line + "\n") || m_out.find("\n" + line + "\n") != std::string::npos;
    }

    /// A level with a project beside it; the project's catalogues are the sample's own sources of none.
    std::string makeLevel(const std::string& resourceMap)
    {
        m_directory.write("level_project/gui/canopy/res_map.json", resourceMap);
        return m_directory
            .write("level.level", R"({"format":"tern-level","version":1,"items":[
            {"name":"a","type":"vehicle","properties":{"definition":"tug"}},
            {"name":"b","type":"vehicle","properties":{"definition":"#v:none"}},
            {"name":"c","type":"vehicle"}]})")
            .string();
    }

    TemporaryDirectory m_directory;
    std::string m_out;
    std::string m_errors;
};

const char* const EMPTY_MAP = R"({"language":"en","catalogues":{"v":{"en":"v.mo"}}})";

TEST_F(NamesTest, ListsEveryNameWithWhereItCameFrom)
{
    EXPECT_EQ(runSample("--names --language de"), 0) << m_errors;
    EXPECT_EQ(lines("names in "), Lines{"de"});
    EXPECT_EQ(lines("name: ").size(), 18U);
    EXPECT_TRUE(says("name: heavy_loader \"Schwerer Lader\", cached from "
                     "scripts/item_defs/vehicles/loaders/list.xml:3"))
        << m_out;
    EXPECT_TRUE(
        says("name: 02_south_quay \"S\u00fcdkai\", cached from scripts/arena_defs/02_south_quay.xml:3"));
    EXPECT_TRUE(says("name: reach_stacker \"#vehicles:reach_stacker\", not translated, cached from "
                     "scripts/item_defs/vehicles/loaders/list.xml:15"));
    EXPECT_TRUE(
        says("name: test_raft: nothing, \"Test raft\" in scripts/item_defs/vehicles/ships/list.xml:21 is "
             "no key"));
    EXPECT_TRUE(says("item: \"tug\" is tug \"Hafenschlepper\", cached from "
                     "scripts/item_defs/vehicles/ships/list.xml:3"));
    EXPECT_TRUE(says("item: \"gate lamp\" is #scenery:yard_lamp \"Hoflampe\", from the catalogue"));
    EXPECT_EQ(m_errors, "");
}

TEST_F(NamesTest, EveryLanguageHasItsOwnNamesAndTheSameCounts)
{
    const std::vector<std::array<std::string, 4>> expected{
        {"en", "Heavy loader", "Old Harbour", "Yard lamp"},
        {"de", "Schwerer Lader", "Alter Hafen", "Hoflampe"},
        {"el", "\u0392\u03b1\u03c1\u03cd\u03c2 \u03c6\u03bf\u03c1\u03c4\u03c9\u03c4\u03ae\u03c2",
         "\u03a0\u03b1\u03bb\u03b9\u03cc \u03bb\u03b9\u03bc\u03ac\u03bd\u03b9",
         "\u03a6\u03b1\u03bd\u03bf\u03c3\u03c4\u03ac\u03c4\u03b7\u03c2"}};
    for (const auto& [language, vehicle, arena, lamp] : expected)
    {
        SCOPED_TRACE(language);
        EXPECT_EQ(runSample("--names --language " + language), 0) << m_errors;
        EXPECT_EQ(lines("names in "), Lines{language});
        EXPECT_TRUE(says("name: heavy_loader \"" + vehicle +
                         "\", cached from scripts/item_defs/vehicles/loaders/list.xml:3"))
            << m_out;
        EXPECT_TRUE(says("name: 03_old_harbour \"" + arena +
                         "\", cached from scripts/arena_defs/03_old_harbour.xml:3"));
        EXPECT_TRUE(says("item: \"gate lamp\" is #scenery:yard_lamp \"" + lamp + "\", from the catalogue"));
        EXPECT_EQ(lines("untranslated in "), (Lines{"de: 1 of 18", "el: 3 of 18", "en: 0 of 18"}));
        const Lines names = lines("name: ");
        EXPECT_EQ(std::count_if(names.begin(), names.end(),
                                [](const std::string& line)
                                { return line.find("not translated") != std::string::npos; }),
                  language == "de"   ? 1
                  : language == "el" ? 3
                                     : 0);
    }
}

TEST_F(NamesTest, TheProjectSaysWhichLanguageIsSpokenAtFirst)
{
    EXPECT_EQ(runSample("--names"), 0) << m_errors;
    EXPECT_EQ(lines("names in "), Lines{"en"});
}

TEST_F(NamesTest, AnUnknownLanguageIsRefusedWithTheKnownOnes)
{
    EXPECT_EQ(runSample("--names --language fr"), 1);
    EXPECT_EQ(m_errors, "error: the project has no language \"fr\"; it has de, el, en\n");
    EXPECT_EQ(lines("name: "), Lines{});
    for (const char* odd : {"''", "DE", "../de"})
    {
        EXPECT_EQ(runSample(std::string("--names --language ") + odd), 1) << odd;
    }
}

TEST_F(NamesTest, AScriptSwitchesTheLanguageWhileTheEditorRuns)
{
    const std::string script =
        m_directory
            .write("s.txt", "names.show(\"tug\")\n"
                            "names.language(\"de\")\nnames.show(\"tug\")\nwait(2)\n"
                            "names.language(\"el\")\nnames.show(\"tug\")\n"
                            "names.show(\"#scenery:bollard\")\n"
                            "names.language(\"en\")\nnames.show(\"#scenery:bollard\")\n")
            .string();
    EXPECT_EQ(runSample("--names --script " + script), 0) << m_errors;
    Lines shown;
    for (const std::string& line : lines("name: "))
    {
        if (shown.size() < 5)
        {
            shown.push_back(line.substr(0, line.find(',')));
        }
    }
    EXPECT_EQ(shown, (Lines{"tug \"Harbour tug\"", "tug \"Hafenschlepper\"",
                            "tug \"\u03a1\u03c5\u03bc\u03bf\u03c5\u03bb\u03ba\u03cc\"",
                            "#scenery:bollard: nothing", "#scenery:bollard \"Mooring bollard\""}))
        << m_out;
    EXPECT_EQ(lines("names in "), Lines{"en"});
}

TEST_F(NamesTest, AScriptThatAsksForAnUnknownLanguageIsToldSoAndTheOldOneStays)
{
    const std::string script =
        m_directory.write("s.txt", "names.language(\"de\")\nnames.language(\"fr\")\nnames.show(\"barge\")\n")
            .string();
    EXPECT_EQ(runSample("--script " + script), 1);
    EXPECT_EQ(m_errors,
              "error: " + script +
                  ":2: names.language(\"fr\"): the project has no language \"fr\"; it has de, el, en\n");
    ASSERT_EQ(lines("name: ").size(), 1U);
    EXPECT_TRUE(lines("name: ")[0].starts_with("barge \"Schute\", ")) << m_out;
}

TEST_F(NamesTest, ALevelWithoutAProjectIsNamed)
{
    const std::string level =
        m_directory.write("lonely.level", R"({"format":"tern-level","version":1})").string();
    EXPECT_EQ(run("--headless --level " + level + " --names"), 1);
    EXPECT_EQ(m_errors, "error: " + level + ": no project: neither " +
                            (m_directory / "lonely_project").string() + " nor " +
                            m_directory.path().string() + " has gui/canopy/res_map.json\n");
    EXPECT_EQ(run("--headless --level " + level), 0) << "nobody asked for names";
    EXPECT_EQ(run("--headless --level " + level + " --names --project samples/harbour_project"), 0)
        << m_errors;
    EXPECT_EQ(lines("untranslated in "), (Lines{"de: 1 of 17", "el: 3 of 17", "en: 0 of 17"}));
    EXPECT_EQ(run("--headless --level " + level + " --names --project samples/harbour_project/"), 0)
        << m_errors;
    EXPECT_EQ(run("--headless --level " + level + " --names --project samples"), 1);
    EXPECT_EQ(m_errors, "error: samples: no project: gui/canopy/res_map.json is missing\n");
}

TEST_F(NamesTest, ALevelsOwnDirectoryMayBeItsProject)
{
    m_directory.write("gui/canopy/res_map.json", EMPTY_MAP);
    m_directory.write("scripts/arena_defs/bay.xml",
                      "<root>\n\n  <size>1</size><name>\n #v:bay</name></root>");
    const std::string level =
        m_directory.write("own.level", R"({"format":"tern-level","version":1})").string();
    EXPECT_EQ(run("--headless --level " + level + " --names"), 1) << "the catalogue is missing";
    EXPECT_EQ(m_errors, "error: v.mo: there is no such file\n");
    EXPECT_TRUE(says("name: bay \"#v:bay\", not translated, cached from scripts/arena_defs/bay.xml:3"))
        << m_out;
}

TEST_F(NamesTest, OfSeveralDefinitionsTheOneThatCountsIsNamed)
{
    const std::string level = makeLevel(EMPTY_MAP);
    const std::string vehicles = "level_project/scripts/item_defs/vehicles/";
    m_directory.write(vehicles + "a/list.xml",
                      "<root>\n<tug><userString>#v:1</userString></tug>\n<tug/>\n</root>");
    m_directory.write(vehicles + "b/list.xml", "<root><tug><userString>#v:2</userString></tug>\n"
                                               "<tug><userString>x</userString></tug></root>");
    m_directory.write("level_project/scripts/arena_defs/bay.xml", "<root><name>#v:bay</name></root>");
    m_directory.write("level_project/scripts/arena_defs/bay.yaml",
                      "<root>\n<name><![CDATA[#v]]>:yaml</name></root>");
    m_directory.write("level_project/scripts/arena_defs/broken.xml", "<root><name>#v:broken</name>");
    EXPECT_EQ(run("--headless --level " + level + " --names"), 1);
    EXPECT_TRUE(
        says("name: tug \"#v:2\", not translated, cached from scripts/item_defs/vehicles/b/list.xml:1"))
        << m_out;
    EXPECT_TRUE(says("name: bay \"#v:yaml\", not translated, cached from scripts/arena_defs/bay.yaml:2"));
    EXPECT_EQ(lines("name: ").size(), 2U);
    EXPECT_EQ(lines("item: "), (Lines{"\"a\" is tug \"#v:2\", not translated, cached from "
                                      "scripts/item_defs/vehicles/b/list.xml:1",
                                      "\"b\" is #v:none: nothing"}));
    EXPECT_EQ(lines("untranslated in "), Lines{"en: 3 of 3"});
    EXPECT_NE(m_errors.find("scripts/arena_defs/broken.xml:"), std::string::npos) << m_errors;
}

TEST_F(NamesTest, DefinitionsAreListedWhateverTheirFilesAreWrittenInAndWhateverTheyAreCalled)
{
    const std::string level = makeLevel(EMPTY_MAP);
    const std::string arenas = "level_project/scripts/arena_defs/";
    std::string utf16 = "\xFF\xFE";
    for (const char character : std::string("<root>\n<name>#v:bay</name></root>"))
    {
        utf16 += character;
        utf16 += '\0';
    }
    m_directory.write(arenas + "bay.xml", utf16);
    m_directory.write(
        arenas + "quay.xml",
        "<?xml version='1.0' encoding='ISO-8859-1'?><root>\n<name>K\xE4i #v:quay</name></root>");
    m_directory.write(arenas + ".hidden", "<root><name>#v:hidden</name></root>");
    EXPECT_EQ(run("--headless --level " + level + " --names"), 1);
    EXPECT_EQ(
        lines("name: "),
        (Lines{".hidden \"#v:hidden\", not translated, cached from scripts/arena_defs/.hidden:1",
               "bay \"#v:bay\", not translated, cached from scripts/arena_defs/bay.xml:2",
               "quay \"K\u00e4i #v:quay\", not translated, cached from scripts/arena_defs/quay.xml:2"}));
}

TEST_F(NamesTest, AFileThatIsRefusedDefinesNothing)
{
    const std::string level = makeLevel(EMPTY_MAP);
    const std::string arenas = "level_project/scripts/arena_defs/";
    m_directory.write(arenas + "tail.xml", "<root><name>#v:tail</name></root>tail");
    m_directory.write(arenas + "twice.xml", "<root><name>#v:twice</name></root><root/>");
    m_directory.write(arenas + "koi.xml",
                      "<?xml version='1.0' encoding='koi8-r'?><r><name>#v:koi</name></r>");
    EXPECT_EQ(run("--headless --level " + level + " --names"), 1);
    EXPECT_EQ(lines("name: "), Lines{}) << "they are not in the cache either";
    EXPECT_EQ(std::count(m_errors.begin(), m_errors.end(), '\n'), 4) << "each once, and the catalogue\n"
                                                                     << m_errors;
}

TEST_F(NamesTest, WhatAFallbackLanguageHasIsTranslated)
{
    const std::string level = makeLevel(R"({"language":"de_AT","fallbacks":{"de_AT":["de","en"],"de":["en"]},
        "catalogues":{"vehicles":{"de":"po/de/vehicles.mo","en":"po/en/vehicles.mo"}}})");
    m_directory.write("level_project/scripts/item_defs/vehicles/a/list.xml",
                      "<root><stacker><userString>#vehicles:reach_stacker</userString></stacker></root>");
    const fs::path built =
        fs::path(TERN_EDITOR_PROGRAM).parent_path().parent_path() / "share/tern_editor/harbour_project/po";
    fs::copy(built, m_directory / "level_project/po", fs::copy_options::recursive);
    EXPECT_EQ(run("--headless --level " + level + " --names"), 0) << m_errors;
    EXPECT_EQ(lines("name: "),
              Lines{"stacker \"Reach stacker\", cached from scripts/item_defs/vehicles/a/list.xml:1"});
    EXPECT_EQ(lines("untranslated in "), (Lines{"de: 2 of 3", "de_AT: 2 of 3", "en: 2 of 3"}));
}

TEST_F(NamesTest, AResourceMapThatCannotBeUsedIsToldOnce)
{
    const std::string level = makeLevel("{\"language\":");
    EXPECT_EQ(run("--headless --level " + level + " --names"), 1);
    const std::string map = (m_directory / "level_project/gui/canopy/res_map.json").string();
    EXPECT_NE(m_errors.find("error: gui/canopy/res_map.json:1:13: "), std::string::npos) << m_errors;
    EXPECT_TRUE(m_errors.ends_with("error: " + map + ": cannot be used\n")) << m_errors;
    EXPECT_EQ(std::count(m_errors.begin(), m_errors.end(), '\n'), 2);
}

TEST_F(NamesTest, EachFaultOfAProjectIsReadOnceHoweverOftenItsLanguageIsSwitched)
{
    const std::string level = makeLevel(R"({"language":"en","fallbacks":{"de":["en"]},"extra":1,
        "catalogues":{"v":{"en":"v.mo","de":"de.mo","el":"el.mo"}}})");
    m_directory.write("level_project/de.mo", "no catalogue at all, however long one looks");
    m_directory.write("level_project/scripts/arena_defs/bay.xml", "<root><name>#v:bay</name></root>");
    m_directory.write("level_project/scripts/arena_defs/broken.xml", "<root>\n<name>#v:broken</nam></root>");
    const std::string script =
        m_directory
            .write("s.txt", "names.language(\"de\")\nnames.show(\"bay\")\nnames.language(\"en\")\n"
                            "names.language(\"fr\")\nnames.language(\"fr\")\n"
                            "names.language(\"de\")\nnames.show(\"#v:tug\")\n")
            .string();
    EXPECT_EQ(run("--headless --level " + level + " --names --language en --script " + script), 1);
    const auto times = [this](const std::string& fault)
    {
        std::size_t count = 0;
        for (std::size_t at = m_errors.find(fault); at != std::string::npos;
             at = m_errors.find(fault, at + 1))
        {
            ++count;
        }
        return count;
    };
    EXPECT_EQ(times("gui/canopy/res_map.json: /extra is not known; it is ignored\n"), 1U);
    EXPECT_EQ(times("scripts/arena_defs/broken.xml:2:"), 1U);
    EXPECT_EQ(times("v.mo: there is no such file\n"), 1U);
    EXPECT_EQ(times("el.mo: there is no such file\n"), 1U) << "read for its count";
    EXPECT_EQ(times("de.mo: this is no catalogue of messages\n"), 1U);
    EXPECT_EQ(times("the project has no language \"fr\""), 2U) << "a fault of each command";
    EXPECT_EQ(std::count(m_errors.begin(), m_errors.end(), '\n'), 7) << m_errors;
}

TEST_F(NamesTest, WhatIsReportedStandsOnALineOfItsOwnAndNamesNoScriptBehindItsEnd)
{
    const std::string level =
        makeLevel(R"({"language":"en","catalogues":{"v":{"en":"v.mo"},"w":{"de":"w.mo"}}})");
    m_directory.write("level_project/scripts/arena_defs/bay.xml", "<root><name>#v:bay</name></root>");
    m_directory.write("level_project/scripts/arena_defs/pier.xml", "<root><name>#w:pier</name></root>");
    const std::string script = m_directory.write("s.txt", "names.show(\"#v:tug\")\n").string();
    run("--headless --level " + level + " --names --script " + script + " 2>&1 | cat");
    EXPECT_EQ(lines("error: "), (Lines{script + ":1: names.show(\"#v:tug\"): v.mo: there is no such file",
                                       "w.mo: there is no such file"}))
        << m_out;
}

TEST_F(NamesTest, TextAroundAReferenceStaysInNames)
{
    const std::string level =
        m_directory.write("lonely.level", R"({"format":"tern-level","version":1})").string();
    const std::string script =
        m_directory.write("s.txt", "names.show(\"Old #vehicles:tug, mark 2\")\nnames.show(\"abc#def\")\n")
            .string();
    EXPECT_EQ(run("--headless --level " + level +
                  " --project samples/harbour_project --language de --script " + script),
              0)
        << m_errors;
    EXPECT_EQ(lines("name: "),
              (Lines{"Old #vehicles:tug, mark 2 \"Old Hafenschlepper, mark 2\", from the catalogue",
                     "abc#def: nothing"}));
}

TEST_F(NamesTest, AProjectMayBeNamedByItsOwnDirectory)
{
    const std::string level =
        m_directory.write("lonely.level", R"({"format":"tern-level","version":1})").string();
    for (const char* project : {"samples/harbour_project/.", "samples/../samples/harbour_project//"})
    {
        EXPECT_EQ(run("--headless --level " + level + " --names --project " + project), 0) << m_errors;
        EXPECT_EQ(lines("untranslated in "), (Lines{"de: 1 of 17", "el: 3 of 17", "en: 0 of 17"}));
    }
    const std::string arguments = "--headless --level " + level + " --names --project .";
    EXPECT_EQ(
        run("--help >/dev/null && cd samples/harbour_project && '" TERN_EDITOR_PROGRAM "' " + arguments), 0)
        << m_errors;
    EXPECT_EQ(lines("untranslated in "), (Lines{"de: 1 of 17", "el: 3 of 17", "en: 0 of 17"}));
}

TEST_F(NamesTest, NamesNeedALevelAndLanguagesNames)
{
    EXPECT_EQ(run("--headless --names"), 2);
    EXPECT_EQ(run("--colors 3 --names"), 2);
    EXPECT_EQ(runSample("--language de"), 2);
    EXPECT_EQ(runSample("--project samples/harbour_project"), 2);
    EXPECT_EQ(runSample("--names --language de --language el"), 2);
}

} // namespace
