#include "net/http_transport.h"

#include <cctype>

#include <array>
#include <atomic>
#include <mutex>

#include "net/curl_stack.h"
#include "platform/profile.h"
#include "platform/text.h"

namespace marrowfin {

namespace {

constexpr char16_t kBuiltInServiceBase[] = u"http://gallery.tarvex.com";
constexpr char16_t kStackOption[] = u"FNetUseInet";
constexpr int32_t kNothingRecorded = -2;

CurlStack& DefaultCurlStack() {
    static CurlStack stack;
    return stack;
}

std::array<std::atomic<HttpStack*>, StackCount>& Slots() {
    static std::array<std::atomic<HttpStack*>, StackCount> slots{nullptr, nullptr, &DefaultCurlStack()};
    return slots;
}

// Runs one attempt per installed stack in the given order; the number of the
// stack that succeeded, or -1.
template <class Attempt>
int32_t RunOnStacks(const std::array<int32_t, StackCount>& order, Attempt&& attempt) {
    for (int32_t number : order) {
        HttpStack* stack = Slots()[static_cast<size_t>(number)].load();
        if (stack && attempt(*stack)) return number;
    }
    return -1;
}

std::array<int32_t, StackCount> RotationFromOption() {
    int32_t start = GetOptionInt(kStackOption, kNothingRecorded);
    if (start == kNothingRecorded || start < 0 || start >= StackCount) start = StackCurl;
    return {start, (start + 1) % StackCount, (start + 2) % StackCount};
}

void RememberStack(int32_t number) {
    if (GetOptionInt(kStackOption, kNothingRecorded) != number) (void)WriteOptionInt(kStackOption, number);
}

bool IsReservedForDownload(unsigned char b) {
    return b < 33 || b > 126 || (b >= 34 && b <= 38) || b == 43 || b == 44 || (b >= 59 && b <= 64) ||
           (b >= 91 && b <= 94) || b == 96 || (b >= 123 && b <= 125);
}

}  // namespace

std::u16string ServiceBaseUrl() {
    std::u16string base = GetOptionString(u"ServiceBase", u"");
    if (base.empty()) base = kBuiltInServiceBase;
    while (!base.empty() && base.back() == u'/') base.pop_back();
    return base;
}

std::string PercentEncodeDownloadUrl(std::u16string_view url) {
    static constexpr char kHex[] = "0123456789abcdef";
    const std::string bytes = Utf16ToUtf8(url);
    std::string out;
    out.reserve(bytes.size() * 3);
    for (unsigned char b : bytes) {
        if (IsReservedForDownload(b)) {
            out.push_back('%');
            out.push_back(kHex[b >> 4]);
            out.push_back(kHex[b & 15]);
        } else {
            out.push_back(static_cast<char>(b));
        }
    }
    return out.size() > 1024 ? bytes : out;
}

std::string EscapeRequestUrl(std::u16string_view url) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    const std::string bytes = Utf16ToUtf8(url);
    auto isHex = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    for (size_t i = 0; i < bytes.size(); ++i) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        // An escape a caller made on purpose (a query value's own '&') stays.
        const bool escaped = b == '%' && i + 2 < bytes.size() && isHex(bytes[i + 1]) && isHex(bytes[i + 2]);
        const bool unsafe = b <= 32 || b >= 127 || b == '"' || b == '#' || (b == '%' && !escaped) || b == '<' ||
                            b == '>' || b == '\\' || b == '^' || b == '`' || b == '{' || b == '|' || b == '}';
        if (unsafe) {
            out.push_back('%');
            out.push_back(kHex[b >> 4]);
            out.push_back(kHex[b & 15]);
        } else {
            out.push_back(static_cast<char>(b));
        }
    }
    return out;
}

std::u16string EscapeQueryValue(std::u16string_view value) {
    std::u16string out;
    out.reserve(value.size());
    for (char16_t c : value) {
        switch (c) {
            case u'%': out += u"%25"; break;
            case u'&': out += u"%26"; break;
            case u'+': out += u"%2B"; break;
            case u'=': out += u"%3D"; break;
            case u'#': out += u"%23"; break;
            case u';': out += u"%3B"; break;
            default: out += c;
        }
    }
    return out;
}

std::u16string DecodeReply(std::string_view bytes) {
    const size_t zero = bytes.find('\0');
    if (zero != std::string_view::npos) bytes = bytes.substr(0, zero);
    return Utf8ToUtf16(bytes);
}

bool PostFormBytes(std::u16string_view url, std::u16string_view params, std::string& out) {
    out.clear();
    const std::string narrowUrl = EscapeRequestUrl(url);
    const std::string body = Utf16ToUtf8(params);
    const int32_t winner = RunOnStacks(RotationFromOption(), [&](HttpStack& stack) {
        std::string response;
        const bool ok = stack.PostForm(narrowUrl, body, response);
        // A failed attempt may still carry the server's page; keep the latest one.
        if (ok || !response.empty()) out = std::move(response);
        return ok;
    });
    if (winner < 0) return false;
    RememberStack(winner);
    return true;
}

bool PostForm(std::u16string_view url, std::u16string_view params, std::u16string& out) {
    std::string bytes;
    const bool ok = PostFormBytes(url, params, bytes);
    out = bytes.empty() ? std::u16string() : DecodeReply(bytes);
    return ok;
}

bool DownloadFile(std::u16string_view url, std::u16string_view localPath, WindowHandle progressWindow,
                  uint16_t jobNumber) {
    const std::string encoded = PercentEncodeDownloadUrl(url);
    const std::u16string path(localPath);
    const int32_t winner = RunOnStacks(RotationFromOption(), [&](HttpStack& stack) {
        return stack.DownloadFile(encoded, path, progressWindow, jobNumber);
    });
    if (winner < 0) return false;
    RememberStack(winner);
    return true;
}

bool UploadFile(std::u16string_view url, std::u16string_view parentDir, std::u16string_view localPath,
                std::u16string& out, WindowHandle progressWindow) {
    out.clear();
    const std::string narrowUrl = EscapeRequestUrl(url);
    const std::u16string dir(parentDir), path(localPath);
    // Uploads keep their own order and do not read the remembered stack.
    const int32_t winner = RunOnStacks({StackWinHttp, StackCurl, StackInet}, [&](HttpStack& stack) {
        std::string response;
        const bool ok = stack.UploadFile(narrowUrl, dir, path, response, progressWindow);
        if (!response.empty()) out = DecodeReply(response);
        return ok;
    });
    if (winner < 0) return false;
    if (winner != StackInet) RememberStack(winner);
    return true;
}

void InstallHttpStack(int32_t number, HttpStack* stack) {
    if (number >= 0 && number < StackCount) Slots()[static_cast<size_t>(number)].store(stack);
}

HttpStack* InstalledHttpStack(int32_t number) {
    return (number >= 0 && number < StackCount) ? Slots()[static_cast<size_t>(number)].load() : nullptr;
}

void RestoreDefaultHttpStacks() {
    InstallHttpStack(StackInet, nullptr);
    InstallHttpStack(StackWinHttp, nullptr);
    InstallHttpStack(StackCurl, &DefaultCurlStack());
}

}  // namespace marrowfin
