#include "editor/names/project_names.hpp"

#include "editor/files/file_error.hpp"
#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/utils.hpp"
#include "kodo/loom/ui_resource_utils.hpp"
#include "tern_common/localization/localization.hpp"

#include <algorithm>
#include <system_error>

namespace fs = std::filesystem;

namespace
{

constexpr const char* RESOURCE_MAP = "gui/canopy/res_map.json";

fs::path pathOf(const std::string& utf8)
{
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

bool isProject(const fs::path& directory)
{
    std::error_code ignored;
    return fs::is_regular_file(directory / RESOURCE_MAP, ignored);
}

/// Where the build puts the compiled catalogues of the projects that come with the editor.
fs::path builtCatalogues(const fs::path& project)
{
    const fs::path whole = fs::absolute(project).lexically_normal(); // "." and "a/" have no name of their own
    const fs::path name = whole.has_filename() ? whole.filename() : whole.parent_path().filename();
    return pathOf(Kodo::FS::Utils::appPath()).parent_path().parent_path() / "share" / "tern_editor" / name;
}

bool isKey(const std::string& name)
{
    return name.find('#') != std::string::npos;
}

std::string join(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
    {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

} // namespace

fs::path projectOf(const fs::path& level)
{
    fs::path beside = level;
    beside.replace_extension();
    beside += "_project";
    const fs::path own = level.has_parent_path() ? level.parent_path() : fs::path(".");
    for (const fs::path& directory : {beside, own})
    {
        if (isProject(directory))
        {
            return directory;
        }
    }
    throw NamesError(displayName(level) + ": no project: neither " + displayName(beside) + " nor " +
                     displayName(own) + " has " + RESOURCE_MAP);
}

/// The project's directories in the process's file system.
class ProjectNames::Mount
{
public:
    explicit Mount(const fs::path& project)
    {
        Kodo::FS::fileSystem().addRoot(displayName(project));
        Kodo::FS::fileSystem().addRoot(displayName(builtCatalogues(project))); // where there are any
    }
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;
    ~Mount()
    {
        Kodo::Loom::UiResourceUtils::setCurrentLanguage("");
        Kodo::FS::fileSystem().clearRoots();
    }
};

ProjectNames::ProjectNames(const fs::path& project, const std::optional<std::string>& language)
{
    if (!isProject(project))
    {
        throw NamesError(displayName(project) + ": no project: " + RESOURCE_MAP + " is missing");
    }
    m_mount = std::make_unique<Mount>(project);
    m_others = std::make_unique<Localization::ResourceManager>();
    if (!m_others->initialize())
    {
        throw NamesError(displayName(project / RESOURCE_MAP) + ": cannot be used");
    }
    m_languages = m_others->languages();
    if (language)
    {
        setLanguage(*language);
    }
    else
    {
        m_language = m_others->language();
        m_localization = std::make_unique<Localization>();
    }
    m_definitions = readDefinitions(); // behind the library, which reports what cannot be read
}

ProjectNames::~ProjectNames() = default;

void ProjectNames::setLanguage(const std::string& language)
{
    if (std::find(m_languages.begin(), m_languages.end(), language) == m_languages.end())
    {
        throw NamesError("the project has no language \"" + language + "\"; it has " + join(m_languages));
    }
    Kodo::Loom::UiResourceUtils::setCurrentLanguage(language);
    m_localization = std::make_unique<Localization>();
    m_language = language;
}

std::vector<std::string> ProjectNames::keys() const
{
    std::vector<std::string> keys;
    for (const auto& [key, definition] : m_definitions)
    {
        keys.push_back(key);
    }
    return keys;
}

TranslatedName ProjectNames::find(const std::string& key) const
{
    TranslatedName name;
    name.key = key;
    name.text = m_localization->translateByCache(key);
    const auto definition = m_definitions.find(key);
    if (definition != m_definitions.end())
    {
        name.definition = definition->second;
    }
    if (!name.text.empty())
    {
        name.origin = TranslatedName::Origin::Cache;
        name.translated = !name.definition || name.text != name.definition->name;
        return name;
    }
    name.text = m_localization->translate(key);
    name.translated = name.text != key;
    name.origin = name.translated ? TranslatedName::Origin::Catalogue : TranslatedName::Origin::Nothing;
    return name;
}

std::string ProjectNames::messageOf(const std::string& key) const
{
    const auto definition = m_definitions.find(key);
    if (definition == m_definitions.end())
    {
        return key;
    }
    return isKey(definition->second.name) ? definition->second.name : std::string();
}

std::size_t ProjectNames::countTranslatable(const std::vector<std::string>& keys) const
{
    return static_cast<std::size_t>(std::count_if(
        keys.begin(), keys.end(), [this](const std::string& key) { return !messageOf(key).empty(); }));
}

std::size_t ProjectNames::countUntranslated(const std::vector<std::string>& keys,
                                            const std::string& language) const
{
    return static_cast<std::size_t>(std::count_if(keys.begin(), keys.end(),
                                                  [this, &language](const std::string& key)
                                                  {
                                                      const std::string message = messageOf(key);
                                                      return !message.empty() &&
                                                             !isTranslated(message, language);
                                                  }));
}

bool ProjectNames::isTranslated(const std::string& message, const std::string& language) const
{
    if (language == m_language) // its catalogues are read
    {
        return m_localization->loomTranslate(message) != message;
    }
    m_others->setLanguage(language);
    return Kodo::Loom::UiResourceUtils::getTranslatedText(message, *m_others) != message;
}

std::string describe(const TranslatedName& name)
{
    const std::string place =
        name.definition ? name.definition->file + ":" + std::to_string(name.definition->line) : "";
    std::string text = name.key + " \"" + name.text + "\", ";
    switch (name.origin)
    {
    case TranslatedName::Origin::Cache:
        return text + (name.translated ? "" : "not translated, ") + "cached from " + place;
    case TranslatedName::Origin::Catalogue:
        return text + "from the catalogue";
    case TranslatedName::Origin::Nothing:
        break;
    }
    return name.key + ": nothing" +
           (name.definition ? ", \"" + name.definition->name + "\" in " + place + " is no key" : "");
}
