#pragma once

#include "kodo/export.hpp"
#include "kodo/fs/file_system.hpp"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Kodo::FS
{

class Descriptor;
struct FileContent;
enum class FileReading : int;
enum class Opening : int;

/// Several directories seen as one tree: where more than one of these roots has a name, the first one wins.
///
/// Names are relative, in UTF-8 (on POSIX systems: in whatever bytes the disk has), with '/' between their
/// parts; blank parts and "." don't count, so that the empty name is the tree itself. They lead to nothing
/// outside the roots: a name that is absolute, has a part "..", contains a NUL, or follows a link out of its
/// root names nothing. That guards against mistakes and crafted names, not against someone who exchanges
/// links on the disk at the same moment.
///
/// Every operation may be called from any thread.
class KODO_API MultiFileSystem : public FileSystem
{
public:
    MultiFileSystem();
    MultiFileSystem(const MultiFileSystem&) = delete;
    MultiFileSystem& operator=(const MultiFileSystem&) = delete;
    ~MultiFileSystem();

    /// Adds a directory of the disk behind those added before. False, with nothing added, when it is none.
    bool addRoot(const std::string& directory);
    void clearRoots();

    /// Whether a name is one that may stand for something here. Nothing is looked up.
    static bool isConfined(const std::string& name);

    FileType fileType(const std::string& name) const;

    /// The names of what stands in a directory of the tree, in all roots, sorted by bytes and without
    /// doubles. False, with @p out emptied, when no root has that directory, or the one that wins is a file.
    bool readDirectory(std::vector<std::string>& out, const std::string& directory) const;

    /// The path on the disk of what a name stands for, links resolved; empty when it names nothing.
    std::string diskPath(const std::string& name) const;

    /// The name under which this file system knows a file: of an absolute path below a root the rest of it,
    /// of a name the name without its blank parts. Empty for what is not there and for what can't be reached
    /// by any name: paths outside the roots, and files hidden by a root in front. @p ok, which may be null,
    /// receives whether there is a name.
    std::string dissolveFilename(const std::string& path, bool* ok) const;

    /// Whether a name, or an absolute path below a root, stands for something on the disk: also for a file
    /// that is hidden by a root in front.
    bool exists(const std::string& path) const;

private:
    class Roots;
    friend FileReading readFile(FileContent& out, const std::string& name, std::size_t limit);
    Opening openPlain(Descriptor& out, const std::string& name, int flags) const;
    std::shared_ptr<const Roots> roots() const;

    mutable std::mutex m_mutex;
    std::shared_ptr<const Roots> m_roots; ///< exchanged as a whole
};

/// The file system the process shares. Without roots at first: the host adds them.
KODO_API MultiFileSystem& fileSystem();

} // namespace Kodo::FS
