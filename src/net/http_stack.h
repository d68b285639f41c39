#pragma once
// One HTTP stack: a way to make one attempt at each of the three exchanges
// with the service. The transport rotates over the installed stacks.

#include <cstdint>
#include <string>

#include "platform/window_messages.h"

namespace marrowfin {

// Stack numbers as stored in the option FNetUseInet.
enum HttpStackNumber : int32_t { StackInet = 0, StackWinHttp = 1, StackCurl = 2, StackCount = 3 };

inline constexpr uint32_t MsgProgress = 2924;

class HttpStack {
public:
    virtual ~HttpStack() = default;
    // `body` is the UTF-8 form body; `response` receives the reply bytes.
    virtual bool PostForm(const std::string& url, const std::string& body, std::string& response) = 0;
    // `url` is already percent-encoded; the body lands in `localPath` only on status 200.
    virtual bool DownloadFile(const std::string& url, const std::u16string& localPath, WindowHandle progressWindow,
                              uint16_t jobNumber) = 0;
    virtual bool UploadFile(const std::string& url, const std::u16string& parentDir, const std::u16string& localPath,
                            std::string& response, WindowHandle progressWindow) = 0;
};

}  // namespace marrowfin
