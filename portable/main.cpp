#include "common/instrument/handlerscpi.h"
#include "platform/devicepaths.h"
#include "platform/logger.h"
#include "portable/update/update_packages.h"
#include "portable/widgets/styles/styles.h"
#include "portable/window/focustrace.h"
#include "portable/window/mainwindow.h"
#include "portable/window/servicenotifier.h"
#include "portable/window/splash.h"

#include <QApplication>
#include <QCommandLineParser>
#include <cstdio>
#include <malloc.h>
#include <optional>

using namespace Kavor::HandheldGui;

namespace {

constexpr int CalledWrong = 2;

/// Bytes of a block from which on the system takes it back when it is freed. Left to itself the allocator raises this
/// to the largest picture it has seen, and the heap keeps what the splash needed.
constexpr int LargeBlock = 1 << 20;

/// Answers what is asked on the command line and refuses what nobody knows; nothing when the panel is to start. Needs
/// no display. The options of Qt itself pass.
std::optional<int> answered(int& argc, char** argv) {
    const QCoreApplication core(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("portable_gui"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELDA_VERSION));
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QStringLiteral("The front panel of the RF signal generator."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help."));
    parser.addOption(help);
    const QCommandLineOption version = parser.addVersionOption();
    for (const char* name :
         {"platform", "platformpluginpath", "platformtheme", "plugin", "qwindowgeometry", "qwindowicon", "qwindowtitle",
          "session", "display", "geometry", "fontengine", "style", "stylesheet"}) {
        QCommandLineOption option(QString::fromLatin1(name), QString(), QStringLiteral("value"));
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
    QString problem;
    if (!parser.parse(QCoreApplication::arguments()))
        problem = parser.errorText();
    else if (!parser.positionalArguments().isEmpty())
        problem = QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().constFirst());
    if (!problem.isEmpty()) {
        std::fprintf(stderr, "portable_gui: %s\n", qUtf8Printable(problem));
        return CalledWrong;
    }
    if (parser.isSet(help))
        std::printf("%s", qUtf8Printable(parser.helpText()));
    else if (parser.isSet(version))
        std::printf("portable_gui %s\n", VELDA_VERSION);
    else
        return std::nullopt;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, LargeBlock);
    if (const std::optional<int> code = answered(argc, argv))
        return *code;
    // Touch and mouse input reach every widget either way.
    QApplication::setAttribute(Qt::AA_SynthesizeMouseForUnhandledTouchEvents, true);
    QApplication::setAttribute(Qt::AA_SynthesizeTouchForUnhandledMouseEvents, true);
    // The panel brings its own keyboard: no system input method may pop up.
    qunsetenv("QT_IM_MODULE");
    QApplication application(argc, argv);
    applyApplicationStyle(application);

    // These live until the process ends.
    auto* log = new Logger::LogManager(nullptr);
    log->set_log_QtMsgType_file(false);
    log->init(DevicePaths::logFolder(), QStringLiteral("portable_gui"), {});
    Logger::instance.log(__FILE__, "main", __LINE__, "main", QtInfoMsg, "start Portable GUI application");

    FocusTrace::startIfAsked(&application);

    // A desktop is not the instrument: there the pointer helps.
    if (!qEnvironmentVariableIsSet("VELDA_SHOW_POINTER"))
        QApplication::setOverrideCursor(Qt::BlankCursor);
    QApplication::setQuitOnLastWindowClosed(false);

    auto* notifier = new ServiceNotifier(&application);
    auto* splash = new Splash(QStringLiteral(":/logo.gif"));
    auto* handler = new EventHandler;
    handler->InitChannels();
    PanelSettings settings;
    auto* updates = new UpdatePackages;
    settings.updateEntry = updates;
    auto* window = new MainWindow(nullptr, handler, settings);
    window->postInit();
    QObject::connect(splash, &Splash::ended, window, [window, notifier] {
        window->show();
        notifier->watch(*window);
        QApplication::setQuitOnLastWindowClosed(true);
    });
    splash->start();
    if (handler->getDisconnectedChannels() != 0)
        window->reportError(QStringLiteral("No connection to internal veldaX module. Please restart."));
    updates->clearUp(*window);
    return QApplication::exec();
}
