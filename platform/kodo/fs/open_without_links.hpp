#pragma once

#include <string>
#include <utility>

namespace Kodo::FS
{

/// A descriptor of an open file, closed at the end of the scope; negative when there is none.
class Descriptor
{
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int number) noexcept : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor();

    int number() const noexcept { return m_number; }
    explicit operator bool() const noexcept { return m_number >= 0; }

private:
    int m_number = -1;
};

enum class Opening : int
{
    Done,
    NotThere, ///< for certain
    Unsure ///< there is a link in the path, the file may not be opened, or the system has no such operation
};

/// Opens an absolute path unless a link stands anywhere in it: one call of the system in place of a look at
/// each part of the path. Where it is unsure, links are to be resolved.
Opening openWithoutLinks(Descriptor& out, const std::string& path, int flags) noexcept;

/// Flags to read a file, and to do no more than ask of what type it is. Without waiting, as for the other end
/// of a pipe.
extern const int OPEN_TO_READ;
extern const int OPEN_TO_ASK;

} // namespace Kodo::FS
