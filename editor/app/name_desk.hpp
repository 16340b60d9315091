#pragma once

#include "editor/app/editor_options.hpp"
#include "editor/level/level.hpp"
#include "editor/names/project_names.hpp"

#include <functional>
#include <iosfwd>
#include <memory>
#include <set>
#include <string>
#include <string_view>

/// Tells the names of a level's project. The project is opened when a name or a language is first asked for.
/// Main thread only.
class NameDesk
{
public:
    /// Names are written to @p out; both must outlive this object.
    NameDesk(const EditorOptions& options, std::ostream& out);

    /// These throw NamesError where the project cannot be opened or the language is unknown.
    void setLanguage(const std::string& language);
    void show(const std::string& key);
    /// All names of the project and of the level's items, and what each language leaves untranslated.
    void list(const LevelData& level);

    /// Whether a report that has come in is news. One that comes from the work above is none when it says
    /// what one of these said before: the project's files are read for each language anew, and a person needs
    /// to read only once what is wrong with them.
    bool isNews(std::string_view report);

private:
    class Work;

    ProjectNames& names();
    void listItems(const LevelData& level, std::vector<std::string>& keys);

    const EditorOptions& m_options;
    std::ostream& m_out;
    std::unique_ptr<ProjectNames> m_names;
    bool m_isWorking = false;
    std::set<std::string, std::less<>> m_reports; ///< that came from the work with names
};
