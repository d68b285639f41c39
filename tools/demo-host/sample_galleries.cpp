#include "sample_galleries.h"

#include <QFile>

namespace marrowfin::demo {

namespace {

// The names in column `column` of the lines of `kind`, in file order, without repeats.
QStringList ReadSampleNames(const QString& dataDir, QLatin1String kind, int column, QString* error) {
    QStringList names;
    QFile file(dataDir + QStringLiteral("/library.tsv"));
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString());
        return names;
    }
    while (!file.atEnd()) {
        QString line = QString::fromUtf8(file.readLine());
        while (line.endsWith(QLatin1Char('\n')) || line.endsWith(QLatin1Char('\r'))) line.chop(1);
        if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) continue;
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() <= column || fields[0] != kind || fields[column].isEmpty()) continue;
        if (!names.contains(fields[column])) names << fields[column];
    }
    if (names.isEmpty() && error) *error = QStringLiteral("%1 names no %2").arg(file.fileName(), kind);
    return names;
}

}  // namespace

QStringList ReadSampleGalleries(const QString& dataDir, QString* error) {
    return ReadSampleNames(dataDir, QLatin1String("gallery"), 1, error);
}

QStringList ReadSampleClasses(const QString& dataDir) {
    return ReadSampleNames(dataDir, QLatin1String("class"), 2, nullptr);
}

}  // namespace marrowfin::demo
