#pragma once

#include "kodo/chunk/client_space.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/export.hpp"

#include <unordered_map>

namespace Kodo
{

/// The client spaces of the process. Main thread only.
class KODO_API SpaceManager
{
public:
    static SpaceManager& instance();

    /// The space of that identifier, or null.
    SmartPointer<ClientSpace> space(int id) const;
    /// The space of that identifier, made if need be.
    SmartPointer<ClientSpace> createSpace(int id);
    void removeSpace(int id);

private:
    SpaceManager() = default;

    std::unordered_map<int, SmartPointer<ClientSpace>> m_spaces;
};

} // namespace Kodo
