#include "kodo/collision/i_collision_collector.hpp"

namespace Kodo::Collisions
{

ICollisionCollector::~ICollisionCollector() = default;

ICollisionFilter::~ICollisionFilter() = default;

} // namespace Kodo::Collisions
