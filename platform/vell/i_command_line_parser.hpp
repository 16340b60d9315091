#pragma once

#include "vell/export.hpp"

namespace vell
{

/// The command line of this process, supplied by the host. The order of the virtual functions is part of the
/// interface: hosts are built apart from the libraries that call them. The destructor counts as the first
/// one.
class VELL_API ICommandLineParser
{
public:
    virtual ~ICommandLineParser(); // 1

    /// Number of arguments, argument 0 (the executable) included.
    virtual const int& argc() const = 0; // 2
    /// The arguments, owned by the host; argc() of them.
    virtual char** argv() const = 0; // 3
    /// Whether the switch is present, given with its leading dash.
    virtual bool getFlag(const char* name) const = 0; // 4
};

} // namespace vell
