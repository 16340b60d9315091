#include "tern/meta_object.hpp"

#include <algorithm>
#include <mutex>
#include <shared_mutex>

namespace tern
{

MetaObject::MetaObject(const std::type_info& type, std::string className, Annotations annotations)
    : m_type(&type), m_className(std::move(className)), m_annotations(std::move(annotations))
{
}

MetaObject::~MetaObject()
{
    MetaObjectManager::instance().unregisterType(*this);
}

const MetaProperty* MetaObject::findProperty(const std::string& name) const noexcept
{
    const auto own = std::find_if(m_properties.begin(), m_properties.end(),
                                  [&name](const MetaProperty& property) { return property.name == name; });
    if (own != m_properties.end())
    {
        return &*own;
    }
    for (const MetaObject* base : bases())
    {
        if (const MetaProperty* inherited = base->findProperty(name))
        {
            return inherited;
        }
    }
    return nullptr;
}

bool MetaObject::isKindOf(const MetaObject& other) const noexcept
{
    const auto derivesFromOther = [&other](const MetaObject* base) { return base->isKindOf(other); };
    return type() == other.type() || std::any_of(bases().begin(), bases().end(), derivesFromOther);
}

/// The registered meta objects, oldest first. Types are compared, never hashed by address: each library may
/// have a type_info of its own for one type.
class MetaObjectManager::Registry
{
public:
    void add(const MetaObject& object)
    {
        const std::unique_lock lock(m_mutex);
        if (std::find(m_objects.begin(), m_objects.end(), &object) == m_objects.end())
        {
            m_objects.push_back(&object);
        }
    }

    void remove(const MetaObject& object)
    {
        const std::unique_lock lock(m_mutex);
        std::erase(m_objects, &object);
    }

    template <class Predicate>
    const MetaObject* find(Predicate predicate) const
    {
        const std::shared_lock lock(m_mutex);
        const auto found = std::find_if(m_objects.begin(), m_objects.end(), predicate);
        return found == m_objects.end() ? nullptr : *found;
    }

    std::size_t size() const
    {
        const std::shared_lock lock(m_mutex);
        return m_objects.size();
    }

private:
    mutable std::shared_mutex m_mutex;
    std::vector<const MetaObject*> m_objects;
};

namespace
{
/// Made when the library is loaded: whatever is linked to it registers later, and takes itself out earlier
/// than the manager goes.
[[maybe_unused]] const MetaObjectManager& readyBeforeMain = MetaObjectManager::instance();
} // namespace

MetaObjectManager::MetaObjectManager() : m_registry(std::make_unique<Registry>()) {}

MetaObjectManager::~MetaObjectManager() = default;

MetaObjectManager& MetaObjectManager::instance()
{
    static MetaObjectManager manager;
    return manager;
}

void MetaObjectManager::registerType(const MetaObject& object)
{
    m_registry->add(object);
}

void MetaObjectManager::unregisterType(const MetaObject& object) noexcept
{
    m_registry->remove(object);
}

const MetaObject* MetaObjectManager::find(const std::string& className) const
{
    return m_registry->find([&className](const MetaObject* known)
                            { return known->className() == className; });
}

const MetaObject* MetaObjectManager::find(const std::type_info& type) const
{
    return m_registry->find([&type](const MetaObject* known) { return known->type() == type; });
}

std::size_t MetaObjectManager::registeredCount() const
{
    return m_registry->size();
}

} // namespace tern
