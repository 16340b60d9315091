#include "tern/property_change_notifier.hpp"

#include "qua/signal.hpp"

#include <utility>

namespace tern
{

namespace
{

using Announcement = qua::Signal<void(const ReflectedObject&, const std::vector<std::string>&)>;

struct Announcements
{
    Announcement changing;
    Announcement changed;

    static Announcements& instance()
    {
        static Announcements announcements;
        return announcements;
    }
};

/// Made when the library is loaded, so that they go after whatever is linked to it.
[[maybe_unused]] const Announcements& readyBeforeMain = Announcements::instance();

} // namespace

PropertyChangeNotifier::PropertyChangeNotifier(ReflectedObject object, std::vector<std::string> properties)
    : m_object(std::move(object)), m_properties(std::move(properties))
{
    if (m_object.isEmpty())
    {
        return;
    }
    try
    {
        Announcements::instance().changing(m_object, m_properties);
    }
    catch (...)
    {
        announceChanged(); // those that heard of the change to come must hear that it is over
        throw;
    }
}

PropertyChangeNotifier::~PropertyChangeNotifier()
{
    if (!m_object.isEmpty())
    {
        announceChanged();
    }
}

void PropertyChangeNotifier::announceChanged() const noexcept
{
    Announcements::instance().changed(m_object, m_properties);
}

qua::Connection PropertyChangeNotifier::connectChanging(Listener listener)
{
    return Announcements::instance().changing.connect(std::move(listener));
}

qua::Connection PropertyChangeNotifier::connectChanged(Listener listener)
{
    if (!listener)
    {
        return {};
    }
    return Announcements::instance().changed.connect(
        [listener = std::move(listener)](const ReflectedObject& object,
                                         const std::vector<std::string>& properties)
        {
            try
            {
                listener(object, properties);
            }
            catch (...) // must not keep the news from the others
            {
            }
        });
}

std::size_t PropertyChangeNotifier::listenerCount()
{
    return Announcements::instance().changing.slotCount() + Announcements::instance().changed.slotCount();
}

} // namespace tern
