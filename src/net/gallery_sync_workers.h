#pragma once
// The helper threads of the first synchronisation: while the request is on
// the wire one reads the old class versions; one composes the new catalogues
// and puts them on disk while the next galleries are read. Used by
// gallery_sync.cpp only.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

#include "markup/markup_document.h"
#include "platform/files.h"
#include "platform/ini_file.h"
#include "store/catalogue.h"
#include "store/gallery_node.h"
#include "store/gallery_tree.h"

namespace marrowfin::sync_detail {

using ClassVersions = std::map<std::u16string, int32_t>;

// The class versions a catalogue holds; the seal is not checked. `existed`
// tells whether there was a file at all.
inline ClassVersions ReadCatalogueVersionsAt(const std::u16string& file, bool& existed) {
    ClassVersions versions;
    MarkupDocument doc;
    existed = FileExists(file);
    if (!existed || !doc.LoadFile(file) || !doc.FindElement(u"root")) return versions;
    doc.EnterElement();
    while (doc.FindElement(u"sub")) versions[doc.GetAttribute(u"n")] = ParseProfileInt(doc.GetAttribute(u"ver"));
    return versions;
}

// Reads the old class versions of the listed galleries on a helper thread
// while the request for all galleries is on the wire: a large library's reply
// takes a while to come, and its catalogues are about as large. The helper
// sees copies of the paths only, never the tree.
class VersionsReadAhead {
public:
    explicit VersionsReadAhead(const GalleryNode& root) {
        for (const GalleryNode* gallery : root.dirChildren)
            if (gallery) m_entries.push_back(Entry{gallery->Path(), CatalogueFile(*gallery), {}});
        try {
            m_worker = std::thread([this] {
                for (Entry& e : m_entries) {
                    if (m_stop.load()) return;
                    e.versions = ReadCatalogueVersionsAt(e.file, e.existed);
                    e.read = true;
                }
            });
        } catch (const std::system_error&) {
            // No thread: every gallery is read when its turn comes.
        }
    }
    ~VersionsReadAhead() { Stop(); }
    VersionsReadAhead(const VersionsReadAhead&) = delete;
    VersionsReadAhead& operator=(const VersionsReadAhead&) = delete;

    // After an unusable reply the versions are not wanted.
    void Stop() {
        m_stop.store(true);
        Join();
    }
    void Join() {
        if (m_worker.joinable()) m_worker.join();
    }

    // What a read of the gallery's catalogue would give now, if the read ahead
    // still stands for it: once per gallery (a second element of the same
    // gallery comes after its catalogue was rewritten), and not when a file
    // has turned up since. A file gone since reads as none. Call after Join.
    bool Take(const GalleryNode& gallery, ClassVersions& out) {
        for (Entry& e : m_entries) {
            if (!gallery.PathIs(e.path)) continue;
            if (!e.read || e.taken) return false;
            e.taken = true;
            const bool exists = FileExists(e.file);
            if (exists && !e.existed) return false;
            out = exists ? std::move(e.versions) : ClassVersions{};
            return true;
        }
        return false;
    }

private:
    struct Entry {
        std::u16string path;
        std::u16string file;
        ClassVersions versions;
        bool existed = false;
        bool read = false;
        bool taken = false;
    };
    std::vector<Entry> m_entries;
    std::atomic<bool> m_stop{false};
    std::thread m_worker;
};

// Composes the first tree's catalogues and puts them on disk on a helper
// thread, in the order given, while the next galleries are read: composing a
// large gallery and the file system's share of a write (a temporary file, the
// rename over the old one) cost about as much as reading it.
// The helper reads a handed-over gallery's subtree while the caller builds
// other galleries of the same detached tree: the caller changes neither that
// gallery nor anything below it until Settle has waited for its catalogue
// file, and Finish comes before the tree is handed to its owner. Callers
// settle a folder before they read or remove what lies in it, and every
// write is done before the run ends.
class CatalogueWrites {
public:
    CatalogueWrites() {
        try {
            m_worker = std::thread([this] { Run(); });
        } catch (const std::system_error&) {
            // No thread: each catalogue is written when it is handed over.
        }
    }
    ~CatalogueWrites() { Finish(); }
    CatalogueWrites(const CatalogueWrites&) = delete;
    CatalogueWrites& operator=(const CatalogueWrites&) = delete;

    void Add(const GalleryNode& gallery, StaleClasses stale) {
        Job job{CatalogueFile(gallery), &gallery, std::move(stale)};
        if (!m_worker.joinable()) {
            Write(job);
            return;
        }
        {
            std::lock_guard<std::mutex> lock(m_lock);
            m_queue.push_back(std::move(job));
        }
        m_wake.notify_one();
    }
    // Waits until no write of `path` or of a file below it is outstanding.
    void Settle(std::u16string_view path) {
        std::unique_lock<std::mutex> lock(m_lock);
        m_done.wait(lock, [&] {
            for (const Job& job : m_queue)
                if (IsAtOrBelow(job.file, path)) return false;
            return true;
        });
    }
    void Finish() {
        {
            std::lock_guard<std::mutex> lock(m_lock);
            m_closing = true;
        }
        m_wake.notify_one();
        if (m_worker.joinable()) m_worker.join();
    }

private:
    struct Job {
        std::u16string file;
        const GalleryNode* gallery;
        StaleClasses stale;
    };

    static void Write(const Job& job) {
        if (!DirectoryExists(job.gallery->Path())) (void)CreateDirectories(job.gallery->Path());
        (void)WriteFileAtomic(job.file, ComposeCatalogue(job.stale, *job.gallery));
    }

    static bool IsAtOrBelow(std::u16string_view file, std::u16string_view path) {
        return file.size() >= path.size() && file.substr(0, path.size()) == path &&
               (file.size() == path.size() || file[path.size()] == u'/');
    }

    void Run() {
        std::unique_lock<std::mutex> lock(m_lock);
        for (;;) {
            m_wake.wait(lock, [&] { return m_closing || !m_queue.empty(); });
            if (m_queue.empty()) return;
            // The job stays queued while it is written, so that Settle waits for it.
            const Job& job = m_queue.front();
            lock.unlock();
            Write(job);
            lock.lock();
            m_queue.pop_front();
            m_done.notify_all();
        }
    }

    std::mutex m_lock;
    std::condition_variable m_wake;
    std::condition_variable m_done;
    std::deque<Job> m_queue;
    bool m_closing = false;
    std::thread m_worker;
};

}  // namespace marrowfin::sync_detail
