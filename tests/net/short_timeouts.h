#pragma once
// Short transport time-outs for the tests that hold or slow the service, put
// back when the scope ends even if a check inside it fails.

#include <chrono>

#include "net/curl_stack.h"

namespace marrowfin::test {

struct ShortTimeouts {
    ShortTimeouts() {
        CurlTimeouts t;
        t.connect = std::chrono::milliseconds(2000);
        t.lowSpeedTime = std::chrono::seconds(1);
        CurlStack::SetTimeouts(t);
    }
    ~ShortTimeouts() { CurlStack::SetTimeouts(CurlTimeouts{}); }
    ShortTimeouts(const ShortTimeouts&) = delete;
    ShortTimeouts& operator=(const ShortTimeouts&) = delete;
};

}  // namespace marrowfin::test
