#pragma once

#include "tern/annotations.hpp"
#include "tern/export.hpp"
#include "tern/object.hpp"
#include "vell/variant.hpp"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace tern
{

/// A named value of a reflected object. A missing setter makes it read-only.
struct MetaProperty
{
    using Getter = std::function<vell::Variant(const Object&)>;
    /// False when the value is not one that the property takes; nothing has changed then.
    using Setter = std::function<bool(Object&, const vell::Variant&)>;

    std::string name;
    Getter getter;
    Setter setter;
    Annotations annotations;
};

/// What the process knows of a reflected class. Destroying it takes it out of the manager.
class TERN_API MetaObject
{
public:
    MetaObject(const MetaObject&) = delete;
    MetaObject& operator=(const MetaObject&) = delete;
    virtual ~MetaObject();

    const std::type_info& type() const noexcept { return *m_type; }
    const std::string& className() const noexcept { return m_className; }
    const Annotations& annotations() const noexcept { return m_annotations; }
    virtual std::span<const MetaObject* const> bases() const noexcept = 0;

    /// The properties declared by the class itself, in order.
    std::span<const MetaProperty> properties() const noexcept { return m_properties; }
    /// The property of that name, of the class itself or else of its bases in order; null when there is none.
    const MetaProperty* findProperty(const std::string& name) const noexcept;
    /// Whether this is @p other's class or derives from it, by the names of the types.
    bool isKindOf(const MetaObject& other) const noexcept;

protected:
    MetaObject(const std::type_info& type, std::string className, Annotations annotations);
    void addProperty(MetaProperty property) { m_properties.push_back(std::move(property)); }

private:
    const std::type_info* m_type;
    std::string m_className;
    Annotations m_annotations;
    std::vector<MetaProperty> m_properties;
};

/// A meta object with @p BASE_COUNT base classes, built once and registered by whoever builds it.
template <std::size_t BASE_COUNT>
class BaseStaticMetaObject : public MetaObject
{
public:
    using Bases = std::array<const MetaObject*, BASE_COUNT>;

    /// @p bases must outlive this.
    BaseStaticMetaObject(const std::type_info& type, std::string className, Annotations annotations,
                         Bases bases)
        : MetaObject(type, std::move(className), std::move(annotations)), m_bases(bases)
    {
    }

    std::span<const MetaObject* const> bases() const noexcept override { return m_bases; }

    using MetaObject::addProperty;

private:
    Bases m_bases;
};

/// The meta object of @p T. Each reflected class specialises it, deriving from BaseStaticMetaObject.
template <class T>
class StaticMetaObject;

/// The meta object of @p T, built and registered on first use by the calling library, for as long as that
/// library is loaded.
template <class T>
const StaticMetaObject<T>& staticMetaObject()
{
    static const StaticMetaObject<T> object;
    return object;
}

/// All meta objects of the process. Several libraries may register one class; each registration stands for
/// itself, and the find functions give the oldest that is left. Safe from any thread.
class TERN_API MetaObjectManager
{
public:
    static MetaObjectManager& instance();

    /// Registers @p object until it is destroyed. A second registration of the same object changes nothing.
    void registerType(const MetaObject& object);
    const MetaObject* find(const std::string& className) const;
    const MetaObject* find(const std::type_info& type) const;
    std::size_t registeredCount() const;

private:
    friend class MetaObject;

    MetaObjectManager();
    ~MetaObjectManager();
    void unregisterType(const MetaObject& object) noexcept;

    class Registry;
    std::unique_ptr<Registry> m_registry;
};

} // namespace tern
