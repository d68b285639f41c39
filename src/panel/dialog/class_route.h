#pragma once
// The class a route names, as OpenClassRoute takes it.

#include <string>
#include <string_view>

namespace marrowfin {

// "/class/sub" gives "class", "/class" stays whole; separators go. A
// separator within the first two characters is no cut.
std::u16string ClassNameOfRoute(std::u16string_view route);

// The most classes a route may list; beyond it the user is sent to the manager.
inline constexpr size_t kRouteClassLimit = 101;

}  // namespace marrowfin
