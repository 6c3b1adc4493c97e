#include "sim/fpga_boards.h"
#include "sim/module_simulator.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <csignal>
#include <cstdio>

namespace {

int fail(const QString& sentence) {
    std::fprintf(stderr, "veldasim: %s\n", qPrintable(sentence));
    return 2;
}

bool readNumber(const QString& text, unsigned minimum, unsigned maximum, unsigned& number) {
    bool ok = false;
    number = text.toUInt(&ok);
    return ok && number >= minimum && number <= maximum;
}

// Fills the options from the command line; a sentence when something is wrong with it.
QString readOptions(const QCommandLineParser& parser, Sim::Options& options) {
    unsigned port = 0;
    if (!readNumber(parser.value("channels"), 1, MaxChannels, options.channels))
        return "--channels takes 1 to 4";
    if (!readNumber(parser.value("port"), 0, 65535, port))
        return "--port takes 0 to 65535";
    options.port = static_cast<quint16>(port);
    options.regionName = parser.value("region").toStdString();
    if (options.regionName.size() < 2 || options.regionName.find('/', 1) != std::string::npos ||
        options.regionName.front() != '/')
        return "--region takes one name behind a slash";
    for (const QString& text : parser.value("disconnected").split(',', Qt::SkipEmptyParts)) {
        unsigned channel = 0;
        if (!readNumber(text, 0, MaxChannels - 1, channel))
            return "--disconnected takes channels from 0, separated by commas";
        options.disconnectedChannels |= 1U << channel;
    }
    QString error;
    const std::optional<Sim::BatteryCurve> battery = Sim::BatteryCurve::parse(parser.value("battery"), error);
    if (!battery)
        return error;
    options.battery = *battery;
    options.configurationFolder = parser.value("configurations");
    for (const QString& command : parser.values("command"))
        options.startCommands << command.toUtf8();
    return {};
}

// The boards' part of the same.
QString readBoards(const QCommandLineParser& parser, Sim::FpgaBoardsOptions& options) {
    unsigned count = 0;
    if (!readNumber(parser.value("boards"), 0, Sim::FpgaBoardsOptions::MostBoards, count))
        return "--boards takes 0 to 4";
    for (const QString& text : parser.value("board-address").split(',', Qt::SkipEmptyParts)) {
        const QHostAddress address(text);
        if (address.protocol() != QAbstractSocket::IPv4Protocol)
            return "--board-address takes IPv4 addresses, separated by commas";
        options.addresses << address;
    }
    if (static_cast<unsigned>(options.addresses.size()) < count)
        return "--board-address names fewer addresses than there are boards";
    options.addresses.resize(static_cast<int>(count));
    struct Row {
        const char* option;
        unsigned most;
        unsigned value;
    };
    Row rows[] = {{"board-port", 65535, 0},
                  {"board-loss", 99, 0},
                  {"board-silent", count, 0},
                  {"board-silent-from", 65535, 0},
                  {"burn-ms", 3600000, 0}};
    for (Row& row : rows) {
        if (!readNumber(parser.value(row.option), 0, row.most, row.value))
            return QStringLiteral("--%1 takes 0 to %2").arg(row.option).arg(row.most);
    }
    options.board.port = static_cast<quint16>(rows[0].value);
    options.lossPercent = static_cast<int>(rows[1].value);
    options.silentBoard = static_cast<int>(rows[2].value);
    options.silentFrom = static_cast<int>(rows[3].value);
    options.board.burnMs = static_cast<int>(rows[4].value);
    return {};
}

} // namespace

int main(int argc, char** argv) {
    // Held back in every thread and taken out by sigwait below, so that ending needs no work inside a signal handler.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGINT);
    sigaddset(&endSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);

    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("veldasim");
    QCoreApplication::setApplicationVersion(VELDA_VERSION);
    QCommandLineParser parser;
    parser.setApplicationDescription("Stands in for the RF module: publishes its records and serves its commands until "
                                     "it is interrupted.\nThe SIMulator: commands on the same port make it fail.");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        {"channels", "Number of RF channels, 1 to 4.", "number", "1"},
        {"port", "TCP port on 127.0.0.1; 0 takes a free one.", "number", "0"},
        {"region", "Name of the shared memory.", "name", RegionName},
        {"disconnected", "Channels, from 0, whose module does not answer.", "numbers"},
        {"battery", "Battery over time: seconds:percent:mA points, separated by commas.", "points", "0:80:-420"},
        {"configurations", "Folder of the stored configurations; without it they are kept in memory.", "folder"},
        {"boards", "Number of FPGA boards, 0 to 4.", "number", "0"},
        {"board-address", "Their addresses, separated by commas.", "addresses",
         "127.0.0.2,127.0.0.3,127.0.0.4,127.0.0.5"},
        {"board-port", "Their UDP port.", "number", "7502"},
        {"board-loss", "Percent of the datagrams of each direction that are lost.", "percent", "0"},
        {"board-silent", "Number, from 1, of a board that does not answer.", "number", "0"},
        {"board-silent-from", "Block of the transfer from which on it does not; 0: from its start.", "block", "0"},
        {"burn-ms", "Milliseconds that burning and verifying take.", "number", "8000"},
        {"command", "A command to carry out before the start, such as \":FREQ 2e9\". May be given again.", "text"},
    });
    parser.process(app);

    Sim::Options options;
    QString error = readOptions(parser, options);
    if (!error.isEmpty())
        return fail(error);
    options.onUpload = [](const QByteArray& header, const QByteArrayList& steps) {
        std::printf("veldasim: :%s, %d steps\n", header.constData(), steps.size());
        for (const QByteArray& step : steps)
            std::printf("  %s\n", step.constData());
        std::fflush(stdout);
    };
    Sim::FpgaBoardsOptions boardOptions;
    error = readBoards(parser, boardOptions);
    if (!error.isEmpty())
        return fail(error);
    Sim::FpgaBoards boards;
    if (!boards.start(boardOptions, error))
        return fail(error);
    Sim::ModuleSimulator simulator(options);
    if (!simulator.start(&error))
        return fail(error);
    std::printf("veldasim: port %u, region %s, channels %u\n", static_cast<unsigned>(simulator.port()),
                options.regionName.c_str(), options.channels);
    std::fflush(stdout);

    int signal = 0;
    sigwait(&endSignals, &signal);
    return 0;
}
