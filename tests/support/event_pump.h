#pragma once
// Runs the event loop for a while, or until a condition holds.

#include <functional>

namespace marrowfin::test {

void Pump(int ms);
// Answers whether `done` became true within `timeoutMs`.
bool PumpUntil(const std::function<bool()>& done, int timeoutMs = 5000);

}  // namespace marrowfin::test
