#include "reference_picture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <cstdlib>

#include "support/test_paths.h"

namespace marrowfin::test {

namespace {

QString OutputFolder() {
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/pictures");
    QDir().mkpath(folder);
    return folder;
}

bool Updating() {
    const char* v = std::getenv("MARROWFIN_UPDATE_REFERENCES");
    return v && std::string(v) == "1";
}

}  // namespace

::testing::AssertionResult MatchesReference(const QImage& rendered, const std::string& folder, const std::string& name,
                                            PictureTolerance tolerance) {
    const QImage actual = rendered.convertToFormat(QImage::Format_RGB32);
    const QString referencePath =
        QString::fromStdString(SourceDir() + "/tests/" + folder + "/reference/" + name + ".png");
    if (Updating()) {
        QDir().mkpath(QFileInfo(referencePath).absolutePath());
        if (!actual.save(referencePath, "PNG"))
            return ::testing::AssertionFailure() << "cannot write " << referencePath.toStdString();
        return ::testing::AssertionSuccess() << "reference rewritten";
    }
    const QString actualPath = OutputFolder() + "/" + QString::fromStdString(name) + ".actual.png";
    const QImage reference = QImage(referencePath).convertToFormat(QImage::Format_RGB32);
    if (reference.isNull()) {
        actual.save(actualPath, "PNG");
        return ::testing::AssertionFailure() << "no reference " << referencePath.toStdString()
                                             << " (run with MARROWFIN_UPDATE_REFERENCES=1 and look at it); actual: "
                                             << actualPath.toStdString();
    }
    if (reference.size() != actual.size()) {
        actual.save(actualPath, "PNG");
        return ::testing::AssertionFailure() << name << ": size " << actual.width() << "x" << actual.height()
                                             << ", reference " << reference.width() << "x" << reference.height()
                                             << "; actual: " << actualPath.toStdString();
    }
    // The diff: the reference faded, differing pixels in red.
    QImage diff(actual.size(), QImage::Format_RGB32);
    long differing = 0;
    int worst = 0;
    for (int y = 0; y < actual.height(); ++y) {
        const QRgb* a = reinterpret_cast<const QRgb*>(actual.constScanLine(y));
        const QRgb* r = reinterpret_cast<const QRgb*>(reference.constScanLine(y));
        QRgb* d = reinterpret_cast<QRgb*>(diff.scanLine(y));
        for (int x = 0; x < actual.width(); ++x) {
            const int off = std::max({std::abs(qRed(a[x]) - qRed(r[x])), std::abs(qGreen(a[x]) - qGreen(r[x])),
                                      std::abs(qBlue(a[x]) - qBlue(r[x]))});
            worst = std::max(worst, off);
            const int g = 192 + qGray(r[x]) / 4;
            d[x] = off > tolerance.channel ? qRgb(255, 0, 0) : qRgb(g, g, g);
            differing += off > tolerance.channel;
        }
    }
    const long allowed = static_cast<long>(tolerance.share * actual.width() * actual.height());
    if (differing <= allowed) return ::testing::AssertionSuccess();
    const QString diffPath = OutputFolder() + "/" + QString::fromStdString(name) + ".diff.png";
    actual.save(actualPath, "PNG");
    diff.save(diffPath, "PNG");
    return ::testing::AssertionFailure() << name << ": " << differing << " pixels differ by more than "
                                         << tolerance.channel << " (allowed " << allowed << ", worst " << worst
                                         << "); actual: " << actualPath.toStdString()
                                         << ", diff: " << diffPath.toStdString();
}

}  // namespace marrowfin::test
