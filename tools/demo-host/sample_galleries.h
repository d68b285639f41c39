#pragma once
// Gallery names of the stand-in service's data folder (library.tsv), so that
// the demo can pick them for the panel and open one by name.

#include <QString>
#include <QStringList>

namespace marrowfin::demo {

// The names of the `gallery` lines in file order, without repeats; empty
// (with `error` set) when the file cannot be read.
QStringList ReadSampleGalleries(const QString& dataDir, QString* error = nullptr);
// The class names of the `class` lines in file order: words a search finds.
QStringList ReadSampleClasses(const QString& dataDir);

}  // namespace marrowfin::demo
