#include "tern/reflected_object.hpp"

#include "tern/property_change_notifier.hpp"

#include <utility>

namespace tern
{

ReflectedObject::ReflectedObject(std::shared_ptr<Object> object, const MetaObject& metaObject) noexcept
    : m_object(std::move(object)), m_metaObject(m_object ? &metaObject : nullptr)
{
}

vell::Variant ReflectedObject::property(const std::string& name) const
{
    const MetaProperty* property = isEmpty() ? nullptr : m_metaObject->findProperty(name);
    return property != nullptr && property->getter ? property->getter(*m_object) : vell::Variant();
}

bool ReflectedObject::setProperty(const std::string& name, const vell::Variant& value) const
{
    const MetaProperty* property = isEmpty() ? nullptr : m_metaObject->findProperty(name);
    if (property == nullptr || !property->setter)
    {
        return false;
    }
    const ReflectedObject held = *this; // a listener may let go of this handle
    const PropertyChangeNotifier notifier(held, {name});
    return property->setter(*held.m_object, value);
}

} // namespace tern
