// Start and memory of the whole panel process beside a plain window with as many widgets, both started by exec and
// watched as a service manager would.
// usage: bench_process PANEL PLAIN-WINDOW

#include "bench/report.h"
#include "rig/panelfixture.h"

#include <QApplication>
#include <QProcess>
#include <algorithm>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int Rounds = 5;
constexpr int LongestStartMs = 30000;

/// The socket that a service manager names in NOTIFY_SOCKET.
class NotifySocket {
public:
    explicit NotifySocket(const QString& path) : m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray name = QFile::encodeName(path);
        std::copy_n(name.constData(), std::min<int>(name.size(), sizeof address.sun_path - 1), address.sun_path);
        m_isBound = ::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~NotifySocket() { ::close(m_socket); }
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    bool isBound() const { return m_isBound; }

    bool waitFor(const QByteArray& word) const {
        pollfd waiting{m_socket, POLLIN, 0};
        char message[256];
        while (::poll(&waiting, 1, LongestStartMs) == 1) {
            const ssize_t size = ::recv(m_socket, message, sizeof message, 0);
            if (size > 0 && QByteArray(message, static_cast<int>(size)).contains(word))
                return true;
        }
        return false;
    }

private:
    int m_socket;
    bool m_isBound = false;
};

struct Found {
    bool ok = false;
    double firstPaint = 0; ///< ms from exec
    double window = 0;     ///< ms from exec to the first paint that the watchdog of the shown window has seen
    double peak = 0;       ///< MiB, VmHWM
    double rest = 0;       ///< MiB, VmRSS
    double own = 0;        ///< MiB of it that no other process could share, RssAnon
};

double mebibytes(const QByteArray& status, const char* key) {
    const int at = status.indexOf(key);
    return at < 0 ? 0
                  : status.mid(at + static_cast<int>(std::strlen(key))).trimmed().split(' ').first().toDouble() / 1024;
}

Found started(const QString& program, const QStringList& arguments, const QProcessEnvironment& common) {
    const QTemporaryDir folder;
    const NotifySocket manager(folder.filePath("notify"));
    QProcessEnvironment environment = common;
    environment.insert("NOTIFY_SOCKET", folder.filePath("notify"));
    environment.insert("WATCHDOG_USEC", "60000");
    environment.insert("VELDA_HOME", folder.path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    Found found;
    QElapsedTimer timer;
    timer.start();
    process.start(program, arguments);
    if (!manager.isBound() || !process.waitForStarted() || !manager.waitFor("READY=1"))
        return found;
    found.firstPaint = static_cast<double>(timer.nsecsElapsed()) * 1e-6;
    if (!manager.waitFor("WATCHDOG=1"))
        return found;
    found.window = static_cast<double>(timer.nsecsElapsed()) * 1e-6;
    for (int i = 0; i < 20 && manager.waitFor("WATCHDOG=1"); ++i) // what the start has left is over
        continue;
    QFile file(QStringLiteral("/proc/%1/status").arg(process.processId()));
    const QByteArray status = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    found.peak = mebibytes(status, "VmHWM:");
    found.rest = mebibytes(status, "VmRSS:");
    found.own = mebibytes(status, "RssAnon:");
    found.ok = found.own > 0;
    process.kill();
    process.waitForFinished();
    return found;
}

bool measure(const QString& panelProgram, const QString& plainProgram) {
    PanelFixture panel;
    const QStringList widgets{QString::number(panel.window().findChildren<QWidget*>().size())};
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("VELDA_REGION", QString::fromStdString(panel.module().regionName()));
    std::vector<Found> ours, peers;
    for (int i = 0; i < Rounds; ++i) {
        ours.push_back(started(panelProgram, {}, environment));
        peers.push_back(started(plainProgram, widgets, environment));
        if (!ours.back().ok || !peers.back().ok)
            return false;
    }
    BenchReport report;
    report.value("process_widgets", widgets.last().toDouble(), "widgets");
    const auto compare = [&](const char* name, double Found::*field, const char* unit, bool isRatio = true) {
        PairedTimes pairs;
        for (int i = 0; i < Rounds; ++i)
            pairs.add(ours[static_cast<std::size_t>(i)].*field, peers[static_cast<std::size_t>(i)].*field);
        report.value(name, pairs.ours(), unit);
        report.value(std::string(name) + "_peer", pairs.peer(), unit);
        if (isRatio)
            report.ratio(name, pairs.ratio());
    };
    compare("process_first_paint", &Found::firstPaint, "ms");
    compare("process_window", &Found::window, "ms", false); // the splash's one pass stands between
    compare("process_memory_peak", &Found::peak, "MiB");
    compare("process_memory_rest", &Found::rest, "MiB");
    compare("process_memory_own", &Found::own, "MiB");
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: bench_process PANEL PLAIN-WINDOW\n");
        return 2;
    }
    const bool ok = measure(arguments.at(1), arguments.at(2));
    if (!ok)
        std::fprintf(stderr, "A process did not start, or its memory could not be read.\n");
    return ok ? 0 : 1;
}
