#include "reference_picture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <cstdlib>

#include "support/test_paths.h"

namespace marrowfin::test {

::testing::AssertionResult MatchesReference(const QImage& rendered, const std::string& folder, const std::string& name,
                                            PictureTolerance tolerance) {
    const QImage actual = rendered.convertToFormat(QImage::Format_RGB32);
    const QString referencePath = QString::fromStdString(SourceDir() + "/tests/" + folder + "/reference/" + name + ".png");
    if (const char* v = std::getenv("MARROWFIN_UPDATE_REFERENCES"); v && std::string(v) == "1") {
        QDir().mkpath(QFileInfo(referencePath).absolutePath());
        if (!actual.save(referencePath, "PNG")) return ::testing::AssertionFailure() << "cannot write " << referencePath.toStdString();
        return ::testing::AssertionSuccess() << "reference rewritten";
    }
    const QString out = QCoreApplication::applicationDirPath() + QStringLiteral("/pictures/") + QString::fromStdString(name);
    QDir().mkpath(QFileInfo(out).absolutePath());
    const QImage reference = QImage(referencePath).convertToFormat(QImage::Format_RGB32);
    if (reference.size() != actual.size()) {
        actual.save(out + ".actual.png", "PNG");
        return ::testing::AssertionFailure() << name << ": size " << actual.width() << "x" << actual.height() << ", reference "
                                             << (reference.isNull()
                                                     ? "missing (run with MARROWFIN_UPDATE_REFERENCES=1 and look at it)"
                                                     : std::to_string(reference.width()) + "x" + std::to_string(reference.height()))
                                             << "; actual: " << out.toStdString() << ".actual.png";
    }
    long differing = 0;
    int worst = 0;
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x) {
            const QRgb a = actual.pixel(x, y), r = reference.pixel(x, y);
            const int off = std::max({std::abs(qRed(a) - qRed(r)), std::abs(qGreen(a) - qGreen(r)), std::abs(qBlue(a) - qBlue(r))});
            worst = std::max(worst, off);
            differing += off > tolerance.channel;
        }
    }
    const long allowed = static_cast<long>(tolerance.share * actual.width() * actual.height());
    if (differing <= allowed) return ::testing::AssertionSuccess();
    actual.save(out + ".actual.png", "PNG");
    return ::testing::AssertionFailure() << name << ": " << differing << " pixels differ by more than " << tolerance.channel << " (allowed "
                                         << allowed << ", worst " << worst << "); actual: " << out.toStdString() << ".actual.png";
}

}  // namespace marrowfin::test
