#include "vell/variant_converter.hpp"

#include "vell/meta_type.hpp"
#include "vell/variant.hpp"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace vell
{

/// The registered conversions, oldest first, and how many calls of each are running.
class VariantConverter::Registry
{
public:
    static Registry& instance()
    {
        static Registry registry;
        return registry;
    }

    void add(VariantConverter& converter)
    {
        const std::lock_guard lock(m_mutex);
        m_converters.push_back(&converter);
    }

    void remove(VariantConverter& converter)
    {
        std::unique_lock lock(m_mutex);
        std::erase(m_converters, &converter);
        m_returned.wait(lock, [&converter] { return converter.m_runningCalls == 0; });
    }

    std::size_t size() const
    {
        const std::lock_guard lock(m_mutex);
        return m_converters.size();
    }

    /// A call of the conversion for one pair. Its converter stays in place until the call is over; the lock
    /// is not held meanwhile, so that a conversion may convert and register itself.
    class Call
    {
    public:
        Call(const std::type_info& target, const std::type_info& source)
        {
            const std::lock_guard lock(m_registry.m_mutex);
            const auto& converters = m_registry.m_converters;
            const auto found = std::find_if(converters.begin(), converters.end(),
                                            [&](const VariantConverter* converter) {
                                                return *converter->m_targetType == target &&
                                                       *converter->m_sourceType == source;
                                            });
            if (found != converters.end())
            {
                m_converter = *found;
                ++m_converter->m_runningCalls;
            }
        }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        ~Call()
        {
            if (m_converter != nullptr)
            {
                const std::lock_guard lock(m_registry.m_mutex);
                --m_converter->m_runningCalls;
                m_registry.m_returned.notify_all();
            }
        }

        bool run(Variant& target, const Variant& source) const
        {
            return m_converter != nullptr && m_converter->m_convert(target, source);
        }

    private:
        Registry& m_registry = instance();
        VariantConverter* m_converter = nullptr;
    };

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_returned;
    std::vector<VariantConverter*> m_converters;
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
    return Registry::Call(target.type().type(), source.type().type()).run(target, source);
}

std::size_t VariantConverter::registeredCount() noexcept
{
    return Registry::instance().size();
}

} // namespace vell
