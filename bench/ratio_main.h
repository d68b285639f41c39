#pragma once
// The main of a benchmark whose figures are ratios: runs the benchmarks and
// prints each named pair's ratio of real times (the median when repeated).

#include <string>
#include <utility>
#include <vector>

namespace marrowfin::bench {

int RunWithRatios(int argc, char** argv, const std::vector<std::pair<std::string, std::string>>& ratios);

}  // namespace marrowfin::bench
