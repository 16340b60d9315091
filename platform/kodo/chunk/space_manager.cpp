#include "kodo/chunk/space_manager.hpp"

namespace Kodo
{
namespace
{
[[maybe_unused]] const SpaceManager& readyBeforeMain = SpaceManager::instance();
} // namespace

SpaceManager& SpaceManager::instance()
{
    static SpaceManager manager;
    return manager;
}

SmartPointer<ClientSpace> SpaceManager::space(int id) const
{
    const auto found = m_spaces.find(id);
    return found == m_spaces.end() ? SmartPointer<ClientSpace>() : found->second;
}

SmartPointer<ClientSpace> SpaceManager::createSpace(int id)
{
    SmartPointer<ClientSpace>& space = m_spaces[id];
    if (!space)
    {
        space = new ClientSpace(id);
    }
    return space;
}

void SpaceManager::removeSpace(int id)
{
    m_spaces.erase(id);
}

} // namespace Kodo
