#include "tern/object.hpp"

namespace tern
{

Object::~Object() = default;

} // namespace tern
