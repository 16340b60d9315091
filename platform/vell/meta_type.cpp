#include "vell/meta_type.hpp"

#include <algorithm>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

#if __has_include(<cxxabi.h>)
#include <cstdlib>
#include <cxxabi.h>
#endif

namespace vell
{

namespace
{

/// The registered types, oldest first. Types are compared, never hashed by address: a type_info may belong to
/// a library that is unloaded while another one still registers the same type.
class Registry
{
public:
    static Registry& instance()
    {
        static Registry registry;
        return registry;
    }

    void add(const MetaType& type)
    {
        const std::unique_lock lock(m_mutex);
        m_types.push_back(&type);
    }

    void remove(const MetaType& type)
    {
        const std::unique_lock lock(m_mutex);
        std::erase(m_types, &type);
    }

    const MetaType* find(const std::type_info& type) const
    {
        const std::shared_lock lock(m_mutex);
        const auto found = std::find_if(m_types.begin(), m_types.end(),
                                        [&type](const MetaType* known) { return known->type() == type; });
        return found == m_types.end() ? nullptr : *found;
    }

    std::size_t size() const
    {
        const std::shared_lock lock(m_mutex);
        return m_types.size();
    }

    std::vector<const MetaType*> all() const
    {
        const std::shared_lock lock(m_mutex);
        return m_types;
    }

private:
    mutable std::shared_mutex m_mutex;
    std::vector<const MetaType*> m_types;
};

/// The meta type of a plain value; T is void for the empty variant.
template <class T>
class PlainMetaType final : public MetaType
{
public:
    PlainMetaType() : MetaType(describe()) {}

    void copyConstruct(void* to, const void* from) const override
    {
        if constexpr (!std::is_void_v<T>)
        {
            new (to) T(*static_cast<const T*>(from));
        }
    }
    void moveConstruct(void* to, void* from) const noexcept override
    {
        if constexpr (!std::is_void_v<T>)
        {
            new (to) T(std::move(*static_cast<T*>(from)));
        }
    }
    void destroy(void* storage) const noexcept override
    {
        if constexpr (!std::is_void_v<T>)
        {
            static_cast<T*>(storage)->~T();
        }
    }
    const void* value(const void* storage) const noexcept override
    {
        return std::is_void_v<T> ? nullptr : storage;
    }
    const volatile void* address(const void*) const noexcept override { return nullptr; }

private:
    static Data describe()
    {
        Data data;
        data.type = &typeid(T);
        if constexpr (!std::is_void_v<T>)
        {
            data.size = sizeof(T);
        }
        return data;
    }
};

template <class T>
const MetaType& plainMetaType()
{
    static const PlainMetaType<T> type;
    return type;
}

/// The plain types and pointers to them are known from the moment the library is loaded.
const std::size_t plainTypesRegistered = []
{
    metaType<void>();
    metaType<bool>();
    metaType<std::int64_t>();
    metaType<std::string>();
    metaType<std::int64_t*>();
    metaType<const std::int64_t*>();
    return MetaType::registeredCount();
}();

} // namespace

template <>
const MetaType& metaType<void>()
{
    return plainMetaType<void>();
}

template <>
const MetaType& metaType<bool>()
{
    return plainMetaType<bool>();
}

template <>
const MetaType& metaType<std::int64_t>()
{
    return plainMetaType<std::int64_t>();
}

template <>
const MetaType& metaType<std::string>()
{
    return plainMetaType<std::string>();
}

std::string typeName(const std::type_info& type)
{
    if (type == typeid(std::string))
    {
        return "std::string"; // the ABI's name spells out its inline namespace and every template argument
    }
#if __has_include(<cxxabi.h>)
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    if (status == 0)
    {
        return name.get();
    }
#endif
    return type.name();
}

MetaType::MetaType(const Data& data) : m_data(data), m_name(typeName(*data.type))
{
    Registry::instance().add(*this);
}

MetaType::~MetaType()
{
    Registry::instance().remove(*this);
}

const MetaType* MetaType::find(const std::type_info& type) noexcept
{
    return Registry::instance().find(type);
}

std::size_t MetaType::registeredCount() noexcept
{
    return Registry::instance().size();
}

std::vector<const MetaType*> MetaType::registered()
{
    return Registry::instance().all();
}

} // namespace vell
