#include "common/instrument/handlerscpi.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

namespace {

/// Switches one channel off; false, said, when the module does not then hold it. A selection that is refused does not
/// keep the Off from being sent: better the wrong channel off than none.
bool switchOff(EventHandler& handler, unsigned channel, unsigned channels) {
    const bool selected = channels == 1 || handler.set_channel(channel) == 0;
    const bool off = handler.set_rf_onoff(OnOff::off) == 0 && selected;
    std::fprintf(off ? stdout : stderr, "velda-rf-off: channel %u %s\n", channel, off ? "off" : "NOT OFF");
    return off;
}

} // namespace

/// Switches the RF output of every channel off, and ends with 0 when the module then shows all of them off. Run by the
/// service manager when the panel cannot be kept running, so that nothing radiates without anybody in charge.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velda-rf-off"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELDA_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Switches the RF output of every channel off. Ends with 0 when all are off, otherwise with 1.\n"
                       "VELDA_REGION names the shared memory of the module's service, /veldaData by default."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(application);

    EventHandler handler;
    handler.InitChannels();
    const unsigned channels = handler.publishedChannels();
    bool allOff = channels > 0;
    if (channels == 0)
        std::fputs("velda-rf-off: no module is there\n", stderr);
    for (unsigned channel = channels; channel-- > 0;) // the first is selected at the end, as after a start
        allOff = switchOff(handler, channel, channels) && allOff;
    return allOff ? 0 : 1;
}
