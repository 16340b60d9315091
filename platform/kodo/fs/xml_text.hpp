#pragma once

#include "kodo/fs/file_content.hpp"

#include <cstddef>
#include <string>

namespace Kodo::FS
{

/// What is wrong with a text, and where in it.
struct TextFault
{
    std::string what; ///< empty: nothing
    std::size_t offset = 0;

    explicit operator bool() const noexcept { return !what.empty(); }
};

/// Makes the bytes of an XML file UTF-8, in place where they are already. UTF-8 it is unless a byte order
/// mark, the zeros of UTF-16 or the declaration says otherwise; UTF-16 and ISO-8859-1 are converted, other
/// encodings are faults, and so is a NUL.
TextFault makeUtf8(FileContent& text);

} // namespace Kodo::FS
