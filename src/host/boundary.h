#pragma once
// Nothing thrown inside the library may reach the host: each export runs its
// body through Shielded, which answers the neutral result instead.

#include <utility>

namespace marrowfin {

template <class Result, class Body>
Result Shielded(Result neutral, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) { return neutral; }
}

template <class Body>
void Shielded(Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        // Nothing to report: no export tells the host about failures.
    }
}

}  // namespace marrowfin
