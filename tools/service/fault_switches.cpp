#include "fault_switches.h"

#include <chrono>
#include <charconv>

namespace marrowfin::service {

namespace {

bool ToInt(const std::string& text, int& out) {
    const char* end = text.data() + text.size();
    auto [p, ec] = std::from_chars(text.data(), end, out);
    return ec == std::errc() && p == end;
}

}  // namespace

bool ParseFault(const std::multimap<std::string, std::string>& params, Fault& out, std::string& error) {
    Fault f;
    for (const auto& [key, value] : params) {
        if (key == "path") continue;
        if (key == "body") {
            f.body = value;
            continue;
        }
        int n = 0;
        if (!ToInt(value, n)) {
            error = "bad number for " + key + ": " + value;
            return false;
        }
        if (key == "latency") f.latencyMs = n;
        else if (key == "status") f.status = n;
        else if (key == "empty") f.emptyBody = n != 0;
        else if (key == "truncate") f.truncateAt = n;
        else if (key == "drop") f.drop = n != 0;
        else if (key == "drip") f.dripBytesPerSecond = n;
        else if (key == "hold") f.holdMs = n;
        else if (key == "count") f.remaining = n;
        else {
            error = "unknown fault key: " + key;
            return false;
        }
        if (n < 0 && key != "truncate" && key != "count") {
            error = "negative value for " + key;
            return false;
        }
    }
    if (f.status != 0 && (f.status < 100 || f.status > 599)) {
        error = "status out of range";
        return false;
    }
    out = f;
    return true;
}

std::string FaultText(const Fault& fault) {
    std::string out;
    auto add = [&out](const std::string& pair) { out += (out.empty() ? "" : "&") + pair; };
    if (fault.latencyMs > 0) add("latency=" + std::to_string(fault.latencyMs));
    if (fault.status > 0) add("status=" + std::to_string(fault.status));
    if (fault.emptyBody) add("empty=1");
    if (fault.truncateAt >= 0) add("truncate=" + std::to_string(fault.truncateAt));
    if (fault.drop) add("drop=1");
    if (fault.dripBytesPerSecond > 0) add("drip=" + std::to_string(fault.dripBytesPerSecond));
    if (fault.holdMs > 0) add("hold=" + std::to_string(fault.holdMs));
    if (fault.body) add("body=" + *fault.body);
    if (fault.remaining >= 0) add("count=" + std::to_string(fault.remaining));
    return out;
}

bool ParseFaultSwitch(const std::string& text, std::string& path, Fault& out, std::string& error) {
    const size_t q = text.find('?');
    path = text.substr(0, q);
    std::multimap<std::string, std::string> params;
    if (q != std::string::npos) {
        size_t at = q + 1;
        while (at <= text.size()) {
            size_t amp = text.find('&', at);
            if (amp == std::string::npos) amp = text.size();
            const std::string pair = text.substr(at, amp - at);
            if (!pair.empty()) {
                const size_t eq = pair.find('=');
                params.emplace(pair.substr(0, eq), eq == std::string::npos ? "1" : pair.substr(eq + 1));
            }
            at = amp + 1;
        }
    }
    return ParseFault(params, out, error);
}

void FaultTable::set(const std::string& path, const Fault& fault) {
    std::lock_guard lock(m_mutex);
    if (path.empty() || path == "*") m_global = fault;
    else m_paths[path] = fault;
}

void FaultTable::clear(const std::string& path) {
    std::lock_guard lock(m_mutex);
    if (path.empty() || path == "*") m_global.reset();
    else m_paths.erase(path);
}

void FaultTable::clearAll() {
    std::lock_guard lock(m_mutex);
    m_global.reset();
    m_paths.clear();
}

Fault FaultTable::take(const std::string& path) {
    std::lock_guard lock(m_mutex);
    Fault* found = nullptr;
    auto exact = m_paths.find(path);
    if (exact != m_paths.end()) {
        found = &exact->second;
    } else {
        size_t best = 0;
        for (auto& [key, fault] : m_paths) {
            if (key.size() < 2 || key.back() != '*') continue;
            const size_t prefix = key.size() - 1;
            if (prefix >= best && path.compare(0, prefix, key, 0, prefix) == 0) {
                best = prefix;
                found = &fault;
            }
        }
        if (!found && m_global) found = &*m_global;
    }
    if (!found) return Fault{};
    Fault result = *found;
    if (found->remaining > 0 && --found->remaining == 0) {
        // Used up: the table forgets it so that the next request is clean.
        if (m_global && found == &*m_global) m_global.reset();
        else
            for (auto it = m_paths.begin(); it != m_paths.end(); ++it)
                if (&it->second == found) {
                    m_paths.erase(it);
                    break;
                }
    } else if (found->remaining == 0) {
        return Fault{};
    }
    return result;
}

void FaultTable::waitHeld(int boundMs) {
    std::unique_lock lock(m_mutex);
    const uint64_t generation = m_releaseGeneration;
    m_held.wait_for(lock, std::chrono::milliseconds(boundMs), [&] { return m_releaseGeneration != generation; });
}

void FaultTable::releaseHeld() {
    {
        std::lock_guard lock(m_mutex);
        ++m_releaseGeneration;
    }
    m_held.notify_all();
}

}  // namespace marrowfin::service
