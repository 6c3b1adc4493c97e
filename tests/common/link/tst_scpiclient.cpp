#include "common/link/scpiclient.h"
#include "tests/common/link/scriptedservice.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QThread>
#include <atomic>
#include <map>
#include <memory>

namespace {

constexpr int Long = 5000; // ms: a time-out that must not strike

/// A client on a thread of its own, and how its requests ended. A request that ends twice fails the program.
class ClientOnThread : public QObject {
public:
    explicit ClientOnThread(quint16 port, int retryFirstMs = 20, int retryMs = 100)
        : client(new ScpiClient(QHostAddress(QHostAddress::LocalHost), port, nullptr)) {
        client->setRetryDelays(retryFirstMs, retryMs);
        client->moveToThread(&thread);
        connect(&thread, &QThread::started, client, &ScpiClient::start);
        connect(&thread, &QThread::finished, client, &QObject::deleteLater);
        connect(client, &ScpiClient::writeFinished, this,
                [this](int id, int status, const QString& error) { note(id, status, error); });
        connect(client, &ScpiClient::queryFinished, this,
                [this](int id, const QString& reply, int status, const QString& error) {
                    note(id, status, reply + error);
                });
    }
    ~ClientOnThread() override { end(); }

    void end() {
        thread.quit();
        thread.wait();
    }

    /// How it ended: "reply " or "error " and its text, nothing when it has not in time. Without the polling of
    /// QTRY_VERIFY, for the tests that wait hundreds of times.
    QString endOf(int id) {
        QElapsedTimer waited;
        waited.start();
        while (ends.count(id) == 0 && waited.elapsed() < Long)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, Long);
        const auto end = ends.find(id);
        return end == ends.end() ? QString() : end->second;
    }

    QThread thread;
    ScpiClient* client;
    std::map<int, QString> ends;
    std::vector<int> order;

private:
    void note(int id, int status, const QString& text) {
        if (!ends.emplace(id, (status == 0 ? "reply " : "error ") + text).second)
            qFatal("Request %d ended twice", id);
        order.push_back(id);
    }
};

/// A service that answers as usual, or with this (with nothing: never), and a running client of it.
struct Pair {
    Pair() { c.thread.start(); }
    explicit Pair(const QByteArray& answer) : Pair() { service.answerWith(answer); }
    int query(const char* text) const { return c.client->sendQuery(text, Long); }
    int write(const char* text) const { return c.client->sendWrite(text, Long); }

    ScriptedService service;
    ClientOnThread c{service.port()};
};

} // namespace

class TestScpiClient : public TestBase {
    Q_OBJECT

private slots:

    void servesInOrderOneAtATime() {
        ScriptedService service;
        service.answerWith({});
        ClientOnThread c(service.port());
        // Queued before there is a connection: each has its own time-out, from its own writing.
        const int first = c.client->sendWrite("A 1", 150);
        const int second = c.client->sendQuery("B?\r\n", Long); // has its line end
        QElapsedTimer took;
        took.start();
        c.thread.start();
        QCOMPARE(c.endOf(first), QString("error timeout"));
        QVERIFY2(took.elapsed() >= 150, qPrintable(QString::number(took.elapsed())));
        QTRY_COMPARE(service.lines, (QList<QByteArray>{"A 1", "B?"}));
        service.send("7\r\nsurplus\r\n#19");
        QCOMPARE(c.endOf(second), QString("reply 7"));
        QCOMPARE(c.order, (std::vector<int>{first, second}));
        QCOMPARE(service.connections, 1);
        // Nothing of an exchange is left over for the next one.
        service.answerWith("next\r\n");
        QCOMPARE(c.endOf(c.client->sendQuery("C?", Long)), QString("reply next"));
    }

    void connectionEndsMidReply() {
        Pair p("#15he");
        const int cut = p.query("A?");
        const int queued = p.query("B?");
        QTRY_COMPARE(p.service.lines.size(), 1);
        p.service.answerWith("b\r\n");
        p.service.dropConnection();
        QCOMPARE(p.c.endOf(cut), QString("error The remote host closed the connection"));
        QCOMPARE(p.c.endOf(queued), QString("reply b"));
        // A whole answer counts, even when the connection ends right behind it.
        p.service.answer = [&](const QByteArray&) {
            p.service.send("whole\r\n");
            p.service.dropConnection();
            return QByteArray();
        };
        QCOMPARE(p.c.endOf(p.query("C?")), QString("reply whole"));
    }

    void refusedConnection() {
        ScriptedService service;
        service.stop();
        ClientOnThread c(service.port(), 60000, 60000);
        c.thread.start();
        for (int id : {c.client->sendQuery("A?", Long), c.client->sendQuery("A?", Long)})
            QCOMPARE(c.endOf(id), QString("error Connection refused"));
        // A request makes it try at once, whatever the pause between idle attempts.
        service.start();
        QCOMPARE(c.endOf(c.client->sendWrite("B 1", Long)), QString("reply "));
        QVERIFY(c.client->isConnected());
    }

    /// Attempts that fail alike are told once: their log would fill and wear the flash.
    void failedAttemptsAreToldOnce() {
        static std::atomic<int> told;
        told = 0;
        ScriptedService service;
        service.stop();
        ClientOnThread c(service.port(), 5, 5);
        const QtMessageHandler before =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
                told += text.contains("connectToHost") || text.contains("connection failed");
            });
        c.thread.start();
        for (int i = 0; i < 5; ++i)
            QCOMPARE(c.endOf(c.client->sendQuery("A?", Long)), QString("error Connection refused"));
        service.start();
        QTRY_VERIFY(c.client->isConnected());
        service.stop();
        QTRY_VERIFY(!c.client->isConnected());
        QCOMPARE(c.endOf(c.client->sendQuery("A?", Long)), QString("error Connection refused"));
        qInstallMessageHandler(before);
        QCOMPARE(told.load(), 4);
    }

    // The client runs on this thread here, so the end of the connection cannot reach it before the request does.
    void connectionClosedWhileIdleIsRenewed() {
        ScriptedService service;
        ScpiClient client(QHostAddress(QHostAddress::LocalHost), service.port(), nullptr);
        client.start();
        QSignalSpy ends(&client, &ScpiClient::queryFinished);
        client.sendQuery("A?", Long);
        QTRY_COMPARE(ends.size(), 1);
        service.send("unread\r\n"); // does not hide what comes behind it
        service.dropConnection();
        client.sendQuery("B?", Long);
        QTRY_COMPARE(ends.size(), 2);
        QCOMPARE(ends[1][2].toInt(), 0);
        QCOMPARE(service.connections, 2);
        QCOMPARE(service.lines, (QList<QByteArray>{"A?", "B?"}));
    }

    void nextRequestAfterRestartSucceeds() {
        Pair p;
        for (int round = 0; round < 200; ++round) {
            // Some are answered, some cut, some refused, depending on the round.
            int underLoad = 0;
            for (int i = 0; i < 1 + round % 7; ++i)
                underLoad = p.query("LOAD?");
            if (round % 3 == 0)
                QVERIFY(!p.c.endOf(underLoad).isEmpty());
            p.service.stop();
            if (round % 2 == 0)
                p.write("DOWN 1");
            if (round % 20 == 0)
                QTRY_VERIFY(!p.c.client->isConnected());
            p.service.start();
            QCOMPARE(p.c.endOf(p.query("NEXT?")), QString("reply 1"));
        }
    }

    /// Somebody accepts and hangs up.
    void idleAttemptsAreRare() {
        ScriptedService service;
        service.setDroppingAll(true);
        ClientOnThread c(service.port(), 100, 200);
        QElapsedTimer watched;
        watched.start();
        c.thread.start();
        // At 0, 100, 300, 500, ... ms: the sixth not before 900 ms.
        QTRY_VERIFY_WITH_TIMEOUT(service.connections >= 6, Long);
        QVERIFY2(watched.elapsed() >= 800, qPrintable(QString::number(watched.elapsed())));
        // One that has something to send is not spun for either.
        const int before = service.connections;
        QVERIFY(c.endOf(c.client->sendWrite("A 1", Long)).startsWith("error "));
        QVERIFY(service.connections <= before + 4);
    }

    void withdraw() {
        Pair p("");
        const int written = p.write("A 1");
        const int queued = p.write("B 1");
        QTRY_COMPARE(p.service.lines.size(), 1);
        QVERIFY(!p.c.client->withdraw(written));
        QVERIFY(p.c.client->withdraw(queued));
        QVERIFY(!p.c.client->withdraw(queued));
        QCOMPARE(p.c.endOf(queued), QString("error timeout"));
        p.service.send("+OK\r\n");
        QCOMPARE(p.c.endOf(written), QString("reply "));
        p.service.answerWith("+OK\r\n");
        QCOMPARE(p.c.endOf(p.write("C 1")), QString("reply "));
        QCOMPARE(p.service.lines, (QList<QByteArray>{"A 1", "C 1"}));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestScpiClient)
#include "tst_scpiclient.moc"
