#include "app/Application.h"
#include "app/DocumentDump.h"
#include "app/LaunchOptions.h"
#include "app/PageExport.h"

#include <QIcon>

#include <cstdio>
#include <future>

using namespace corvelle;

namespace {

QString environmentValue(const char* name)
{
    return qEnvironmentVariableIsSet(name) ? qEnvironmentVariable(name) : QString();
}

QStringList argumentsOf(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

} // namespace

int main(int argc, char** argv)
{
    const QStringList arguments = argumentsOf(argc, argv);
    if (const auto text = exportAsked(arguments)) {
        std::fwrite(text->constData(), 1, static_cast<size_t>(text->size()), stdout);
        return 0;
    }
    if (const auto status = dumpAsked(arguments))
        return *status;
    const LaunchOptions options = readLaunchOptions(arguments, environmentValue);
    const LibraryPlace place = chooseLibrary(options.library, Defaults().libraryPath());

    // The library is read while the toolkit starts: the window's first picture already has its
    // cards.
    auto opening = std::async(
        std::launch::async, [place] { return openLibrary(place, OpenMode::Application); });

    TimedApplication toolkit(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Corvelle"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVELLE_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.corvelle.Corvelle"));

    Application application(toolkit, options, place, std::move(opening));
    if (application.handOver())
        return 0;
    application.start();
    return toolkit.exec();
}
