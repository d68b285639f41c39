#include "panel/preview/preview_loader.h"

#include <QObject>

#include "panel/preview/dwg_preview.h"
#include "panel/preview/fit_thumbnail.h"
#include "platform/files.h"

namespace marrowfin {

PreviewDecode DecodeCellPreview(const std::u16string& path, double rate) {
    PreviewDecode decode;
    // A missing file (size -1) and a cut download are the list's to report;
    // neither is read here.
    if (FileSize(path) < kFailedDownloadBytes) return decode;
    // Read for fitting: a PNG of a colour table is not expanded to RGB32 first.
    const QImage preview = PreviewToFittable(ReadDwgPreviewFile(path));
    if (preview.isNull()) {
        decode.outcome = PreviewOutcome::NoPicture;
        return decode;
    }
    decode.outcome = PreviewOutcome::Picture;
    decode.picture = FitThumbnail(preview, 0, 0, rate);
    return decode;
}

PreviewLoader::PreviewLoader(Deliver deliver, int workers)
    : m_deliver(std::move(deliver)), m_workerCount(workers > 0 ? workers : 1), m_context(std::make_unique<QObject>()),
      m_decoder(std::make_shared<const PreviewDecoder>(DecodeCellPreview)) {}

PreviewLoader::~PreviewLoader() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
        m_queue.clear();
    }
    m_wake.notify_all();
    // A worker finishes at most the one file it is reading.
    for (std::thread& worker : m_workers) worker.join();
    // Deliveries posted and not yet run are discarded with their receiver.
    m_context.reset();
}

void PreviewLoader::SetDecoder(PreviewDecoder decoder) {
    auto shared = std::make_shared<const PreviewDecoder>(std::move(decoder));
    std::lock_guard<std::mutex> lock(m_mutex);
    m_decoder = std::move(shared);
}

void PreviewLoader::Want(uint64_t generation, std::vector<PreviewJob> jobs, double rate) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (generation != m_generation) {
            // What the old listing still has running comes back stale and is dropped.
            m_generation = generation;
            m_busy.clear();
        }
        m_rate = rate;
        m_queue.clear();
        for (PreviewJob& job : jobs)
            if (!m_busy.count(job.item)) m_queue.push_back(std::move(job));
        if (m_queue.empty()) return;
        // The workers start with the first listing that needs them.
        while (static_cast<int>(m_workers.size()) < m_workerCount) m_workers.emplace_back([this] { Run(); });
    }
    m_wake.notify_all();
}

bool PreviewLoader::Busy() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return !m_queue.empty() || m_inFlight > 0;
}

void PreviewLoader::Run() {
    for (;;) {
        PreviewJob job;
        uint64_t generation;
        double rate;
        std::shared_ptr<const PreviewDecoder> decoder;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
            if (m_stopping) return;
            job = std::move(m_queue.front());
            m_queue.pop_front();
            generation = m_generation;
            rate = m_rate;
            decoder = m_decoder;
            m_busy.insert(job.item);
            ++m_inFlight;
        }
        PreviewDecode decode = (*decoder)(job.path, rate);
        if (decode.outcome != PreviewOutcome::Missing) m_decodes.fetch_add(1, std::memory_order_relaxed);
        PreviewResult result{generation, job.item, std::move(job.path), decode.outcome, std::move(decode.picture)};
        bool wake;
        {
            // The results pass under the loader's own lock; the post only
            // wakes the receiving thread, once for all that gathered meanwhile.
            std::lock_guard<std::mutex> lock(m_mutex);
            if (m_stopping) return;
            m_done.push_back(std::move(result));
            wake = !m_wakePosted;
            m_wakePosted = true;
        }
        // The context lives until every worker has been joined, so the post
        // always has a receiver; it runs on the thread that made the loader.
        if (wake)
            QMetaObject::invokeMethod(
                m_context.get(), [this] { HandOver(); }, Qt::QueuedConnection);
    }
}

void PreviewLoader::HandOver() {
    std::vector<PreviewResult> done;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_wakePosted = false;
        done.swap(m_done);
        m_inFlight -= static_cast<int>(done.size());
        // An older listing's results are dropped here.
        std::erase_if(done, [this](const PreviewResult& r) { return r.generation != m_generation; });
        for (const PreviewResult& r : done) m_busy.erase(r.item);
    }
    for (PreviewResult& result : done)
        if (m_deliver) m_deliver(std::move(result));
}

}  // namespace marrowfin
