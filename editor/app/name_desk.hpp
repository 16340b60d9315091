#pragma once

#include "editor/app/editor_options.hpp"
#include "editor/level/level.hpp"
#include "editor/names/project_names.hpp"

#include <iosfwd>
#include <memory>
#include <string>

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

private:
    ProjectNames& names();
    void listItems(const LevelData& level, std::vector<std::string>& keys);

    const EditorOptions& m_options;
    std::ostream& m_out;
    std::unique_ptr<ProjectNames> m_names;
};
