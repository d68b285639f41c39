#pragma once
// What the tests of the transport and the synchronisation share: the layers'
// headers, a store of a test's own and short transport time-outs.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "net/curl_stack.h"
#include "net/download_queue.h"
#include "net/gallery_sync.h"
#include "net/http_stack.h"
#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/threads.h"
#include "platform/ticks.h"
#include "store/catalogue.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "store/tree_update.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

namespace marrowfin::test {

// Freed with its tree once no download worker is left.
struct TestStore : GalleryStore {
    ~TestStore() {
        WaitForDownloadWorkers(std::chrono::seconds(30));
        if (root) DestroySubtree(root);
        delete root;
    }
};

// A stack that answers every call as scripted, keeping the URLs asked for and,
// given a log, its own number in the order of attempts.
class ScriptedStack : public HttpStack {
public:
    explicit ScriptedStack(int number = 0, std::vector<int>* log = nullptr) : m_number(number), m_log(log) {}
    bool succeed = true;
    std::string reply;
    std::vector<std::string> urls;
    bool PostForm(const std::string& url, const std::string&, std::string& response) override {
        response = reply;
        return Attempt(url);
    }
    bool DownloadFile(const std::string& url, const std::u16string&, WindowHandle, uint16_t) override { return Attempt(url); }
    bool UploadFile(const std::string& url, const std::u16string&, const std::u16string&, std::string& response,
                    WindowHandle) override {
        response = reply;
        return Attempt(url);
    }

private:
    bool Attempt(const std::string& url) {
        urls.push_back(url);
        if (m_log) m_log->push_back(m_number);
        return succeed;
    }
    int m_number;
    std::vector<int>* m_log;
};

// The first tree built and handed over to the owner, as the panel does at its start.
inline void BuildAndAdopt(GalleryStore& store) {
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
}

// For the tests that hold or slow the service; put back when the scope ends,
// even if a check inside it fails.
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
