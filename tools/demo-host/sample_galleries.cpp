#include "sample_galleries.h"

#include <QFile>

namespace marrowfin::demo {

QStringList ReadSampleGalleries(const QString& dataDir, QString* error) {
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
        if (fields.size() < 2 || fields[0] != QLatin1String("gallery") || fields[1].isEmpty()) continue;
        if (!names.contains(fields[1])) names << fields[1];
    }
    if (names.isEmpty() && error) *error = QStringLiteral("%1 names no gallery").arg(file.fileName());
    return names;
}

}  // namespace marrowfin::demo
