// The program as a script or a person meets it: exit codes and messages of
// its failure roads, and the tour's log when the panel never comes.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

namespace {

struct ProgramRun {
    int code = -1;
    QString out, err;
};

ProgramRun Demo(const QStringList& args, const QString& home) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    env.insert(QStringLiteral("HOME"), home);
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(DEMO_PROGRAM_PATH), args);
    ProgramRun r;
    if (!p.waitForFinished(60000)) {
        p.kill();
        p.waitForFinished();
        return r;
    }
    r.code = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -2;
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    return r;
}

TEST(DemoProgram, FailureRoadsEndWithTheirOwnCodeAndSayWhy) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());

    ProgramRun r = Demo({QStringLiteral("--frobnicate")}, home.path());
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains(QStringLiteral("unknown argument: --frobnicate"))) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(QStringLiteral("usage:")));

    r = Demo({QStringLiteral("--library"), QStringLiteral(FAKE_PARTIAL_PATH)}, home.path());
    EXPECT_EQ(r.code, 3);
    EXPECT_TRUE(r.err.contains(QStringLiteral("lacks 14 of the exports"))) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(QStringLiteral("MarrowfinSendCopyData")));

    r = Demo({QStringLiteral("--library"), home.path() + QStringLiteral("/none.so")}, home.path());
    EXPECT_EQ(r.code, 3);
    EXPECT_TRUE(r.err.contains(QStringLiteral("cannot load"))) << r.err.toStdString();

    // A sample folder without galleries is refused before any window opens.
    r = Demo({QStringLiteral("--library"), QStringLiteral(FAKE_GALLERY_PATH), QStringLiteral("--sample"), home.path()},
             home.path());
    EXPECT_EQ(r.code, 2);
    EXPECT_TRUE(r.err.contains(QStringLiteral("library.tsv"))) << r.err.toStdString();

    r = Demo({QStringLiteral("--help")}, home.path());
    EXPECT_EQ(r.code, 0);
    EXPECT_TRUE(r.out.contains(QStringLiteral("--tour DIR")));
}

TEST(DemoProgram, InspectTellsBlankAndMissingPicturesFromDrawnOnes) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    QImage blank(40, 30, QImage::Format_RGB32);
    blank.fill(Qt::white);
    const QString blankPath = home.filePath(QStringLiteral("blank.png"));
    ASSERT_TRUE(blank.save(blankPath));
    QImage drawn = blank;
    for (int x = 0; x < 40; ++x) drawn.setPixel(x, x % 30, qRgb(x * 6, 0, 255 - x * 6));
    const QString drawnPath = home.filePath(QStringLiteral("drawn.png"));
    ASSERT_TRUE(drawn.save(drawnPath));

    ProgramRun r = Demo({QStringLiteral("--inspect"), drawnPath}, home.path());
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, drawnPath + QStringLiteral(" 40 30 41\n"));
    r = Demo({QStringLiteral("--inspect"), drawnPath, blankPath}, home.path());
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.out.contains(blankPath + QStringLiteral(" 40 30 1\n"))) << r.out.toStdString();
    r = Demo({QStringLiteral("--inspect"), home.filePath(QStringLiteral("none.png"))}, home.path());
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.out.endsWith(QStringLiteral(" 0 0 0\n"))) << r.out.toStdString();
}

TEST(DemoProgram, ATourWithoutAPanelLogsEachFailedStepAndEndsWithOne) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    const QString tour = home.path() + QStringLiteral("/tour");
    // The stand-in library answers a panel handle but never makes a window.
    const ProgramRun r = Demo({QStringLiteral("--library"), QStringLiteral(FAKE_GALLERY_PATH), QStringLiteral("--tour"), tour,
                        QStringLiteral("--short"), QStringLiteral("--step-timeout"), QStringLiteral("300"),
                        QStringLiteral("--rate-label"), QStringLiteral("2.5")},
                       home.path());
    EXPECT_EQ(r.code, 1) << r.err.toStdString();
    QFile log(tour + QStringLiteral("/tour.log"));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(log.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("step show FAILED: timed out after 300 ms"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("step open-gallery FAILED: no class list in the panel")));
    EXPECT_TRUE(text.contains(QStringLiteral("step search FAILED")));
    EXPECT_TRUE(text.contains(QStringLiteral("step host-window ok")));
    EXPECT_TRUE(text.contains(QStringLiteral("[rate 2.5]")));
    EXPECT_FALSE(text.contains(QStringLiteral(", 0 failed,")));
    // Steps that ran still left their shots: the host window, named by the rate.
    const QStringList shots = QDir(tour).entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
    EXPECT_EQ(shots, (QStringList{QStringLiteral("01-host-2.5.png"), QStringLiteral("02-host-window-2.5.png")}));
    // A second run appends to the same log.
    const qint64 before = log.size();
    log.close();
    (void)Demo({QStringLiteral("--library"), QStringLiteral(FAKE_GALLERY_PATH), QStringLiteral("--tour"), tour,
                QStringLiteral("--short"), QStringLiteral("--step-timeout"), QStringLiteral("100")},
               home.path());
    EXPECT_GT(QFile(tour + QStringLiteral("/tour.log")).size(), before);
}

}  // namespace
