#pragma once

#include "kodo/fs/file_content.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Kodo::Loom
{

/// The messages of one compiled catalogue (GNU .mo, either byte order). Neither the order of the file nor its
/// hash table matters: an index of its own is made. Of a message with plural forms the singular is the key
/// and the first form the text; one with a context has the key "context\4message". Messages that are not
/// translated and the header are not found.
///
/// Never changed once made, so that any thread may ask.
class MoCatalogue
{
public:
    /// The largest file that is read.
    static constexpr std::size_t MAX_FILE_SIZE = std::size_t{256} * 1024 * 1024;

    struct Entry
    {
        std::string_view message;
        std::string_view text;
    };

    MoCatalogue() = default;
    /// Takes the file's bytes, or, where something is wrong with them, stays empty and says what in @p fault.
    MoCatalogue(FS::FileContent file, std::string& fault);
    MoCatalogue(const MoCatalogue&) = delete;
    MoCatalogue& operator=(const MoCatalogue&) = delete;

    /// The text in UTF-8, as long as the catalogue lives; empty when there is none.
    std::string_view find(std::string_view message) const noexcept;
    const std::vector<Entry>& entries() const noexcept { return m_entries; }

private:
    class Reader;

    void makeIndex();
    void toUtf8();

    FS::FileContent m_file;
    std::string m_converted; ///< what the entries refer to when the file is not UTF-8
    std::vector<Entry> m_entries;

    struct Slot
    {
        std::uint32_t hash = 0;
        std::uint32_t entry = 0; ///< from 1 on; 0 for a free slot
    };
    std::vector<Slot> m_slots; ///< at most half full; their number is a power of two
};

} // namespace Kodo::Loom
