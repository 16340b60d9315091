#pragma once

#include "qua/connection.hpp"
#include "tern/export.hpp"
#include "tern/reflected_object.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tern
{

/// Announces that properties of an object change: once when it is opened, once when it goes. For an empty
/// object it announces nothing. Main thread only. Listeners may do what they like but destroy the notifier.
class TERN_API PropertyChangeNotifier
{
public:
    /// Stands for all properties.
    static constexpr const char* ALL_PROPERTIES = "*";

    /// What a listener throws reaches the caller, after the end was announced as well.
    PropertyChangeNotifier(ReflectedObject object, std::vector<std::string> properties);
    PropertyChangeNotifier(const PropertyChangeNotifier&) = delete;
    PropertyChangeNotifier& operator=(const PropertyChangeNotifier&) = delete;
    /// What a listener throws here is dropped, and the others are called: the change has happened.
    ~PropertyChangeNotifier();

    using Listener = std::function<void(const ReflectedObject&, const std::vector<std::string>& properties)>;
    [[nodiscard]] static qua::Connection connectChanging(Listener listener);
    [[nodiscard]] static qua::Connection connectChanged(Listener listener);
    /// Listeners connected now, to either.
    static std::size_t listenerCount();

private:
    void announceChanged() const noexcept;

    ReflectedObject m_object;
    std::vector<std::string> m_properties;
};

} // namespace tern
