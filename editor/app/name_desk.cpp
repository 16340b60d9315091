#include "editor/app/name_desk.hpp"

#include <algorithm>
#include <ostream>
#include <utility>

namespace
{

/// The property of an item that holds the key of what it is an example of.
constexpr const char* DEFINITION = "definition";

} // namespace

/// Until its end, what is reported comes from the work with names.
class NameDesk::Work
{
public:
    explicit Work(NameDesk& desk) noexcept : m_desk(desk), m_before(std::exchange(desk.m_isWorking, true)) {}
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work() { m_desk.m_isWorking = m_before; }

private:
    NameDesk& m_desk;
    bool m_before;
};

NameDesk::NameDesk(const EditorOptions& options, std::ostream& out) : m_options(options), m_out(out) {}

void NameDesk::setLanguage(const std::string& language)
{
    const Work work(*this);
    names().setLanguage(language);
}

void NameDesk::show(const std::string& key)
{
    const Work work(*this);
    const std::string name =
        describe(names().find(key)); // reports, as any look-up here, before the line begins
    m_out << "name: " << name << '\n';
}

void NameDesk::list(const LevelData& level)
{
    const Work work(*this);
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
        const std::size_t untranslated = project.countUntranslated(keys, language);
        m_out << "untranslated in " << language << ": " << untranslated << " of "
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
        const std::string name = describe(names().find(definition->second));
        m_out << "item: \"" << item.name << "\" is " << name << '\n';
        if (std::find(keys.begin(), keys.end(), definition->second) == keys.end())
        {
            keys.push_back(definition->second);
        }
    }
}

bool NameDesk::isNews(std::string_view report)
{
    return !m_isWorking || m_reports.emplace(report).second;
}

ProjectNames& NameDesk::names()
{
    if (!m_names)
    {
        m_names = std::make_unique<ProjectNames>(
            m_options.project ? *m_options.project : projectOf(*m_options.level), m_options.language);
    }
    return *m_names;
}
