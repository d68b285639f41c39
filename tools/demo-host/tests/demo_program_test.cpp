// The program as a script or a person meets it: exit codes and messages of
// its failure roads (the loader's among them) and a blank screenshot. The
// short tour against the real library is the CTest case demo_host_tour.
#include <gtest/gtest.h>

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

namespace {

struct ProgramRun {
    int code = -1;
    QString out;
};

ProgramRun Demo(const QStringList& args, const QString& home) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    env.insert(QStringLiteral("HOME"), home);
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(DEMO_PROGRAM_PATH), args);
    if (!p.waitForFinished(60000)) {
        p.kill();
        p.waitForFinished();
        return {};
    }
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -2,
            QString::fromUtf8(p.readAllStandardOutput() + p.readAllStandardError())};
}

TEST(DemoProgram, FailureRoadsEndWithTheirOwnCodeAndSayWhy) {
    QTemporaryDir home;
    // A blank shot: one colour. The tour's shots pass the same check.
    QImage blank(40, 30, QImage::Format_RGB32);
    blank.fill(Qt::white);
    const QString blankPath = home.filePath(QStringLiteral("blank.png"));
    ASSERT_TRUE(blank.save(blankPath));
    const QString fake = QStringLiteral(FAKE_GALLERY_PATH);
    struct Road {
        QStringList args;
        int code;
        QString said;
    };
    const Road roads[] = {
        {{"--frobnicate"}, 2, "unknown argument: --frobnicate"},  // the options' roads end the program
        // The partial library has FirstSynchro, show and GetGallery only: half a table is no table.
        {{"--library", FAKE_PARTIAL_PATH}, 3, "lacks 14 of the exports"},
        {{"--library", MARROWFIN_DEMO_TEST_SOURCE}, 3, "cannot load"},  // no shared object
        {{"--library", fake, "--sample", home.path()}, 2, "library.tsv"},  // no galleries: refused before any window
        {{"--inspect", blankPath, home.filePath("none.png")}, 1, blankPath + " 40 30 1\n"},
    };
    for (const Road& road : roads) {
        const ProgramRun r = Demo(road.args, home.path());
        EXPECT_EQ(r.code, road.code) << road.args.join(' ').toStdString();
        EXPECT_TRUE(r.out.contains(road.said)) << r.out.toStdString();
    }
}

}  // namespace
