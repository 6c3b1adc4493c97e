#include "headless/conformance.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <csignal>
#include <cstdio>

namespace {

Conformance* interrupted = nullptr;

/// The first Ctrl-C sets back what is under way, the second ends the program.
void stopAtSignal(int signal) {
    interrupted->stop();
    std::signal(signal, SIG_DFL);
}

void print(const Conformance::Row& row) {
    const char* verdict = row.skipped ? "-" : row.findings.isEmpty() ? "ok" : "WRONG";
    std::printf("%-5s  %-46s %8.1f ms\n", verdict, row.what.constData(), row.slowestMs);
    for (const QByteArray& finding : row.findings)
        std::printf("         %s\n", finding.constData());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velda-conformance"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELDA_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Sends the service of an RF module every command that the front panel sends, reads the record\n"
        "after each, and prints what the panel will find wrong. RF and modulations are switched off, what\n"
        "it changes it sets back, but for the list and the pattern. No panel should run beside it.\n"
        "Ends with 0 when nothing is wrong, 1 when something is, 2 for wrong arguments."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        {"region", "Name of the shared memory.", "name", QString::fromLatin1(RegionName)},
        {"timeout", "Longest wait for an answer, in milliseconds.", "ms", "2000"},
        {"slow", "An answer that takes longer is a finding, in milliseconds.", "ms", "300"},
        {"rf", "Also switches the RF output on, at the lowest power, and each modulation."},
        {"reset",
         "Also stores the settings as configuration 99999 (one that is there is lost), presets, recalls, erases."},
    });
    parser.process(application);
    Conformance::Settings settings;
    settings.regionName = parser.value(QStringLiteral("region")).toStdString();
    bool isTimeout = false;
    bool isSlow = false;
    settings.timeoutMs = parser.value(QStringLiteral("timeout")).toInt(&isTimeout);
    settings.slowMs = parser.value(QStringLiteral("slow")).toInt(&isSlow);
    settings.radiates = parser.isSet(QStringLiteral("rf"));
    settings.restarts = parser.isSet(QStringLiteral("reset"));
    if (!isTimeout || !isSlow || settings.timeoutMs <= 0 || settings.slowMs <= 0 ||
        !parser.positionalArguments().isEmpty()) {
        std::fputs("velda-conformance: --timeout and --slow take milliseconds, and there are no other arguments\n",
                   stderr);
        return 2;
    }

    Conformance conformance(settings, print);
    interrupted = &conformance;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, stopAtSignal);
    std::signal(SIGPIPE, SIG_IGN); // who reads the rows may go before RF is off
    int wrong = 0;
    for (const Conformance::Row& row : conformance.run())
        wrong += !row.skipped && !row.findings.isEmpty() ? 1 : 0;
    const std::vector<double> times = conformance.times();
    if (!times.empty())
        std::printf("%zu answers: median %.2f ms, 99 %% within %.2f ms, slowest %.2f ms\n", times.size(),
                    times[times.size() / 2], times[times.size() * 99 / 100], times.back());
    std::printf(wrong == 0 ? "Nothing is wrong.\n" : "%d of the rows above are wrong.\n", wrong);
    return wrong == 0 ? 0 : 1;
}
