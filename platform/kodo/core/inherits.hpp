#pragma once

#include <type_traits>

namespace Kodo
{

// An interface need not have a virtual destructor, and then what inherits it has none either: its
// implementations are destroyed as what they are.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

/// The base of a class that implements the interface @p Interface: the interface itself, made a value that
/// can be default constructed and assigned, whatever it declares. Adds no state and no virtual operation.
template <class Interface>
class Inherits : public Interface
{
public:
    Inherits() = default;
    Inherits(const Inherits&) = default;
    Inherits& operator=(const Inherits&) = default;
    Inherits& operator=(Inherits&&) noexcept(std::is_nothrow_move_assignable_v<Interface>) = default;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

} // namespace Kodo
