#include "kodo/collision/scene_object.hpp"

#include <atomic>

namespace Kodo
{
namespace
{
std::atomic<std::uint64_t> lastId{0};
} // namespace

SceneObject::SceneObject() noexcept : m_id(lastId.fetch_add(1, std::memory_order_relaxed) + 1) {}

} // namespace Kodo
