#include "request_counters.h"

#include <algorithm>

namespace marrowfin::service {

void RequestCounters::enter(const std::vector<std::string>& keys, const std::string& requestLine) {
    std::lock_guard lock(m_mutex);
    for (const std::string& key : keys) {
        PathCount& c = m_counts[key];
        ++c.count;
        ++c.active;
        c.peak = std::max(c.peak, c.active);
        c.last = requestLine;
    }
}

void RequestCounters::leave(const std::vector<std::string>& keys) {
    std::lock_guard lock(m_mutex);
    for (const std::string& key : keys) --m_counts[key].active;
}

PathCount RequestCounters::get(const std::string& key) const {
    std::lock_guard lock(m_mutex);
    auto it = m_counts.find(key);
    return it == m_counts.end() ? PathCount{} : it->second;
}

std::map<std::string, PathCount> RequestCounters::all() const {
    std::lock_guard lock(m_mutex);
    return m_counts;
}

void RequestCounters::reset() {
    std::lock_guard lock(m_mutex);
    // Running requests stay counted as active, so that their leave balances.
    for (auto& [key, c] : m_counts) {
        c.count = 0;
        c.peak = c.active;
    }
}

}  // namespace marrowfin::service
