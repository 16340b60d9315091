#pragma once

#include "kodo/core/smart_pointer.hpp"
#include "kodo/core/text_position.hpp"
#include "kodo/fs/data_section.hpp"
#include "kodo/fs/file_content.hpp"
#include "kodo/fs/xml_text.hpp"

#include <string>

namespace Kodo
{

class DataSectionTree;

/// Makes trees of files' bytes.
class DataSectionLoader
{
public:
    /// Null, and why, for what is not well-formed. Works in the bytes it is given.
    static SmartPointer<DataSection> load(FS::FileContent text, FS::TextFault& fault);
    /// The root of a tree.
    static SmartPointer<DataSection> section(const SmartPointer<DataSectionTree>& tree);
    /// Tells of a fault in a file; @p text is the file as it was before it was loaded.
    static void report(const std::string& name, FS::FileContent text, const FS::TextFault& fault);
};

} // namespace Kodo
