#include "net/curl_stack.h"

#include <curl/curl.h>

#include <memory>
#include <mutex>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace marrowfin {

namespace {

constexpr char kFormContentType[] = "Content-Type: application/x-www-form-urlencoded";
constexpr char kDownloadAgent[] = "User-Agent:BRINDLE;charset=utf-8";
// libcurl drops the blanks and adds its boundary to this header.
constexpr char kMultipartContentType[] = "Content-Type:  multipart/form-data";
constexpr uintptr_t kUploadProgressTag = 2;

std::mutex g_timeoutLock;
CurlTimeouts g_timeouts;

// RAII owners, so that every road out frees what the attempt took.
struct EasyDeleter {
    void operator()(CURL* h) const { curl_easy_cleanup(h); }
};
struct ListDeleter {
    void operator()(curl_slist* l) const { curl_slist_free_all(l); }
};
struct MimeDeleter {
    void operator()(curl_mime* m) const { curl_mime_free(m); }
};
using EasyHandle = std::unique_ptr<CURL, EasyDeleter>;
using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;
using MimeForm = std::unique_ptr<curl_mime, MimeDeleter>;

void GlobalInitOnce() {
    static std::once_flag once;
    std::call_once(once, [] { (void)curl_global_init(CURL_GLOBAL_DEFAULT); });
}

size_t AppendToString(char* data, size_t size, size_t count, void* target) {
    static_cast<std::string*>(target)->append(data, size * count);
    return size * count;
}

// A body that grows into room sized by the announced length, so that a reply
// of tens of megabytes is not copied again at every doubling. The length is
// only a hint: a body that runs past it still grows.
struct BodySink {
    CURL* handle;
    std::string* body;
    bool sized = false;
};

constexpr curl_off_t kMaxReservedBody = curl_off_t{1} << 28;

size_t AppendToBody(char* data, size_t size, size_t count, void* target) {
    auto* sink = static_cast<BodySink*>(target);
    if (!sink->sized) {
        sink->sized = true;
        curl_off_t announced = -1;
        if (curl_easy_getinfo(sink->handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced) == CURLE_OK &&
            announced > 0 && announced <= kMaxReservedBody)
            sink->body->reserve(static_cast<size_t>(announced));
    }
    sink->body->append(data, size * count);
    return size * count;
}

struct ProgressState {
    WindowHandle window = 0;
    uintptr_t wParam = 0;
    bool upload = false;
    curl_off_t lastReported = -1;
};

// Posts the bytes received (or the share uploaded) when they move, and once
// more when the whole body is in.
int ReportProgress(void* data, curl_off_t dlTotal, curl_off_t dlNow, curl_off_t ulTotal, curl_off_t ulNow) {
    auto* state = static_cast<ProgressState*>(data);
    if (!state->window) return 0;
    if (state->upload) {
        if (ulTotal <= 0) return 0;
        const curl_off_t percent = ulNow * 100 / ulTotal;
        if (percent != state->lastReported) {
            state->lastReported = percent;
            (void)PostWindowMessage(state->window, MsgProgress, state->wParam, static_cast<intptr_t>(percent));
        }
        return 0;
    }
    if (dlNow != state->lastReported && dlNow > 0) {
        state->lastReported = dlNow;
        (void)PostWindowMessage(state->window, MsgProgress, state->wParam, static_cast<intptr_t>(dlNow));
        if (dlTotal > 0 && dlNow == dlTotal)
            (void)PostWindowMessage(state->window, MsgProgress, state->wParam, static_cast<intptr_t>(dlNow));
    }
    return 0;
}

EasyHandle NewHandle(const std::string& url) {
    GlobalInitOnce();
    EasyHandle h(curl_easy_init());
    if (!h) return h;
    CurlTimeouts t = CurlStack::Timeouts();
    curl_easy_setopt(h.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(h.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(h.get(), CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(h.get(), CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(h.get(), CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(h.get(), CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(h.get(), CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(t.connect.count()));
    curl_easy_setopt(h.get(), CURLOPT_LOW_SPEED_LIMIT, t.lowSpeedBytes);
    curl_easy_setopt(h.get(), CURLOPT_LOW_SPEED_TIME, static_cast<long>(t.lowSpeedTime.count()));
    return h;
}

bool PerformWith200(CURL* h) {
    if (curl_easy_perform(h) != CURLE_OK) return false;
    long status = 0;
    curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &status);
    return status == 200;
}

}  // namespace

CurlStack::CurlStack() { GlobalInitOnce(); }

void CurlStack::SetTimeouts(const CurlTimeouts& timeouts) {
    std::lock_guard<std::mutex> lock(g_timeoutLock);
    g_timeouts = timeouts;
}

CurlTimeouts CurlStack::Timeouts() {
    std::lock_guard<std::mutex> lock(g_timeoutLock);
    return g_timeouts;
}

bool CurlStack::PostForm(const std::string& url, const std::string& body, std::string& response) {
    response.clear();
    EasyHandle h = NewHandle(url);
    if (!h) return false;
    HeaderList headers(curl_slist_append(nullptr, kFormContentType));
    std::string bytes, head;
    BodySink sink{h.get(), &bytes};
    curl_easy_setopt(h.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(h.get(), CURLOPT_POST, 1L);
    curl_easy_setopt(h.get(), CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(h.get(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(h.get(), CURLOPT_WRITEFUNCTION, AppendToBody);
    curl_easy_setopt(h.get(), CURLOPT_WRITEDATA, &sink);
    curl_easy_setopt(h.get(), CURLOPT_HEADERFUNCTION, AppendToString);
    curl_easy_setopt(h.get(), CURLOPT_HEADERDATA, &head);
    curl_easy_setopt(h.get(), CURLOPT_BUFFERSIZE, 256L * 1024);
    if (!PerformWith200(h.get())) return false;  // this stack hands out a reply only on success
    response = std::move(bytes);
    return true;
}

bool CurlStack::DownloadFile(const std::string& url, const std::u16string& localPath, WindowHandle progressWindow,
                             uint16_t jobNumber) {
    // Nothing is made under the target's name before the whole body is in: a
    // reader (the grid, the host) never finds an empty or half block there,
    // and a failed attempt leaves an old file as it was. The folder is only
    // looked at, so that nothing is fetched that could not be written.
    const std::u16string::size_type slash = localPath.find_last_of(u'/');
    const std::u16string folder = slash == std::u16string::npos ? u"." : localPath.substr(0, slash ? slash : 1);
    if (localPath.empty() || DirectoryExists(localPath) || !DirectoryWritable(folder)) return false;
    EasyHandle h = NewHandle(url);
    if (!h) return false;
    HeaderList headers(curl_slist_append(nullptr, kDownloadAgent));
    std::string body;
    BodySink sink{h.get(), &body};
    ProgressState progress{progressWindow, static_cast<uintptr_t>(jobNumber) << 16, false, -1};
    curl_easy_setopt(h.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(h.get(), CURLOPT_WRITEFUNCTION, AppendToBody);
    curl_easy_setopt(h.get(), CURLOPT_WRITEDATA, &sink);
    curl_easy_setopt(h.get(), CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(h.get(), CURLOPT_XFERINFOFUNCTION, ReportProgress);
    curl_easy_setopt(h.get(), CURLOPT_XFERINFODATA, &progress);
    if (!PerformWith200(h.get())) return false;
    // The whole body in one write under a temporary name, then renamed over the target.
    return WriteFileAtomic(localPath, body);
}

bool CurlStack::UploadFile(const std::string& url, const std::u16string& parentDir, const std::u16string& localPath,
                           std::string& response, WindowHandle progressWindow) {
    response.clear();
    if (!FileExists(localPath)) return false;
    EasyHandle h = NewHandle(url);
    if (!h) return false;
    MimeForm form(curl_mime_init(h.get()));
    if (!form) return false;
    curl_mimepart* dir = curl_mime_addpart(form.get());
    curl_mime_name(dir, "parent_dir");
    const std::string dirText = Utf16ToUtf8(parentDir);
    curl_mime_data(dir, dirText.c_str(), dirText.size());
    curl_mimepart* file = curl_mime_addpart(form.get());
    curl_mime_name(file, "file");
    if (curl_mime_filedata(file, NativePath(localPath).c_str()) != CURLE_OK) return false;
    curl_mime_filename(file, Utf16ToUtf8(FileStem(localPath, true)).c_str());
    std::string bytes;
    ProgressState progress{progressWindow, kUploadProgressTag, true, -1};
    HeaderList headers(curl_slist_append(nullptr, kMultipartContentType));
    curl_easy_setopt(h.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(h.get(), CURLOPT_MIMEPOST, form.get());
    curl_easy_setopt(h.get(), CURLOPT_WRITEFUNCTION, AppendToString);
    curl_easy_setopt(h.get(), CURLOPT_WRITEDATA, &bytes);
    curl_easy_setopt(h.get(), CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(h.get(), CURLOPT_XFERINFOFUNCTION, ReportProgress);
    curl_easy_setopt(h.get(), CURLOPT_XFERINFODATA, &progress);
    const bool ok = PerformWith200(h.get());
    response = std::move(bytes);  // the reply text whenever one arrived
    return ok;
}

}  // namespace marrowfin
