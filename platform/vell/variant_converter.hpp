#pragma once

#include "vell/export.hpp"

#include <cstddef>
#include <typeinfo>

namespace vell
{

class Variant;

/// A conversion between two types of variant content, registered for as long as this object lives.
/// Where several stand for one pair, the oldest is used. Safe from any thread. The destructor waits for a
/// call of the conversion that is running in another thread, so afterwards its code may be unmapped; a
/// conversion must not destroy its own converter.
class VELL_API VariantConverter
{
public:
    /// Writes what @p source holds into @p target, which holds a value of the target type; false when that
    /// value has no counterpart.
    using Convert = bool (*)(Variant& target, const Variant& source);

    VariantConverter(const std::type_info* targetType, const std::type_info* sourceType, Convert conversion);
    VariantConverter(const VariantConverter&) = delete;
    VariantConverter& operator=(const VariantConverter&) = delete;
    ~VariantConverter();

    /// Runs the conversion registered for what the two hold now; false when there is none or it gives up.
    /// What the conversion throws reaches the caller.
    static bool convert(Variant& target, const Variant& source);
    static std::size_t registeredCount() noexcept;

private:
    class Registry;

    const std::type_info* m_targetType;
    const std::type_info* m_sourceType;
    Convert m_convert;
    int m_runningCalls = 0; ///< guarded by the registry
};

} // namespace vell
