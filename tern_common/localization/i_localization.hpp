#pragma once

#include "tern_common/export.hpp"

#include <string>

/// Gives the display text of what the game data names by keys.
class TERN_COMMON_API ILocalization
{
public:
    /// The text to show for @p key in the user's language. What an unknown key gives is the implementation's
    /// affair.
    virtual std::string translate(const std::string& key) = 0;

protected:
    /// Not virtual, since the virtual table holds translate() alone: an implementation is destroyed as what
    /// it is, and not through this interface.
    ~ILocalization() = default;
};
