#pragma once

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/loom/ui_resource_manager.hpp"
#include "tests/support/mo_file.hpp"
#include "tests/support/temporary_directory.hpp"

#include <string>
#include <utility>

/// A directory that is the shared file system for the scope, to put resource maps and catalogues in.
class TextResources
{
public:
    TextResources() { Kodo::FS::fileSystem().addRoot(m_disk.path().string()); }
    TextResources(const TextResources&) = delete;
    TextResources& operator=(const TextResources&) = delete;
    ~TextResources() { Kodo::FS::fileSystem().clearRoots(); }

    const TemporaryDirectory& disk() const noexcept { return m_disk; }
    void write(const std::string& name, const std::string& bytes) const { m_disk.write(name, bytes); }
    void writeCatalogue(const std::string& name, MoFile::Entries entries) const
    {
        entries.insert(entries.begin(), MoFile::header("UTF-8"));
        write(name, MoFile(std::move(entries)).bytes());
    }

    /// A manager of the map "map.json".
    class Manager : public Kodo::Loom::UiResourceManager
    {
    public:
        const char* resourceMapPath() override { return "map.json"; }
    };

private:
    TemporaryDirectory m_disk;
};
