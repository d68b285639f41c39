#pragma once
// What the tests of the transport and the synchronisation share: the layers'
// headers, a store of a test's own and short transport time-outs.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "net/curl_stack.h"
#include "net/download_queue.h"
#include "net/gallery_sync.h"
#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/threads.h"
#include "platform/ticks.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
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
struct ScriptedStack : HttpStack {
    explicit ScriptedStack(int number = 0, std::vector<int>* log = nullptr) : number(number), log(log) {}
    bool PostForm(const std::string& url, const std::string&, std::string& response) override { return Attempt(url, &response); }
    bool DownloadFile(const std::string& url, const std::u16string&, WindowHandle, uint16_t) override { return Attempt(url); }
    bool UploadFile(const std::string& url, const std::u16string&, const std::u16string&, std::string& response, WindowHandle) override {
        return Attempt(url, &response);
    }
    bool Attempt(const std::string& url, std::string* response = nullptr) {
        if (response) *response = reply;
        urls.push_back(url);
        if (log) log->push_back(number);
        return succeed;
    }
    bool succeed = true;
    std::string reply;
    std::vector<std::string> urls;
    int number;
    std::vector<int>* log;
};

// The first tree built and handed over to the owner, as the panel does at its start.
inline void BuildAndAdopt(GalleryStore& store) {
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
}

// For the tests that hold or slow the service; put back when the scope ends,
// even if a check inside it fails.
struct ShortTimeouts {
    ShortTimeouts() { CurlStack::SetTimeouts({.connect = std::chrono::milliseconds(2000), .lowSpeedTime = std::chrono::seconds(1)}); }
    ~ShortTimeouts() { CurlStack::SetTimeouts(CurlTimeouts{}); }
};

}  // namespace marrowfin::test
