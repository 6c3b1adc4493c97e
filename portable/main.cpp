#include "common/instrument/handlerscpi.h"
#include "platform/devicepaths.h"
#include "platform/logger.h"
#include "portable/update/update_packages.h"
#include "portable/widgets/styles/styles.h"
#include "portable/window/focustrace.h"
#include "portable/window/mainwindow.h"
#include "portable/window/splash.h"

#include <QApplication>

using namespace Kavor::HandheldGui;

int main(int argc, char** argv) {
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

    auto* splash = new Splash(QStringLiteral(":/logo.gif"));
    auto* handler = new EventHandler;
    handler->InitChannels();
    PanelSettings settings;
    settings.updateEntry = new UpdatePackages;
    auto* window = new MainWindow(nullptr, handler, settings);
    window->postInit();
    QObject::connect(splash, &Splash::ended, window, [window] {
        window->show();
        QApplication::setQuitOnLastWindowClosed(true);
    });
    splash->start();
    if (handler->getDisconnectedChannels() != 0)
        window->reportError(QStringLiteral("No connection to internal veldaX module. Please restart."));
    return QApplication::exec();
}
