#pragma once

#include "kodo/core/basic_string_ref.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"
#include "kodo/fs/data_section.hpp"

#include <string>

namespace Kodo::FS::Utils
{

/// Whether the shared file system's roots hold a file or directory of that name or absolute path.
KODO_API bool fileExists(const std::string& path);

/// The full path of this process's executable; empty when the system doesn't tell. Where the file has been
/// replaced since, by an update or a build, it is the path of the new one.
KODO_API std::string appPath();

/// The tree of a definition file of the shared file system. Null in silence when nothing of that name is
/// there, and with one message that begins with the name when it is a directory, may lead out of the roots,
/// or the file cannot be read or is not well-formed.
///
/// With @p makeNew a name within the roots that stands for nothing gives an empty section in memory (nothing
/// is written), made by @p creator where there is one.
KODO_API SmartPointer<DataSection> openSection(const BasicStringRef<char>& path, bool makeNew = false,
                                               DataSectionCreator* creator = nullptr);

/// The text that openSection() makes a tree of, in UTF-8 whatever the file is written in, for those who look
/// up places in it. False, in silence and with @p out emptied, where there would be no tree.
KODO_API bool readSectionText(std::string& out, const BasicStringRef<char>& path);

/// The part of a name in front of its last extension: of "a/b.c.d" it is "a/b.c". Dots in directories and at
/// the front of a file's name begin none: ".hidden", "a.b/c", "." and ".." stay as they are. Refers to the
/// same text.
KODO_API BasicStringRef<char> removeExtension(const BasicStringRef<char>& path);

} // namespace Kodo::FS::Utils
