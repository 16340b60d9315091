#pragma once

#include "tern/annotations.hpp"
#include "vell/variant.hpp"

#include <cstddef>
#include <utility>
#include <vector>

namespace tern
{

/// Gathers annotations while a meta object is built: those of the class, and in scopes opened meanwhile those
/// of its properties. A builder that closed every scope it opened is left with one, the class's. A plain
/// value.
class AnnotationScopes
{
public:
    /// Opens a scope; annotations go to it until it is closed.
    void push() { m_scopes.emplace_back(); }
    /// Closes the innermost scope and yields what it gathered. The class's own stays open: nothing is yielded
    /// then.
    Annotations pop()
    {
        if (m_scopes.size() == 1)
        {
            return {};
        }
        Annotations gathered = std::move(m_scopes.back());
        m_scopes.pop_back();
        return gathered;
    }

    /// Adds to the innermost scope.
    void add(vell::Variant value) { m_scopes.back().add(std::move(value)); }

    /// Scopes that are open, the class's own included.
    std::size_t size() const noexcept { return m_scopes.size(); }

    /// Yields the class's annotations and starts afresh; scopes that are still open are dropped.
    Annotations finish()
    {
        Annotations gathered = std::move(m_scopes.front());
        m_scopes.assign(1, Annotations());
        return gathered;
    }

private:
    std::vector<Annotations> m_scopes{1};
};

} // namespace tern
