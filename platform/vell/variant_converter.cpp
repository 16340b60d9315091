#include "vell/variant_converter.hpp"

#include "vell/meta_type.hpp"
#include "vell/variant.hpp"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <vector>

namespace vell
{

class VariantConverter::Registry
{
public:
    static Registry& instance()
    {
        static Registry registry;
        return registry;
    }

    void add(const VariantConverter& converter)
    {
        const std::unique_lock lock(m_mutex);
        m_converters.push_back(&converter);
    }

    void remove(const VariantConverter& converter)
    {
        const std::unique_lock lock(m_mutex);
        std::erase(m_converters, &converter);
    }

    Convert find(const std::type_info& target, const std::type_info& source) const
    {
        const std::shared_lock lock(m_mutex);
        const auto found =
            std::find_if(m_converters.begin(), m_converters.end(),
                         [&](const VariantConverter* converter) {
                             return *converter->m_targetType == target && *converter->m_sourceType == source;
                         });
        return found == m_converters.end() ? nullptr : (*found)->m_convert;
    }

    std::size_t size() const
    {
        const std::shared_lock lock(m_mutex);
        return m_converters.size();
    }

private:
    mutable std::shared_mutex m_mutex;
    std::vector<const VariantConverter*> m_converters;
};

VariantConverter::VariantConverter(const std::type_info* targetType, const std::type_info* sourceType,
                                   Convert conversion)
    : m_targetType(targetType), m_sourceType(sourceType), m_convert(conversion)
{
    Registry::instance().add(*this);
}

VariantConverter::~VariantConverter()
{
    Registry::instance().remove(*this);
}

bool VariantConverter::convert(Variant& target, const Variant& source)
{
    const Convert conversion = Registry::instance().find(target.type().type(), source.type().type());
    return conversion != nullptr && conversion(target, source);
}

std::size_t VariantConverter::registeredCount() noexcept
{
    return Registry::instance().size();
}

} // namespace vell
