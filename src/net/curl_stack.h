#pragma once
// The libcurl stack (number 2). It keeps the URL's scheme and port as given,
// verifies certificates, and never hangs: every transfer has a connect
// time-out and aborts when the data stall.

#include <chrono>

#include "net/http_stack.h"

namespace marrowfin {

struct CurlTimeouts {
    std::chrono::milliseconds connect{15000};
    // A transfer slower than `lowSpeedBytes` a second for `lowSpeedTime` is aborted.
    long lowSpeedBytes = 1;
    std::chrono::seconds lowSpeedTime{30};
};

class CurlStack final : public HttpStack {
public:
    CurlStack();
    bool PostForm(const std::string& url, const std::string& body, std::string& response) override;
    bool DownloadFile(const std::string& url, const std::u16string& localPath, WindowHandle progressWindow,
                      uint16_t jobNumber) override;
    bool UploadFile(const std::string& url, const std::u16string& parentDir, const std::u16string& localPath,
                    std::string& response, WindowHandle progressWindow) override;

    // Process-wide; tests shorten them to provoke the abort quickly.
    static void SetTimeouts(const CurlTimeouts& timeouts);
    static CurlTimeouts Timeouts();
};

}  // namespace marrowfin
