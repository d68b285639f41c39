#pragma once
// PreviewLoader: reads, decodes and fits the previews of a list's cells on a
// few worker threads, so that the panel's thread never touches a drawing.
//
// The list hands it the jobs it wants now, whenever its shown range changes:
// the shown cells first, then a read-ahead. Jobs that are no longer wanted,
// and every job of an older listing (a smaller generation), are dropped
// before they are read. Finished jobs come back on the thread that made the
// loader: they are handed over under the loader's lock, and a queued call
// wakes that thread. They come only while the loader lives: the destructor
// drops the queue, joins the workers and discards what was not delivered.

#include <QImage>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

class QObject;

namespace marrowfin {

// A file below this many bytes is a cut download, not a drawing.
constexpr int64_t kFailedDownloadBytes = 1024;

enum class PreviewOutcome : uint8_t {
    Picture,  // the fitted preview
    NoPicture,  // the file is there but carries no readable preview
    Missing,  // no file, or a cut download: the list's missing-file road takes it
};

struct PreviewDecode {
    PreviewOutcome outcome = PreviewOutcome::Missing;
    QImage picture;  // fitted to the cell, for Picture only
};

// The reading of one cell's file; runs on a worker. `rate` is the skin's rate
// when the job was handed over (the skin is not read off the panel's thread).
using PreviewDecoder = std::function<PreviewDecode(const std::u16string& path, double rate)>;

// The real decoder: size check, preview section, picture, fitted to the
// default cell at `rate`.
PreviewDecode DecodeCellPreview(const std::u16string& path, double rate);

struct PreviewJob {
    int item = -1;
    std::u16string path;  // by value: the list may change under a running job
};

struct PreviewResult {
    uint64_t generation = 0;
    int item = -1;
    std::u16string path;
    PreviewOutcome outcome = PreviewOutcome::Missing;
    QImage picture;
};

class PreviewLoader {
public:
    using Deliver = std::function<void(PreviewResult)>;

    // `deliver` runs on the constructing thread, once per finished job of the
    // current generation.
    explicit PreviewLoader(Deliver deliver, int workers = 2);
    ~PreviewLoader();
    PreviewLoader(const PreviewLoader&) = delete;
    PreviewLoader& operator=(const PreviewLoader&) = delete;

    // Replaces the decoder for the jobs taken from now on (a seam for tests).
    void SetDecoder(PreviewDecoder decoder);

    // The jobs wanted now, in the order they should run. Queued jobs not
    // among them are dropped; an item already being decoded in the same
    // generation is not queued again. A new generation drops all of the old.
    void Want(uint64_t generation, std::vector<PreviewJob> jobs, double rate);

    // Whether jobs wait, run, or have results not yet delivered.
    bool Busy() const;
    // Files read so far (jobs that found no file are not counted), delivered or not.
    int Decodes() const { return m_decodes.load(std::memory_order_relaxed); }

private:
    void Run();
    void HandOver();

    Deliver m_deliver;
    const int m_workerCount;
    // Owns the queued deliveries: they go with it.
    std::unique_ptr<QObject> m_context;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<PreviewJob> m_queue;
    std::set<int> m_busy;  // items of m_generation decoding or on their way back
    uint64_t m_generation = 0;
    double m_rate = 1.0;
    int m_inFlight = 0;  // jobs taken and not yet delivered, every generation
    std::vector<PreviewResult> m_done;  // finished, waiting for the receiving thread
    bool m_wakePosted = false;
    bool m_stopping = false;
    std::shared_ptr<const PreviewDecoder> m_decoder;
    std::vector<std::thread> m_workers;
    std::atomic<int> m_decodes{0};
};

}  // namespace marrowfin
