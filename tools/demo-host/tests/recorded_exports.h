#pragma once
// An export table whose functions only write down how they were called, for
// tests of the host's windows without the library.

#include <QString>
#include <QStringList>
#include <cstdint>

#include "gallery_library.h"

namespace marrowfin::demo::test {

struct Recorded {
    QStringList calls;          // e.g. "show", "ShowGallery(\\A|YL)", "control(5,10001)"
    uint64_t panel = 0;         // what GetGallery answers
    int preTranslateAnswer = 0; // what GaDllPretanslateMsg answers
    int preTranslateCalls = 0;
    QString boutiqueSuffix;     // IsBlkBoutique answers 1 for paths ending so
    MarrowfinMsg lastMessage{nullptr, nullptr};
};

// The one record (reset by RecordedExports()).
Recorded& Record();
// A table with every export set to a recording function; resets the record.
GalleryExports RecordedExports();

}  // namespace marrowfin::demo::test
