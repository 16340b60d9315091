#pragma once

#include "tern/export.hpp"
#include "tern/meta_object.hpp"
#include "tern/object.hpp"

#include <memory>
#include <string>

namespace tern
{

/// A handle on a reflected object of the editor's object model, shared; empty by default. Copying it copies
/// the handle. Main thread only, as the objects are.
class TERN_API ReflectedObject
{
public:
    ReflectedObject() noexcept = default;
    /// @p metaObject must outlive every copy of the handle. Empty when @p object is null.
    ReflectedObject(std::shared_ptr<Object> object, const MetaObject& metaObject) noexcept;

    bool isEmpty() const noexcept { return m_object == nullptr; }
    Object* object() const noexcept { return m_object.get(); }
    /// Null for an empty handle.
    const MetaObject* metaObject() const noexcept { return m_metaObject; }

    /// The property's value; void when the handle is empty or has no such property.
    vell::Variant property(const std::string& name) const;
    /// Sets a property and announces the change around it. False, with nothing changed, when there is no such
    /// property, it is read-only, or it doesn't take the value.
    bool setProperty(const std::string& name, const vell::Variant& value) const;

    friend bool operator==(const ReflectedObject& a, const ReflectedObject& b) noexcept
    {
        return a.m_object == b.m_object;
    }

private:
    std::shared_ptr<Object> m_object;
    const MetaObject* m_metaObject = nullptr;
};

} // namespace tern
