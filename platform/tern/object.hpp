#pragma once

#include "tern/export.hpp"

namespace tern
{

/// Base of everything that can be reflected.
class TERN_API Object
{
public:
    virtual ~Object();

protected:
    Object() = default;
    Object(const Object&) = default;
    Object& operator=(const Object&) = default;
};

} // namespace tern
