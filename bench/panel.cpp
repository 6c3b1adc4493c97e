// Commands through the panel's handler against the smallest client that can do the same, and the time from a change to
// the painted screen.

#include "bench/report.h"
#include "lists/table/list_table.h"
#include "rig/panelfixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QScrollEvent>
#include <QTcpSocket>
#include <QTest>
#include <QThread>

using namespace Kavor::HandheldGui;

namespace {

constexpr int BlockBytes = 15 * 1024 * 1024;

/// A socket on a thread of its own, asked by queued calls and waited for in a nested loop: no queue, no time-outs, no
/// reconnecting, no looking at what comes.
class SmallestClient : public QObject {
    Q_OBJECT

public:
    explicit SmallestClient(quint16 port) {
        moveToThread(&m_thread);
        m_thread.start();
        QMetaObject::invokeMethod(
            this,
            [this, port] {
                m_socket = new QTcpSocket(this);
                connect(m_socket, &QTcpSocket::readyRead, this, &SmallestClient::read);
                m_socket->connectToHost(QHostAddress::LocalHost, port);
                m_socket->waitForConnected();
            },
            Qt::BlockingQueuedConnection);
    }
    ~SmallestClient() override {
        QMetaObject::invokeMethod(
            this, [this] { delete m_socket; }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }

    /// The answer to a line; expected: its bytes, 0 for a line of any length.
    QByteArray ask(const QByteArray& line, int expected = 0) {
        QEventLoop loop;
        QByteArray answer;
        connect(this, &SmallestClient::answered, &loop, [&](const QByteArray& bytes) {
            answer = bytes;
            loop.quit();
        });
        QMetaObject::invokeMethod(this, [this, line, expected] {
            m_expected = expected;
            m_come = 0;
            m_bytes = QByteArray(expected + 4096, Qt::Uninitialized);
            m_socket->write(line);
            m_socket->flush();
        });
        loop.exec();
        return answer;
    }

signals:
    void answered(const QByteArray& bytes);

private:
    void read() {
        m_come += static_cast<int>(m_socket->read(m_bytes.data() + m_come, m_bytes.size() - m_come));
        if (m_come < m_expected || m_come == 0 || m_bytes.at(m_come - 1) != '\n')
            return;
        m_bytes.truncate(m_come);
        emit answered(m_bytes);
    }

    QThread m_thread;
    QTcpSocket* m_socket = nullptr;
    QByteArray m_bytes;
    int m_expected = 0;
    int m_come = 0;
};

bool commands(BenchReport& report, PanelFixture& panel) {
    SmallestClient peer(panel.module().port());
    PairedTimes times;
    bool ok = true;
    for (int i = 0; i < 3000; ++i) {
        const double power = i % 2 ? -7 : -8;
        const QByteArray line = ":POW " + QByteArray::number(power - 0.5, 'f', 4) + "\r\n";
        times.round([&] { ok = panel.handler().set_power(power) == 0 && ok; },
                    [&] { ok = peer.ask(line).startsWith("+OK") && ok; });
    }
    for (const int percent : {50, 99}) {
        const std::string name = "set_round_trip_p" + std::to_string(percent);
        report.value(name, times.ours(percent), "ms");
        report.value(name + "_peer", times.peer(percent), "ms");
        report.ratio(name, percent == 50 ? times.ratio() : times.ratio(percent, 100));
    }

    const QByteArray query = "SIMulator:BLOCk? " + QByteArray::number(BlockBytes);
    const int whole = BlockBytes + 10; // "#8" and the length before it
    PairedTimes blocks;                // rates are compared: the peer's time stands above the line
    for (int i = 0; i < 15; ++i)
        blocks.round([&] { ok = peer.ask(query + "\r\n", whole).size() >= whole && ok; },
                     [&] {
                         std::string reply;
                         ok = panel.handler().send_scpi(query.toStdString(), reply, QByteArray(), false) == 0 &&
                              reply.size() == BlockBytes && ok;
                     });
    report.value("block_15_MiB", 15e3 / blocks.peer(), "MiB/s");
    report.value("block_15_MiB_peer", 15e3 / blocks.ours(), "MiB/s");
    report.ratio("block_15_MiB_rate", blocks.ratio());
    return ok;
}

/// Until nothing is left to paint.
double toPainted(const std::function<bool()>& change, bool& ok) {
    return BenchReport::milliseconds([&] {
        ok = change() && ok;
        QCoreApplication::processEvents();
    });
}

bool painting(BenchReport& report, PanelFixture& panel) {
    bool ok = true;
    std::vector<double> screens;
    for (int i = 0; i < 20; ++i) {
        for (const char* page : {"funcSweep", "funcList", "funcRunMode", "funcSystem", "funcAbout", "funcCw"})
            screens.push_back(toPainted([&] { return panel.press(page); }, ok));
    }
    report.value("screen_change_p50", BenchReport::percentile(screens, 50), "ms");
    report.value("screen_change_worst", BenchReport::percentile(screens, 100), "ms");

    std::vector<double> presses;
    for (QAbstractButton* button : panel.window().findChildren<QAbstractButton*>()) {
        if (!button->isVisible() || !button->isEnabled())
            continue;
        presses.push_back(toPainted(
            [button] {
                QTest::mousePress(button, Qt::LeftButton);
                return true;
            },
            ok));
        QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, QPoint(button->width() / 2, -200));
    }
    report.value("press_to_painted_p50", BenchReport::percentile(presses, 50), "ms");
    report.value("press_to_painted_worst", BenchReport::percentile(presses, 100), "ms");

    auto* label = panel.widget<QLabel>("statusFrequency");
    int turn = 0;
    report.compare(
        "status_bar", 301,
        [&] {
            panel.module().modify(0, [&turn](ChannelRecord& r) { r.frequency.value = 1e9 + ++turn; });
            ok = panel.handler().revert_preset(0) == 0 && ok;
            panel.window().UpdateStatusBar();
            QCoreApplication::processEvents();
        },
        [&] {
            label->setText(QStringLiteral("  Frequency: %1 GHz").arg(++turn));
            QCoreApplication::processEvents();
        });

    panel.press("funcList");
    auto* table = panel.widget<ListTable>("listTable");
    QString error;
    while (table->rowCount() < 10000)
        ok = table->addStep(error) && ok;
    std::vector<double> add, remove;
    for (int i = 0; i < 21; ++i) {
        add.push_back(toPainted([&] { return panel.press("listAdd"); }, ok));
        remove.push_back(toPainted([&] { return panel.press("listDeleteStep"); }, ok));
    }
    report.value("list_10000_add", BenchReport::percentile(add, 50), "ms");
    report.value("list_10000_delete", BenchReport::percentile(remove, 50), "ms");

    // What a swipe does in each of its frames: 97 pixels of 16.7 ms are rows that run at some 5,800 pixels a second.
    std::vector<double> frames;
    for (int i = 0; i < 300; ++i) {
        frames.push_back(toPainted(
            [table, i] {
                QScrollEvent scroll(QPointF(0, 100000 + 97.0 * i), QPointF(), QScrollEvent::ScrollUpdated);
                return QCoreApplication::sendEvent(table->viewport(), &scroll);
            },
            ok));
    }
    report.value("list_10000_swipe_frame_p50", BenchReport::percentile(frames, 50), "ms");
    report.value("list_10000_swipe_frame_worst", BenchReport::percentile(frames, 100), "ms");
    return ok;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    BenchReport report;
    PanelFixture::Setup setup;
    setup.refreshMs = 3600000; // only what is measured happens
    PanelFixture panel(setup);
    const bool ok = commands(report, panel) && painting(report, panel);
    if (!ok)
        std::fprintf(stderr, "A measured operation failed.\n");
    return ok ? 0 : 1;
}

#include "panel.moc"
