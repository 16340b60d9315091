#pragma once

#include "editor/names/definition_index.hpp"

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

class Localization;
namespace Kodo::Loom
{
class UiResourceManager;
}

/// Names that cannot be had; the text says why.
class NamesError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// The directory of a level's project: `<level>_project` beside it, or else the level's own directory. Throws
/// NamesError where neither has a resource map.
std::filesystem::path projectOf(const std::filesystem::path& level);

/// A key with what is shown for it.
struct TranslatedName
{
    enum class Origin
    {
        Cache,     ///< the library's cache, from a definition
        Catalogue, ///< the UI framework's catalogues
        Nothing
    };

    std::string key;
    std::string text;
    Origin origin = Origin::Nothing;
    std::optional<Definition> definition;
    bool translated = false;
};

/// The names of one project in the user's language. The process's file system shows the project for as long
/// as this object lives, so there is one such object at a time. Main thread only.
///
/// What is wrong with a project's files is reported whenever they are read: by each operation, and more than
/// once by some, as each language has its own cache and catalogues.
class ProjectNames
{
public:
    /// Speaks @p language, or the one that the project names where none is given. Throws NamesError for a
    /// directory without a resource map that can be used, and for an unknown language.
    explicit ProjectNames(const std::filesystem::path& project,
                          const std::optional<std::string>& language = std::nullopt);
    ProjectNames(const ProjectNames&) = delete;
    ProjectNames& operator=(const ProjectNames&) = delete;
    ~ProjectNames();

    /// Sorted.
    const std::vector<std::string>& languages() const noexcept { return m_languages; }
    const std::string& language() const noexcept { return m_language; }
    /// Translates all names again. Throws NamesError, with nothing changed, for an unknown language.
    void setLanguage(const std::string& language);

    /// The keys of all definitions, sorted.
    std::vector<std::string> keys() const;
    TranslatedName find(const std::string& key) const;
    /// How many of the keys need a translation.
    std::size_t countTranslatable(const std::vector<std::string>& keys) const;
    /// How many of those stay without a translation in a language, whichever is spoken now.
    std::size_t countUntranslated(const std::vector<std::string>& keys, const std::string& language) const;

private:
    class Mount;

    bool isTranslated(const std::string& message, const std::string& language) const;
    /// What is handed to the UI framework for a key; empty where that is no affair of a catalogue.
    std::string messageOf(const std::string& key) const;

    std::unique_ptr<Mount> m_mount; ///< goes last
    std::map<std::string, Definition> m_definitions;
    std::vector<std::string> m_languages;
    std::string m_language;
    std::unique_ptr<Kodo::Loom::UiResourceManager> m_others; ///< for the languages that are not spoken
    std::unique_ptr<Localization> m_localization;
};

/// A name on one line: `tug "Harbour tug", cached from scripts/…/list.xml:3`.
std::string describe(const TranslatedName& name);
