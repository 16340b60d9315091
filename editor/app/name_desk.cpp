#include "editor/app/name_desk.hpp"

#include <algorithm>
#include <ostream>

namespace
{

/// The property of an item that holds the key of what it is an example of.
constexpr const char* DEFINITION = "definition";

} // namespace

NameDesk::NameDesk(const EditorOptions& options, std::ostream& out) : m_options(options), m_out(out) {}

void NameDesk::setLanguage(const std::string& language)
{
    names().setLanguage(language);
}

void NameDesk::show(const std::string& key)
{
    m_out << "name: " << describe(names().find(key)) << '\n';
}

void NameDesk::list(const LevelData& level)
{
    const ProjectNames& project = names();
    std::vector<std::string> keys = project.keys();
    m_out << "names in " << project.language() << '\n';
    for (const std::string& key : keys)
    {
        show(key);
    }
    listItems(level, keys);
    for (const std::string& language : project.languages())
    {
        m_out << "untranslated in " << language << ": " << project.countUntranslated(keys, language) << " of "
              << project.countTranslatable(keys) << '\n';
    }
}

void NameDesk::listItems(const LevelData& level, std::vector<std::string>& keys)
{
    for (const Item& item : level.items)
    {
        const auto definition = item.properties.find(DEFINITION);
        if (definition == item.properties.end())
        {
            continue;
        }
        m_out << "item: \"" << item.name << "\" is " << describe(names().find(definition->second)) << '\n';
        if (std::find(keys.begin(), keys.end(), definition->second) == keys.end())
        {
            keys.push_back(definition->second);
        }
    }
}

ProjectNames& NameDesk::names()
{
    if (!m_names)
    {
        auto opened = std::make_unique<ProjectNames>(m_options.project ? *m_options.project
                                                                       : projectOf(*m_options.level));
        if (m_options.language)
        {
            opened->setLanguage(*m_options.language);
        }
        m_names = std::move(opened);
    }
    return *m_names;
}
