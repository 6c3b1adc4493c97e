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
    explicit ClientOnThread(quint16 port, int retryFirstMs = 20, int retryMs = 100)
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

#define VERIFY_SUCCEEDS(c, id)                                                                                         \
    QTRY_VERIFY_WITH_TIMEOUT((c).hasEnded(id), kLong);                                                                 \
    QCOMPARE((c).ends.at(id).error, QString());                                                                        \
    QCOMPARE((c).ends.at(id).status, 0)

#define VERIFY_FAILS(c, id, text)                                                                                      \
    QTRY_VERIFY_WITH_TIMEOUT((c).hasEnded(id), kLong);                                                                 \
    QCOMPARE((c).ends.at(id).error, QString(text));                                                                    \
    QCOMPARE((c).ends.at(id).status, -1)

class TestScpiClient : public TestBase {
    Q_OBJECT

private slots:
    void exchanges_data();
    void exchanges();
    void addsLineEndOnlyWhereMissing();
    void servesInOrderOneAtATime();
    void replyArrivesInPieces();
    void largeBlock();
    void silentService();
    void lateAcknowledgementGoesToTheNext();
    void surplusBehindAnAnswerIsDropped();
    void connectionEndsMidReply();
    void refusedConnection();
    void failsAsOftenAsItIsRefused();
    void serviceThatReturnsIsFoundByItself();
    void connectionClosedWhileIdleIsRenewed();
    void requestDuringAFailingAttemptGetsItsOwn();
    void nextRequestAfterRestartSucceeds();
    void idleAttemptsAreRare_data();
    void idleAttemptsAreRare();
    void withdraw();
    void closeEndsAll();
    void destructionEndsAll();
};

void TestScpiClient::exchanges_data() {
    QTest::addColumn<bool>("isQuery");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("replyOrError");
    QTest::newRow("acknowledged") << false << QByteArray("+OK\r\n") << 0 << "";
    QTest::newRow("refused") << false << QByteArray("-ERR 1, no\r\n") << -1 << "-ERR 1, no";
    QTest::newRow("line") << true << QByteArray("1.5;2\r\n") << 0 << "1.5;2";
    QTest::newRow("not Latin") << true << QByteArray("\xC2\xB5s\r\n") << 0 << QString::fromUtf8("\xC2\xB5s");
    QTest::newRow("up to the first NUL") << true << QByteArray("#15he\0lo\n", 9) << 0 << "he";
    QTest::newRow("query refused") << true << QByteArray("-ERR\r\n") << -1 << "-ERR";
    QTest::newRow("malformed block") << true << QByteArray("#x\r\n") << -1 << "invalid-block-format(nd)";
}

void TestScpiClient::exchanges() {
    QFETCH(bool, isQuery);
    QFETCH(QByteArray, answer);
    QFETCH(int, status);
    QFETCH(QString, replyOrError);
    ScriptedService service;
    service.answer = [&](const QByteArray&) {
        return answer;
    };
    ClientOnThread c(service.port());
    c.start();
    const int id = isQuery ? c.client->sendQuery("A?") : c.client->sendWrite("A 1");
    QTRY_VERIFY(c.hasEnded(id));
    const End& end = c.ends.at(id);
    QCOMPARE(end.isQuery, isQuery);
    QCOMPARE(end.status, status);
    QCOMPARE(end.reply, status == 0 ? replyOrError : QString());
    QCOMPARE(end.error, status == 0 ? QString() : replyOrError);
    // Nothing of a failed exchange is left over for the next one.
    service.answer = [](const QByteArray&) {
        return QByteArray("next\r\n");
    };
    const int next = c.client->sendQuery("B?");
    VERIFY_SUCCEEDS(c, next);
    QCOMPARE(c.ends.at(next).reply, QString("next"));
}

void TestScpiClient::addsLineEndOnlyWhereMissing() {
    ScriptedService service;
    ClientOnThread c(service.port());
    c.start();
    c.client->sendWrite("A");
    c.client->sendWrite("B\r\n");
    const int last = c.client->sendWrite("C\n");
    VERIFY_SUCCEEDS(c, last);
    QCOMPARE(service.lines, (QList<QByteArray>{"A", "B", "C\n"}));
}

void TestScpiClient::servesInOrderOneAtATime() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray();
    };
    ClientOnThread c(service.port());
    // Queued before there is a connection: each has its own time-out, from its own writing.
    const int first = c.client->sendWrite("A 1", 100);
    const int second = c.client->sendQuery("B?", kLong);
    c.start();
    QTRY_COMPARE(service.lines.size(), 1);
    VERIFY_FAILS(c, first, "timeout");
    QTRY_COMPARE(service.lines, (QList<QByteArray>{"A 1", "B?"}));
    service.send("7\r\n");
    VERIFY_SUCCEEDS(c, second);
    QCOMPARE(c.ends.at(second).reply, QString("7"));
    QCOMPARE(c.order, (std::vector<int>{first, second}));
    QCOMPARE(service.connections, 1);
}

void TestScpiClient::replyArrivesInPieces() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray("#");
    };
    ClientOnThread c(service.port());
    c.start();
    const int id = c.client->sendQuery("A?", kLong);
    QTRY_COMPARE(service.lines.size(), 1);
    for (const char* piece : {"1", "5h", "ell"}) {
        service.send(piece);
        QCoreApplication::processEvents();
        QVERIFY(!c.hasEnded(id));
    }
    service.send("o\n");
    VERIFY_SUCCEEDS(c, id);
    QCOMPARE(c.ends.at(id).reply, QString("hello"));
}

void TestScpiClient::largeBlock() {
    QByteArray content(ScpiReply::kMaximumSize, ' ');
    for (int i = 0; i < content.size(); ++i)
        content[i] = static_cast<char>('!' + i % 89);
    ScriptedService service;
    service.answer = [&](const QByteArray&) {
        return "#8" + QByteArray::number(content.size()) + content + '\n';
    };
    ClientOnThread c(service.port());
    c.start();
    const int id = c.client->sendQuery("DATA?", 20000);
    QTRY_VERIFY_WITH_TIMEOUT(c.hasEnded(id), 20000);
    QCOMPARE(c.ends.at(id).error, QString());
    QVERIFY(c.ends.at(id).reply == QString::fromLatin1(content));
    service.answer = [](const QByteArray&) {
        return QByteArray("1\r\n");
    };
    const int next = c.client->sendQuery("NEXT?");
    VERIFY_SUCCEEDS(c, next);
    QCOMPARE(c.ends.at(next).reply, QString("1"));
}

void TestScpiClient::silentService() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray();
    };
    ClientOnThread c(service.port());
    c.start();
    QElapsedTimer took;
    took.start();
    const int id = c.client->sendQuery("A?", 150);
    VERIFY_FAILS(c, id, "timeout");
    QVERIFY2(took.elapsed() >= 150, qPrintable(QString::number(took.elapsed())));
    QVERIFY(c.client->isConnected());
}

void TestScpiClient::lateAcknowledgementGoesToTheNext() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray();
    };
    ClientOnThread c(service.port());
    c.start();
    const int late = c.client->sendWrite("A 1", 50);
    const int next = c.client->sendWrite("B 1", kLong);
    VERIFY_FAILS(c, late, "timeout");
    QTRY_COMPARE(service.lines.size(), 2);
    service.send("+OK\r\n");
    VERIFY_SUCCEEDS(c, next);
}

void TestScpiClient::surplusBehindAnAnswerIsDropped() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray("1\r\nsurplus\r\n#19");
    };
    ClientOnThread c(service.port());
    c.start();
    const int first = c.client->sendQuery("A?");
    VERIFY_SUCCEEDS(c, first);
    service.answer = [](const QByteArray&) {
        return QByteArray("2\r\n");
    };
    const int next = c.client->sendQuery("B?");
    VERIFY_SUCCEEDS(c, next);
    QCOMPARE(c.ends.at(first).reply, QString("1"));
    QCOMPARE(c.ends.at(next).reply, QString("2"));
}

void TestScpiClient::connectionEndsMidReply() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray("#15he");
    };
    ClientOnThread c(service.port());
    c.start();
    const int cut = c.client->sendQuery("A?", kLong);
    const int queued = c.client->sendQuery("B?", kLong);
    QTRY_COMPARE(service.lines.size(), 1);
    service.answer = [](const QByteArray&) {
        return QByteArray("b\r\n");
    };
    service.dropConnection();
    VERIFY_FAILS(c, cut, "The remote host closed the connection");
    VERIFY_SUCCEEDS(c, queued);
    QCOMPARE(c.ends.at(queued).reply, QString("b"));
    // A whole answer counts, even when the connection ends right behind it.
    service.answer = [&](const QByteArray&) {
        service.send("whole\r\n");
        service.dropConnection();
        return QByteArray();
    };
    const int whole = c.client->sendQuery("C?", kLong);
    VERIFY_SUCCEEDS(c, whole);
    QCOMPARE(c.ends.at(whole).reply, QString("whole"));
}

void TestScpiClient::refusedConnection() {
    ScriptedService service;
    service.stop();
    ClientOnThread c(service.port(), 60000, 60000);
    c.start();
    const int id = c.client->sendWrite("A 1", kLong);
    VERIFY_FAILS(c, id, "Connection refused");
    QVERIFY(!c.client->isConnected());
    // A request makes it try at once, whatever the pause between idle attempts.
    service.start();
    const int next = c.client->sendWrite("B 1", kLong);
    VERIFY_SUCCEEDS(c, next);
    QVERIFY(c.client->isConnected());
}

void TestScpiClient::failsAsOftenAsItIsRefused() {
    ScriptedService service;
    service.stop();
    ClientOnThread c(service.port(), 60000, 60000);
    c.start();
    std::vector<int> ids;
    for (int i = 0; i < 20; ++i)
        ids.push_back(c.client->sendQuery("A?", kLong));
    for (int id : ids) {
        VERIFY_FAILS(c, id, "Connection refused");
    }
    QCOMPARE(c.order, ids);
}

void TestScpiClient::serviceThatReturnsIsFoundByItself() {
    ScriptedService service;
    ClientOnThread c(service.port());
    c.start();
    QTRY_VERIFY(c.client->isConnected());
    service.stop();
    QTRY_VERIFY(!c.client->isConnected());
    service.start();
    QTRY_VERIFY(c.client->isConnected());
    QVERIFY(service.lines.isEmpty());
}

// The client runs on this thread here, so the end of the connection cannot reach it before the request does.
void TestScpiClient::connectionClosedWhileIdleIsRenewed() {
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
void TestScpiClient::requestDuringAFailingAttemptGetsItsOwn() {
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

void TestScpiClient::nextRequestAfterRestartSucceeds() {
    ScriptedService service;
    ClientOnThread c(service.port());
    c.start();
    for (int round = 0; round < 200; ++round) {
        // Some are answered, some cut, some refused, depending on the round.
        int underLoad = 0;
        for (int i = 0; i < 1 + round % 7; ++i)
            underLoad = c.client->sendQuery("LOAD?", kLong);
        if (round % 3 == 0)
            QVERIFY(c.waitFor(underLoad));
        else
            QCoreApplication::processEvents();
        service.stop();
        if (round % 2 == 0)
            c.client->sendWrite("DOWN 1", kLong);
        if (round % 20 == 0)
            QTRY_VERIFY(!c.client->isConnected());
        service.start();
        const int next = c.client->sendQuery("NEXT?", kLong);
        QVERIFY(c.waitFor(next));
        QVERIFY2(c.ends.at(next).status == 0,
                 qPrintable(QString("round %1: %2").arg(round).arg(c.ends.at(next).error)));
    }
}

void TestScpiClient::idleAttemptsAreRare_data() {
    QTest::addColumn<bool>("refused");
    QTest::newRow("nobody listens") << true;
    QTest::newRow("somebody accepts and hangs up") << false;
}

void TestScpiClient::idleAttemptsAreRare() {
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

void TestScpiClient::withdraw() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray();
    };
    ClientOnThread c(service.port());
    c.start();
    const int written = c.client->sendWrite("A 1", kLong);
    const int queued = c.client->sendWrite("B 1", kLong);
    QTRY_COMPARE(service.lines.size(), 1);
    QVERIFY(!c.client->withdraw(written));
    QVERIFY(c.client->withdraw(queued));
    QVERIFY(!c.client->withdraw(queued));
    VERIFY_FAILS(c, queued, "timeout");
    service.send("+OK\r\n");
    VERIFY_SUCCEEDS(c, written);
    QVERIFY(!c.client->withdraw(written));
    service.answer = [](const QByteArray&) {
        return QByteArray("+OK\r\n");
    };
    const int next = c.client->sendWrite("C 1");
    VERIFY_SUCCEEDS(c, next);
    QCOMPARE(service.lines, (QList<QByteArray>{"A 1", "C 1"}));
}

void TestScpiClient::closeEndsAll() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray();
    };
    ClientOnThread c(service.port());
    c.start();
    const int written = c.client->sendWrite("A 1", kLong);
    const int queued = c.client->sendQuery("B?", kLong);
    QTRY_COMPARE(service.lines.size(), 1);
    expectMessage("\\[SCPI\\] wrong-thread; self-posting");
    c.client->close();
    VERIFY_FAILS(c, written, "shutdown");
    VERIFY_FAILS(c, queued, "shutdown");
    QCOMPARE(c.order, (std::vector<int>{written, queued}));
    QVERIFY(!c.client->isConnected());
}

void TestScpiClient::destructionEndsAll() {
    ScriptedService service;
    service.answer = [](const QByteArray&) {
        return QByteArray();
    };
    ClientOnThread c(service.port());
    c.start();
    const int written = c.client->sendWrite("A 1", kLong);
    const int queued = c.client->sendQuery("B?", kLong);
    QTRY_COMPARE(service.lines.size(), 1);
    c.end();
    VERIFY_FAILS(c, written, "shutdown");
    VERIFY_FAILS(c, queued, "shutdown");
}

VELDA_TEST_MAIN(QCoreApplication, TestScpiClient)
#include "tst_scpiclient.moc"
