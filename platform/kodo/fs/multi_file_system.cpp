#include "kodo/fs/multi_file_system.hpp"

#include "kodo/fs/directory_listing.hpp"
#include "kodo/fs/native_path.hpp"
#include "kodo/fs/open_without_links.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace Kodo::FS
{

namespace fs = std::filesystem;

namespace
{

/// True for @p path itself and what lies below it; both are absolute and without "." and "..".
bool isWithin(const fs::path& path, const fs::path& directory)
{
    return std::mismatch(directory.begin(), directory.end(), path.begin(), path.end()).first ==
           directory.end();
}

bool hasNul(const std::string& text)
{
    return text.find('\0') != std::string::npos;
}

/// The parts of a name that count, or nothing for a name that may lead out of its root.
std::optional<fs::path> normalName(const std::string& name)
{
    const fs::path given = toNative(name);
    if (hasNul(name) || given.has_root_path())
    {
        return std::nullopt;
    }
    fs::path normal;
    for (const fs::path& part : given)
    {
        if (part == "..")
        {
            return std::nullopt;
        }
#if defined(_WIN32)
        if (part.native().find(L':') != std::wstring::npos) // another stream of a file
        {
            return std::nullopt;
        }
#endif
        if (!part.empty() && part != ".")
        {
            normal /= part;
        }
    }
    return normal;
}

#if !defined(_WIN32)

/// Whether a name is relative and every part of it counts.
bool isPlain(std::string_view name)
{
    if (name.find('\0') != std::string_view::npos)
    {
        return false;
    }
    for (std::size_t begin = 0; begin <= name.size();)
    {
        const std::size_t end = std::min(name.find('/', begin), name.size());
        const std::string_view part = name.substr(begin, end - begin);
        if (part.empty() || part == "." || part == "..")
        {
            return false;
        }
        begin = end + 1;
    }
    return true;
}

#endif

FileSystem::FileType typeOnDisk(const fs::path& path)
{
    std::error_code error;
    switch (fs::status(path, error).type())
    {
    case fs::file_type::regular:
        return FileSystem::FT_FILE;
    case fs::file_type::directory:
        return FileSystem::FT_DIRECTORY;
    case fs::file_type::none:
    case fs::file_type::not_found:
        return FileSystem::FT_NOT_FOUND;
    default:
        return FileSystem::FT_OTHER;
    }
}

} // namespace

/// The roots at one time. Never changed: whoever reads keeps the list it began with.
class MultiFileSystem::Roots
{
public:
    struct Root
    {
        fs::path given;     ///< absolute, links as they were given
        fs::path canonical; ///< links resolved
    };

    Roots() = default;
    Roots(const Roots& before, Root added) : m_roots(before.m_roots) { m_roots.push_back(std::move(added)); }

    const std::vector<Root>& list() const noexcept { return m_roots; }

    /// Where a normal name leads in one root, links resolved; empty when to nothing in it.
    static fs::path find(const Root& root, const fs::path& name)
    {
        std::error_code error;
        fs::path found = fs::canonical(root.canonical / name, error);
        return !error && isWithin(found, root.canonical) ? found : fs::path();
    }

    fs::path find(const fs::path& name) const
    {
        for (const Root& root : m_roots)
        {
            if (fs::path found = find(root, name); !found.empty())
            {
                return found;
            }
        }
        return {};
    }

    /// The name that leads to the file with that absolute path.
    std::optional<fs::path> nameOf(const fs::path& path, const fs::path& file) const
    {
        const fs::path normal = path.lexically_normal();
        for (const Root& root : m_roots)
        {
            for (const auto& [whole, directory] :
                 {std::pair(&normal, &root.given), std::pair(&normal, &root.canonical),
                  std::pair(&file, &root.canonical)})
            {
                if (!isWithin(*whole, *directory))
                {
                    continue;
                }
                auto name = normalName(fromNative(whole->lexically_relative(*directory)));
                if (name && find(*name) == file) // else a root in front has another file of that name
                {
                    return name;
                }
            }
        }
        return std::nullopt;
    }

private:
    std::vector<Root> m_roots;
};

MultiFileSystem::MultiFileSystem() : m_roots(std::make_shared<const Roots>()) {}
MultiFileSystem::~MultiFileSystem() = default;

bool MultiFileSystem::addRoot(const std::string& directory)
{
    std::error_code error;
    Roots::Root root;
    root.given = hasNul(directory) ? fs::path() : fs::absolute(toNative(directory), error).lexically_normal();
    if (!root.given.has_filename())
    {
        root.given = root.given.parent_path(); // "a/" would have a blank last part
    }
    root.canonical = error ? fs::path() : fs::canonical(root.given, error);
    if (error || !fs::is_directory(root.canonical, error))
    {
        return false;
    }
    const std::lock_guard lock(m_mutex);
    m_roots = std::make_shared<const Roots>(*m_roots, std::move(root));
    return true;
}

void MultiFileSystem::clearRoots()
{
    const std::lock_guard lock(m_mutex);
    m_roots = std::make_shared<const Roots>();
}

std::shared_ptr<const MultiFileSystem::Roots> MultiFileSystem::roots() const
{
    const std::lock_guard lock(m_mutex);
    return m_roots;
}

#if defined(_WIN32)

Opening MultiFileSystem::openPlain(Descriptor&, const std::string&, int) const
{
    return Opening::Unsure;
}

#else

/// Opens what a name stands for in the first root that has it, provided that the name is written without
/// parts that don't count and that there is no link on the way. All else is left to the long way through the
/// links.
Opening MultiFileSystem::openPlain(Descriptor& out, const std::string& name, int flags) const
{
    if (!isPlain(name))
    {
        return Opening::Unsure;
    }
    const auto current = roots(); // held: roots may be added meanwhile
    for (const Roots::Root& root : current->list())
    {
        std::string path;
        path.reserve(root.canonical.native().size() + 1 + name.size());
        path.append(root.canonical.native()).append(1, '/').append(name);
        if (const Opening opening = openWithoutLinks(out, path, flags); opening != Opening::NotThere)
        {
            return opening;
        }
    }
    return Opening::NotThere;
}

#endif

bool MultiFileSystem::isConfined(const std::string& name)
{
    return normalName(name).has_value();
}

FileSystem::FileType MultiFileSystem::fileType(const std::string& name) const
{
#if !defined(_WIN32)
    Descriptor file;
    struct stat status = {};
    const Opening opening = openPlain(file, name, OPEN_TO_ASK);
    if (opening == Opening::NotThere)
    {
        return FT_NOT_FOUND;
    }
    if (opening == Opening::Done && ::fstat(file.number(), &status) == 0)
    {
        return S_ISREG(status.st_mode) ? FT_FILE : S_ISDIR(status.st_mode) ? FT_DIRECTORY : FT_OTHER;
    }
#endif
    const auto normal = normalName(name);
    const fs::path found = normal ? roots()->find(*normal) : fs::path();
    return found.empty() ? FT_NOT_FOUND : typeOnDisk(found);
}

bool MultiFileSystem::readDirectory(std::vector<std::string>& out, const std::string& directory) const
{
    out.clear();
    const auto normal = normalName(directory);
    const auto current = roots();
    if (!normal || typeOnDisk(current->find(*normal)) != FT_DIRECTORY)
    {
        return false;
    }
    for (const Roots::Root& root : current->list())
    {
        const fs::path found = Roots::find(root, *normal);
        for (DirectoryEntry& entry : found.empty() ? std::vector<DirectoryEntry>() : listDirectory(found))
        {
            // A link out of the root is not listed: its name would lead to nothing.
            if (!entry.isLink || !Roots::find(root, *normal / toNative(entry.name)).empty())
            {
                out.push_back(std::move(entry.name));
            }
        }
    }
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return true;
}

std::string MultiFileSystem::diskPath(const std::string& name) const
{
    const auto normal = normalName(name);
    return normal ? fromNative(roots()->find(*normal)) : std::string();
}

std::string MultiFileSystem::dissolveFilename(const std::string& path, bool* ok) const
{
    std::optional<fs::path> name;
    const fs::path given = toNative(path);
    if (!hasNul(path) && given.is_absolute())
    {
        std::error_code error;
        const fs::path file = fs::canonical(given, error);
        name = error ? std::nullopt : roots()->nameOf(given, file);
    }
    else if (name = normalName(path); name && roots()->find(*name).empty())
    {
        name = std::nullopt;
    }
    std::string dissolved = name ? fromNative(*name) : std::string(); // of a root itself: no name either
    if (ok != nullptr)
    {
        *ok = !dissolved.empty();
    }
    return dissolved;
}

bool MultiFileSystem::exists(const std::string& path) const
{
    const fs::path given = toNative(path);
    const auto current = roots();
    if (hasNul(path) || !given.is_absolute())
    {
        const auto normal = normalName(path);
        return normal && !current->find(*normal).empty();
    }
    std::error_code error;
    const fs::path file = fs::canonical(given, error);
    const auto& list = current->list();
    return !error && std::any_of(list.begin(), list.end(),
                                 [&file](const Roots::Root& root) { return isWithin(file, root.canonical); });
}

MultiFileSystem& fileSystem()
{
    static MultiFileSystem shared;
    return shared;
}

} // namespace Kodo::FS
