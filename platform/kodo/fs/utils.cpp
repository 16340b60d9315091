#include "kodo/fs/utils.hpp"

#include "kodo/core/debug_message_helper.hpp"
#include "kodo/fs/data_section_loader.hpp"
#include "kodo/fs/file_content.hpp"
#include "kodo/fs/multi_file_system.hpp"
#include "kodo/fs/native_path.hpp"
#include "kodo/fs/xml_text.hpp"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace Kodo::FS::Utils
{

bool fileExists(const std::string& path)
{
    return fileSystem().exists(path);
}

std::string appPath()
{
#if defined(_WIN32)
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    const std::u8string text = std::filesystem::path(path).u8string();
    return std::string(text.begin(), text.end());
#else
    constexpr const char* SELF = "/proc/self/exe";
    constexpr std::string_view DELETED = " (deleted)"; // what the system writes behind a file that is gone
    std::error_code error;
    std::string path = fromNative(std::filesystem::read_symlink(SELF, error));
    if (path.ends_with(DELETED) && !std::filesystem::equivalent(path, SELF, error))
    {
        path.resize(path.size() - DELETED.size());
    }
    return path;
#endif
}

namespace
{

SmartPointer<DataSection> openNew(const BasicStringRef<char>& path, DataSectionCreator* creator)
{
    const std::string_view whole = removeExtension(path).view();
    const std::string name(whole.substr(whole.rfind('/') + 1)); // npos + 1 is 0
    return creator != nullptr ? creator->create(name) : DataSection::makeEmpty(name);
}

/// Why a name stands for no file, where that is more than that nothing is there; else nothing.
std::string_view whyNoFile(const std::string& name)
{
    switch (fileSystem().fileType(name))
    {
    case FileSystem::FT_DIRECTORY:
        return "this is a directory";
    case FileSystem::FT_NOT_FOUND:
        return MultiFileSystem::isConfined(name) ? "" : "the name leads out of the file system's roots";
    default:
        return "this is no ordinary file";
    }
}

void tell(const std::string& name, std::string_view fault)
{
    DebugMessageHelper(0, 5).message(name + ": " + std::string(fault));
}

} // namespace

SmartPointer<DataSection> openSection(const BasicStringRef<char>& path, bool makeNew,
                                      DataSectionCreator* creator)
{
    const std::string name = path.toString();
    FileContent text;
    const FileReading reading = readFile(text, name, DataSection::MAX_FILE_SIZE);
    if (reading == FileReading::NoFile)
    {
        if (const std::string_view fault = whyNoFile(name); !fault.empty())
        {
            tell(name, fault);
            return {};
        }
        return makeNew ? openNew(path, creator) : SmartPointer<DataSection>();
    }
    if (reading != FileReading::Done)
    {
        tell(name, describe(reading, DataSection::MAX_FILE_SIZE));
        return {};
    }
    TextFault fault;
    SmartPointer<DataSection> section = DataSectionLoader::load(std::move(text), fault);
    if (fault)
    {
        // The parser has worked in the bytes, so that lines are counted in the file once more.
        FileContent again;
        if (readFile(again, name, DataSection::MAX_FILE_SIZE) != FileReading::Done)
        {
            again = FileContent::ofSize(0);
        }
        DataSectionLoader::report(name, std::move(again), fault);
    }
    return section;
}

bool readSectionText(std::string& out, const BasicStringRef<char>& path)
{
    out.clear();
    FileContent text;
    if (readFile(text, path.toString(), DataSection::MAX_FILE_SIZE) != FileReading::Done)
    {
        return false;
    }
    FileContent copy = FileContent::ofSize(text.size); // the loader works in the bytes
    std::copy_n(text.data.get(), text.size, copy.data.get());
    TextFault fault;
    if (!DataSectionLoader::load(std::move(copy), fault))
    {
        return false;
    }
    makeUtf8(text);
    out = text.view();
    return true;
}

BasicStringRef<char> removeExtension(const BasicStringRef<char>& path)
{
    const std::string_view whole = path.view();
    const std::size_t name = whole.rfind('/') + 1; // npos + 1 is 0
    const std::size_t dot = whole.rfind('.');
    // A dot with nothing but dots before it in the file's name belongs to the name.
    const bool isExtension = dot != std::string_view::npos && dot > name &&
                             whole.substr(name, dot - name).find_first_not_of('.') != std::string_view::npos;
    return isExtension ? whole.substr(0, dot) : whole;
}

} // namespace Kodo::FS::Utils
