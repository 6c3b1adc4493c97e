#include <QElapsedTimer>
#include <QSignalSpy>
#include <QThread>
#include <map>
#include <memory>

#include "common/instrument/scpiclient.h"
#include "tests/common/instrument/scriptedservice.h"
#include "tests/support/testbase.h"

namespace {

constexpr int kLong = 5000; // ms: a time-out that must not strike

struct End {
    bool isQuery = false;
    int status = 1;
    QString reply;
    QString error;
};

/// A client on a thread of its own, and how its requests ended. A request that ends twice fails the program.
class ClientOnThread : public QObject {
public:
    explicit ClientOnThread(quint16 port, int retryFirstMs, int retryMs)
        : client(new ScpiClient(QHostAddress(QHostAddress::LocalHost), port, nullptr)) {
        client->setRetryDelays(retryFirstMs, retryMs);
        client->moveToThread(&thread);
        connect(&thread, &QThread::started, client, &ScpiClient::start);
        connect(&thread, &QThread::finished, client, &QObject::deleteLater);
        connect(client, &ScpiClient::writeFinished, this, [this](int id, int status, const QString& error) {
            note(id, {false, status, QString(), error});
        });
        connect(client, &ScpiClient::queryFinished, this,
                [this](int id, const QString& reply, int status, const QString& error) {
                    note(id, {true, status, reply, error});
                });
    }
    ~ClientOnThread() override { end(); }

    void start() { thread.start(); }
    void end() {
        thread.quit();
        thread.wait();
    }
    bool hasEnded(int id) const { return ends.count(id) != 0; }

    /// How it ended: "reply " or "error " and its text, nothing when it has not in time.
    QString endOf(int id) {
        if (!QTest::qWaitFor([&] { return hasEnded(id); }, kLong))
            return {};
        const End& end = ends.at(id);
        return (end.status == 0 ? "reply " : "error ") + end.reply + end.error;
    }

    /// Without the polling of QTRY_VERIFY, for the tests that wait hundreds of times.
    bool waitFor(int id) {
        QElapsedTimer waited;
        waited.start();
        while (!hasEnded(id) && waited.elapsed() < kLong)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, kLong);
        return hasEnded(id);
    }

    QThread thread;
    ScpiClient* client;
    std::map<int, End> ends;
    std::vector<int> order;

private:
    void note(int id, const End& end) {
        if (!ends.emplace(id, end).second)
            qFatal("Request %d ended twice", id);
        order.push_back(id);
    }
};

/// A service that answers as usual, or with this (with nothing: never), and a running client of it.
struct Pair {
    Pair() { c.start(); }
    explicit Pair(const QByteArray& answer) : Pair() { service.answerWith(answer); }
    int query(const char* text) const { return c.client->sendQuery(text, kLong); }
    int write(const char* text) const { return c.client->sendWrite(text, kLong); }

    ScriptedService service;
    ClientOnThread c{service.port(), 20, 100};
};

/// While it lives, counts the connection attempts of clients by their log lines.
class AttemptCounter {
public:
    AttemptCounter() {
        s_count = 0;
        s_behind = qInstallMessageHandler(watch);
    }
    ~AttemptCounter() {
        qInstallMessageHandler(s_behind);
        s_onAttempt = nullptr;
    }
    int count() const { return s_count; }

    /// Called on the client's thread at every attempt, right before it.
    void setOnAttempt(std::function<void(int)> call) { s_onAttempt = std::move(call); }

private:
    static void watch(QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (text.startsWith("[SCPI] connectToHost")) {
            const int attempt = ++s_count;
            if (s_onAttempt)
                s_onAttempt(attempt);
        }
        s_behind(type, context, text);
    }

    inline static std::atomic<int> s_count{0};
    inline static std::function<void(int)> s_onAttempt;
    inline static QtMessageHandler s_behind = nullptr;
};

} // namespace

class TestScpiClient : public TestBase {
    Q_OBJECT

private slots:
    void exchanges_data() {
        // clang-format off
        QTest::addColumn<bool>("isQuery");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("replyOrError");
        addRow("acknowledged", false, QByteArray("+OK\r\n"), 0, "");
        addRow("refused", false, QByteArray("-ERR 1, no\r\n"), -1, "-ERR 1, no");
        addRow("line", true, QByteArray("1.5;2\r\n"), 0, "1.5;2");
        addRow("not Latin", true, QByteArray("\xC2\xB5s\r\n"), 0, QString::fromUtf8("\xC2\xB5s"));
        addRow("malformed block", true, QByteArray("#x\r\n"), -1, "invalid-block-format(nd)");
        addRow("surplus behind it", true, QByteArray("1\r\nsurplus\r\n#19"), 0, "1");
        // clang-format on
    }

    void exchanges() {
        QFETCH(bool, isQuery);
        QFETCH(QByteArray, answer);
        QFETCH(int, status);
        QFETCH(QString, replyOrError);
        Pair p(answer);
        const int id = isQuery ? p.query("A?") : p.write("A 1");
        QTRY_VERIFY(p.c.hasEnded(id));
        const End& end = p.c.ends.at(id);
        QCOMPARE(end.isQuery, isQuery);
        QCOMPARE(end.status, status);
        QCOMPARE(end.reply, status == 0 ? replyOrError : QString());
        QCOMPARE(end.error, status == 0 ? QString() : replyOrError);
        // Nothing of an exchange is left over for the next one.
        p.service.answerWith("next\r\n");
        QCOMPARE(p.c.endOf(p.query("B?")), QString("reply next"));
    }

    void servesInOrderOneAtATime() {
        ScriptedService service;
        service.answerWith({});
        ClientOnThread c(service.port(), 20, 100);
        // Queued before there is a connection: each has its own time-out, from its own writing.
        const int first = c.client->sendWrite("A 1", 100);
        const int second = c.client->sendQuery("B?\r\n", kLong); // has its line end
        c.start();
        QCOMPARE(c.endOf(first), QString("error timeout"));
        QTRY_COMPARE(service.lines, (QList<QByteArray>{"A 1", "B?"}));
        service.send("7\r\n");
        QCOMPARE(c.endOf(second), QString("reply 7"));
        QCOMPARE(c.order, (std::vector<int>{first, second}));
        QCOMPARE(service.connections, 1);
    }

    // Its late answer goes to the next, as nothing tells whose it is.
    void silentService() {
        Pair p("");
        QElapsedTimer took;
        took.start();
        QCOMPARE(p.c.endOf(p.c.client->sendWrite("A 1", 150)), QString("error timeout"));
        QVERIFY2(took.elapsed() >= 150, qPrintable(QString::number(took.elapsed())));
        QVERIFY(p.c.client->isConnected());
        const int next = p.write("B 1");
        QTRY_COMPARE(p.service.lines.size(), 2);
        p.service.send("+OK\r\n");
        QCOMPARE(p.c.endOf(next), QString("reply "));
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
        c.start();
        for (int id : {c.client->sendQuery("A?", kLong), c.client->sendQuery("A?", kLong)})
            QCOMPARE(c.endOf(id), QString("error Connection refused"));
        // A request makes it try at once, whatever the pause between idle attempts.
        service.start();
        QCOMPARE(c.endOf(c.client->sendWrite("B 1", kLong)), QString("reply "));
        QVERIFY(c.client->isConnected());
    }

    // The client runs on this thread here, so the end of the connection cannot reach it before the request does.
    void connectionClosedWhileIdleIsRenewed() {
        ScriptedService service;
        ScpiClient client(QHostAddress(QHostAddress::LocalHost), service.port(), nullptr);
        client.start();
        QSignalSpy ends(&client, &ScpiClient::queryFinished);
        client.sendQuery("A?", kLong);
        QTRY_COMPARE(ends.size(), 1);
        service.send("unread\r\n"); // does not hide what comes behind it
        service.dropConnection();
        client.sendQuery("B?", kLong);
        QTRY_COMPARE(ends.size(), 2);
        QCOMPARE(ends[1][2].toInt(), 0);
        QCOMPARE(service.connections, 2);
        QCOMPARE(service.lines, (QList<QByteArray>{"A?", "B?"}));
    }

    // As when a service returns between an idle attempt and the tap that follows it. The client runs on this thread.
    void requestDuringAFailingAttemptGetsItsOwn() {
        ScriptedService service;
        service.stop();
        ScpiClient client(QHostAddress(QHostAddress::LocalHost), service.port(), nullptr);
        client.setRetryDelays(60000, 60000);
        QSignalSpy ends(&client, &ScpiClient::writeFinished);
        AttemptCounter attempts;
        attempts.setOnAttempt([&](int attempt) {
            if (attempt == 1)
                client.sendWrite("A 1", kLong);
            else
                service.start();
        });
        client.start();
        QTRY_COMPARE(ends.size(), 1);
        QCOMPARE(ends[0][2].toString(), QString());
        QCOMPARE(attempts.count(), 2);
        QCOMPARE(service.lines, QList<QByteArray>{"A 1"});
    }

    void nextRequestAfterRestartSucceeds() {
        Pair p;
        for (int round = 0; round < 200; ++round) {
            // Some are answered, some cut, some refused, depending on the round.
            int underLoad = 0;
            for (int i = 0; i < 1 + round % 7; ++i)
                underLoad = p.query("LOAD?");
            if (round % 3 == 0)
                QVERIFY(p.c.waitFor(underLoad));
            else
                QCoreApplication::processEvents();
            p.service.stop();
            if (round % 2 == 0)
                p.write("DOWN 1");
            if (round % 20 == 0)
                QTRY_VERIFY(!p.c.client->isConnected());
            p.service.start();
            const int next = p.query("NEXT?");
            QVERIFY(p.c.waitFor(next));
            QVERIFY2(p.c.ends.at(next).status == 0,
                     qPrintable(QString("round %1: %2").arg(round).arg(p.c.ends.at(next).error)));
        }
    }

    void idleAttemptsAreRare_data() {
        QTest::addColumn<bool>("refused");
        addRow("nobody listens", true);
        addRow("somebody accepts and hangs up", false);
    }

    void idleAttemptsAreRare() {
        QFETCH(bool, refused);
        ScriptedService service;
        service.setDroppingAll(true);
        if (refused)
            service.stop();
        AttemptCounter attempts;
        ClientOnThread c(service.port(), 100, 200);
        QElapsedTimer watched;
        watched.start();
        c.start();
        // At 0, 100, 300, 500, ... ms: the sixth not before 900 ms.
        QTRY_VERIFY_WITH_TIMEOUT(attempts.count() >= 6, kLong);
        QVERIFY2(watched.elapsed() >= 800, qPrintable(QString::number(watched.elapsed())));
        // One that has something to send is not spun for either.
        const int before = attempts.count();
        const int id = c.client->sendWrite("A 1", kLong);
        QTRY_VERIFY(c.hasEnded(id));
        QCOMPARE(c.ends.at(id).status, -1);
        QVERIFY(attempts.count() <= before + 4);
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

    void endsAll_data() {
        QTest::addColumn<bool>("byClose");
        addRow("closed by another thread", true);
        addRow("destroyed", false);
    }

    void endsAll() {
        QFETCH(bool, byClose);
        Pair p("");
        const int written = p.write("A 1");
        const int queued = p.query("B?");
        QTRY_COMPARE(p.service.lines.size(), 1);
        if (byClose) {
            expectMessage("\\[SCPI\\] wrong-thread; self-posting");
            p.c.client->close();
        } else {
            p.c.end();
        }
        QCOMPARE(p.c.endOf(written), QString("error shutdown"));
        QCOMPARE(p.c.endOf(queued), QString("error shutdown"));
        QCOMPARE(p.c.order, (std::vector<int>{written, queued}));
        QVERIFY(!byClose || !p.c.client->isConnected());
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestScpiClient)
#include "tst_scpiclient.moc"
