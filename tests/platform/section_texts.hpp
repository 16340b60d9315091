#pragma once

#include "kodo/core/smart_pointer.hpp"
#include "kodo/fs/data_section.hpp"

#include <cstddef>
#include <string>
#include <vector>

/// The tags of a section's children, in order.
inline std::vector<std::string> childNames(const Kodo::SmartPointer<Kodo::DataSection>& section)
{
    std::vector<std::string> names;
    for (const Kodo::SmartPointer<Kodo::DataSection>& child : *section)
    {
        names.push_back(child->sectionName());
    }
    return names;
}

inline std::string repeated(const std::string& text, std::size_t count)
{
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
    {
        result += text;
    }
    return result;
}
