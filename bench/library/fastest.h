#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <limits>
#include <utility>
#include <vector>

namespace sorvo::bench {

inline double cpu_seconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// The candidate whose best run is the shortest: rounds over all candidates, so that a disturbance
/// does not hit one of them alone.
template <class Candidate, class Run>
Candidate fastest(std::vector<Candidate> candidates, Run run) {
    std::vector<double> best(candidates.size(), std::numeric_limits<double>::max());
    for (int round = 0; round < 8; ++round) {
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            const double start = cpu_seconds();
            run(candidates[i]);
            best[i] = std::min(best[i], cpu_seconds() - start);
        }
    }
    const auto first = std::min_element(best.begin(), best.end());
    return std::move(candidates[static_cast<std::size_t>(first - best.begin())]);
}

}  // namespace sorvo::bench
