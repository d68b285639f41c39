#pragma once
// The demo host's command line as a plain value.

#include <QString>
#include <QStringList>

namespace marrowfin::demo {

struct DemoOptions {
    QString library;  // path of libmarrowfin.so
    QString tourDir;  // empty: interactive; else the scripted walk writes here
    QString sampleDir;  // the stand-in service's data folder, for gallery names
    QString rateLabel;  // names the tour's screenshots, e.g. "1.0"
    int stepTimeoutMs = 15000;
    bool shortTour = false;
};

struct ParsedOptions {
    DemoOptions options;
    QString error;  // empty when the line was understood
    bool help = false;
};

// Exit codes of the program.
enum DemoExit { ExitOk = 0, ExitTourFailed = 1, ExitUsage = 2, ExitLibrary = 3 };

QString DemoUsage();

// `arguments` without the program name. `programDir` is the folder of the
// executable; the default library is the build folder's, two levels up.
ParsedOptions ParseDemoOptions(const QStringList& arguments, const QString& programDir);

}  // namespace marrowfin::demo
