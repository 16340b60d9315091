#pragma once

#include "tern/export.hpp"
#include "vell/variant.hpp"

#include <cstddef>
#include <vector>

namespace tern
{

/// What a meta object or property says about itself beside its name, in the order given: variants, such as
/// the display name as a string. A plain value.
class TERN_API Annotations
{
public:
    Annotations() = default;
    explicit Annotations(std::vector<vell::Variant> values) : m_values(std::move(values)) {}

    void add(vell::Variant value) { m_values.push_back(std::move(value)); }
    std::size_t size() const noexcept { return m_values.size(); }
    const vell::Variant& operator[](std::size_t index) const { return m_values[index]; }

private:
    std::vector<vell::Variant> m_values;
};

} // namespace tern
