#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QSignalSpy>

#include "common/instrument/scpireply.h"
#include "tests/common/instrument/handlerfixture.h"
#include "tests/support/testbase.h"

namespace {

const char kInitFailure[] = "^\\*{13}Channels initializarion failure \\*{10}$";

QString invalidInput(const char* function, unsigned channels) {
    return QString("^%1: invalid input ldshmem, channel_no = %2$").arg(function).arg(channels);
}

/// The reply; "-1" and what was in its place before when the handler reports a failure.
std::string ask(HandlerFixture& f, const char* command) {
    std::string reply = "before";
    const int result = f.handler->veldaScpiTrans(command, std::string(), reply);
    return result == 0 ? reply : std::to_string(result) + ' ' + reply;
}

const std::string kFailed = "-1 before";
const std::string kAnswered = "1";

} // namespace

/// The lower half of the handler: the region and its misfortunes, the blocking send operations, the state of the link.
class TestInstrumentLink : public TestBase {
    Q_OBJECT

private:
    void startUnusable(HandlerFixture& f, unsigned loggedChannels) {
        expectMessage(invalidInput("init_channel", loggedChannels));
        expectMessage(kInitFailure);
        f.start();
    }

private slots:
    void unusableRegions_data() {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<unsigned>("loggedChannels");
        addRow("none", -1, 1U);
        addRow("a byte short of a record", 1815, 1U);
        addRow("five records", 5 * 1816, 5U);
    }

    void unusableRegions() {
        QFETCH(int, bytes);
        QFETCH(unsigned, loggedChannels);
        HandlerFixture f;
        f.region.unlink();
        if (bytes >= 0)
            f.region.replaceWithSize(static_cast<std::size_t>(bytes));
        if (bytes >= 1816) {
            std::memset(&f.region.record(), 1, static_cast<std::size_t>(bytes));
            f.publishPort(f.service.port());
        }
        startUnusable(f, loggedChannels);
        EventHandler& e = *f.handler;
        QCOMPARE(e.channelCount(), 1U);
        QCOMPARE(e.getDisconnectedChannels(), 1U);
        QCOMPARE(e.get_frequency(), 0.0);
        QCOMPARE(e.get_sys_opt(), std::string());
        QCOMPARE(e.getPort(), std::string());
        QCOMPARE(e.set_rf_onoff(off), -1); // a record of zeros is nobody's word that the output is off
        e.refresh();
        QCOMPARE(ask(f, "A?"), kFailed);
        QVERIFY(!e.isLinkUp());
        QCOMPARE(f.service.connections, 0);
    }

    // The panel copies the record once a second: an hour without a module must not be 3600 critical lines.
    void lossIsReportedOnce() {
        HandlerFixture f;
        f.start();
        for (int loss = 0; loss < 2; ++loss) {
            f.region.replaceWithSize(5 * 1816);
            expectMessage(invalidInput("revert_preset", 5));
            QCOMPARE(f.handler->revert_preset(0), -1);
            QCOMPARE(f.handler->revert_preset(0), -1);
            f.region.replace(1);
            QCOMPARE(f.handler->revert_preset(0), 0);
        }
    }

    void regionThatComesLaterIsPickedUp() {
        HandlerFixture f;
        f.region.unlink();
        startUnusable(f, 1);
        f.region.replace(2);
        f.publishPort(f.service.port());
        f.region.record(1).power.value = -3;
        QCOMPARE(ask(f, "A?"), kAnswered);
        QCOMPARE(f.handler->channelCount(), 2U);
        QCOMPARE(f.handler->set_channel(1), 0);
        QCOMPARE(f.handler->snapshot().power.value, -3.0);
    }

    void usableRegions_data() {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<unsigned>("channels");
        addRow("one and most of another", 3631, 1U);
        addRow("four, rounded up to a page", 8192, 4U);
    }

    void usableRegions() {
        QFETCH(int, bytes);
        QFETCH(unsigned, channels);
        HandlerFixture f;
        f.region.replaceWithSize(static_cast<std::size_t>(bytes));
        f.publishPort(f.service.port());
        f.region.record(channels - 1).phase.value = 45;
        f.start();
        QCOMPARE(f.handler->channelCount(), channels);
        QCOMPARE(f.handler->set_channel(channels - 1), 0);
        QCOMPARE(f.handler->get_phase(), 45.0);
        QVERIFY(f.handler->isLinkUp());
    }

    void badPorts_data() {
        QTest::addColumn<QByteArray>("port");
        addRow("empty", QByteArray());
        addRow("one too many", QByteArray("65536"));
        addRow("no end", QByteArray(32, '9'));
    }

    void badPorts() {
        QFETCH(QByteArray, port);
        HandlerFixture f;
        f.publishPort(port.toStdString());
        expectMessage("\\[SCPI\\] no connection, the channel record holds no port number");
        f.start();
        QCOMPARE(ask(f, "A?"), kFailed);
        QCOMPARE(ask(f, "A?"), kFailed);
        QVERIFY(!f.handler->isLinkUp());
        f.publishPort(f.service.port());
        QCOMPARE(ask(f, "A?"), kAnswered);
    }

    void replacedRegion() {
        HandlerFixture f(2);
        f.region.record().frequency.value = 1e6;
        f.start();
        f.region.replace(2); // a port that is not yet there changes nothing
        QCOMPARE(ask(f, "A?"), kAnswered);
        QCOMPARE(f.service.connections, 1);
        ScriptedService other;
        other.answerWith("other\r\n");
        f.region.replace(1, std::to_string(other.port()).c_str());
        f.region.record().frequency.value = 2e6;
        f.region.record().power.value = 5;
        QCOMPARE(ask(f, "A?"), std::string("other"));
        QCOMPARE(f.service.lines.size(), 1);
        QCOMPARE(f.handler->channelCount(), 1U);
        QCOMPARE(f.handler->snapshot().power.value, 5.0);
        QCOMPARE(f.handler->get_frequency(), 2e6);
    }

    // Reading beyond the new end would be a bus error.
    void regionCutAndGrownInPlace() {
        HandlerFixture f(4);
        for (unsigned channel = 0; channel < 4; ++channel)
            f.region.record(channel).phase.value = 10.0 + channel;
        f.start();
        QCOMPARE(f.handler->set_channel(3), 0);
        QCOMPARE(f.handler->get_phase(), 13.0);
        f.region.resizeInPlace(1816);
        QCOMPARE(f.handler->get_phase(), 0.0);
        QCOMPARE(f.handler->channelCount(), 1U);
        QCOMPARE(f.handler->set_channel(0), 0);
        QCOMPARE(f.handler->get_phase(), 10.0);
        f.region.resizeInPlace(0);
        QCOMPARE(f.handler->get_phase(), 0.0);
        QVERIFY(!f.handler->isLinkUp());
        f.region.resizeInPlace(2 * 1816);
        f.region.record(0).connected = -1;
        QCOMPARE(f.handler->getDisconnectedChannels(), 2U);
        QCOMPARE(f.handler->channelCount(), 2U);
    }

    void vanishedNameKeepsTheLastRecord() {
        HandlerFixture f;
        f.region.record().frequency.value = 1e6;
        f.start();
        f.region.unlink();
        QCOMPARE(f.handler->get_frequency(), 1e6);
        QCOMPARE(f.handler->revert_preset(0), 0);
        QTRY_VERIFY(!f.handler->isLinkUp());
        QCOMPARE(ask(f, "A?"), kAnswered);
    }

    void snapshotCopies() {
        HandlerFixture f(2);
        f.start();
        EventHandler& e = *f.handler;
        f.region.record(0).frequency.value = 1;
        f.region.record(1).frequency.value = 2;
        std::memset(f.region.record(0).reserved0, 7, 4);
        e.refresh(); // as many bytes as channels
        QCOMPARE(QByteArray(e.snapshot().reserved0, 4), QByteArray("\7\7\0\0", 4));
        QCOMPARE(e.snapshot().frequency.value, 0.0);
        QCOMPARE(e.revert_preset(1), 0);
        QCOMPARE(e.snapshot().frequency.value, 0.0);
        QCOMPARE(e.revert_preset(0), 0);
        QCOMPARE(e.snapshot().frequency.value, 1.0);
        QCOMPARE(e.revert_preset(2), 0);
        QCOMPARE(e.revert_preset(-1), 0);
        QCOMPARE(e.init_channel(), 0);
        QCOMPARE(e.set_channel(1), 0);
        QCOMPARE(e.snapshot().frequency.value, 2.0);
    }

    void textsAreEnded() {
        HandlerFixture f;
        std::memset(&f.region.record(), 'x', sizeof(ChannelRecord));
        f.publishPort(f.service.port());
        f.start();
        const ChannelRecord& r = f.handler->snapshot();
        for (const char* text : {r.triggerSource,   r.triggerEdge, r.triggerAdvance,  r.referenceOscillator,
                                 r.listName,        r.patternName, r.amSource,        r.fmSource,
                                 r.pmSource,        r.pulseSource, r.frswDirection,   r.prswDirection,
                                 r.model,           r.serial,      r.firmwareVersion, r.options,
                                 r.calibrationDate, r.ipAddress,   r.networkMask,     r.gateway})
            QCOMPARE(qstrnlen(text, 64), 31U);
    }

    void regionNameFromEnvironment() {
        for (const auto& [given, used] : {std::pair("mine", "/mine"), {"/mine", "/mine"}, {"", "/veldaData"}}) {
            qputenv("VELDA_REGION", given);
            QCOMPARE(InstrumentSettings::fromEnvironment().regionName, std::string(used));
        }
        qunsetenv("VELDA_REGION");
    }

    void replies_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("reply");
        const auto row = [](const char* name, const char* command, const char* answer, const char* reply) {
            addRow(name, QByteArray(command), QByteArray(answer), QString::fromUtf8(reply));
        };
        row("first of two",                 "A?",               "1;2\n",         "1");
        row("question mark in the argument", ":NAME \"why?\"", "yes\r\n",       "yes");
        row("block of blanks is no reply",  "A?",               "#14 \r\n ",     "before");
        row("starts with a semicolon",      "A?",               ";2\n",          "before");
        row("command",                      "A 1",              "+OK\r\n",       "before");
        row("not Latin",                    "A?",               "5 \xC2\xB5s\r\n", "5 \xC2\xB5s");
        row("refused, which is not logged", "A?",               "-ERR\r\n",      "-1 before");
        // clang-format on
    }

    void replies() {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, answer);
        HandlerFixture f;
        f.service.answerWith(answer);
        f.start();
        QTEST(QString::fromStdString(ask(f, command)), "reply");
        QCOMPARE(f.service.lines, QList<QByteArray>{command});
    }

    // Read in many pieces, and not decoded on the way.
    void largeBlock() {
        QByteArray content(ScpiReply::kMaximumSize, ' ');
        for (int i = 0; i < content.size(); ++i)
            content[i] = static_cast<char>('<' + i % 60);
        HandlerFixture f;
        f.service.answerWith("#8" + QByteArray::number(content.size()) + content + '\n');
        f.start();
        QVERIFY(ask(f, "DATA?") == content.toStdString());
        f.service.answerWith("1\r\n");
        QCOMPARE(ask(f, "A?"), kAnswered);
    }

    void binaryTimeoutGrowsWithSize() {
        HandlerFixture f;
        f.timeoutMs = 50;
        f.service.answerWith({});
        f.start();
        QElapsedTimer took;
        took.start();
        expectMessage("^\\[SCPI\\] bytearray write failed: timeout$");
        QCOMPARE(f.handler->veldaScpiTransData(QByteArray(300 * 1024 - 2, 'x')), -1);
        QVERIFY2(took.elapsed() >= 349, qPrintable(QString::number(took.elapsed())));
    }

    void binaryMessage() {
        HandlerFixture f;
        f.service.answerWith("+OK\r\n");
        f.start();
        const QByteArray message = QByteArray(":LIST:DATA #15a?\0b;", 19) + "\r\n";
        std::string reply = "before";
        QCOMPARE(f.handler->send_scpi(message, reply), 0);
        QVERIFY(reply.empty());
        QCOMPARE(f.service.lines, QList<QByteArray>{message.chopped(2)});
    }

    void nestedWaits() {
        HandlerFixture f;
        f.service.answerWith({});
        f.start();
        std::array<std::string, 5> replies;
        std::function<void(std::size_t)> sendAt = [&](std::size_t depth) {
            QTimer::singleShot(0, f.handler.get(), [&, depth] {
                QCOMPARE(f.handler->isWaiting(), true);
                if (depth + 1 < replies.size()) {
                    sendAt(depth + 1);
                } else { // all wait: let the service speak, to the first now and to the others as they come
                    f.service.answer = [](const QByteArray& line) {
                        return "re " + line + "\r\n";
                    };
                    if (!f.service.lines.isEmpty())
                        f.service.send("re 0?\r\n");
                }
                replies[depth] = ask(f, qPrintable(QString("%1?").arg(depth)));
            });
        };
        sendAt(1);
        replies[0] = ask(f, "0?");
        QVERIFY(!f.handler->isWaiting());
        QCOMPARE(replies, (std::array<std::string, 5>{"re 0?", "re 1?", "re 2?", "re 3?", kFailed}));
        QCOMPARE(f.service.lines, (QList<QByteArray>{"0?", "1?", "2?", "3?"}));
        QCOMPARE(ask(f, "5?"), std::string("re 5?"));
    }

    // A service whose host does not even refuse: the connection stays in the making.
    void waitEndsWhenNoConnectionComes() {
        const int listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        QCOMPARE(bind(listener, reinterpret_cast<sockaddr*>(&address), length), 0);
        QCOMPARE(listen(listener, 0), 0);
        QCOMPARE(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length), 0);
        std::vector<int> fillers;
        for (int i = 0; i < 4; ++i) {
            fillers.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
            (void)::connect(fillers.back(), reinterpret_cast<sockaddr*>(&address), length);
        }

        HandlerFixture f;
        f.publishPort(ntohs(address.sin_port));
        f.timeoutMs = 100;
        InstrumentSettings settings = f.settings();
        settings.connectWaitMs = 20;
        f.handler = std::make_unique<EventHandler>(settings);
        f.handler->InitChannels();
        QElapsedTimer took;
        took.start();
        expectMessage("^\\[SCPI\\] write failed: timeout$");
        QCOMPARE(f.handler->setTrigger(), -1);
        QVERIFY2(took.elapsed() >= 149 && took.elapsed() < 1000, qPrintable(QString::number(took.elapsed())));

        // Once the service takes connections after all, what was given up is not carried out.
        for (int filler : fillers)
            close(filler);
        pollfd pending{listener, POLLIN, 0};
        while (poll(&pending, 1, 0) > 0)
            close(accept(listener, nullptr, nullptr));
        QTRY_VERIFY_WITH_TIMEOUT(f.handler->isLinkUp(), 20000);
        QCOMPARE(ask(f, "A?"), kFailed);
        QByteArray received(100, '\0');
        while (poll(&pending, 1, 0) > 0) {
            const int connection = accept(listener, nullptr, nullptr);
            const auto got = recv(connection, received.data(), static_cast<std::size_t>(received.size()), MSG_DONTWAIT);
            if (got > 0)
                received.truncate(static_cast<int>(got));
            close(connection);
        }
        QCOMPARE(received, QByteArray("A?\r\n"));
        close(listener);
    }

    void waitOfAQueuedCommandAllowsForThoseAhead() {
        HandlerFixture f;
        f.timeoutMs = 200;
        f.service.answer = [&](const QByteArray& line) {
            if (line == "B?")
                QTimer::singleShot(120, &f.service, [&] { f.service.send("b\r\n"); });
            return QByteArray();
        };
        f.start();
        std::string inner;
        QTimer::singleShot(0, f.handler.get(), [&] { inner = ask(f, "B?"); });
        QCOMPARE(ask(f, "A?"), kFailed);
        QCOMPARE(inner, std::string("b"));
    }

    void replacedClientEndsTheWait() {
        HandlerFixture f;
        f.service.answerWith({});
        f.start();
        ScriptedService other;
        QTimer::singleShot(0, f.handler.get(), [&] { f.publishPort(other.port()); });
        expectMessage("^\\[SCPI\\] write failed: shutdown$");
        QCOMPARE(f.handler->setTrigger(), -1);
        QCOMPARE(f.handler->setTrigger(), 0);
        QCOMPARE(other.lines, QList<QByteArray>{"*TRG "});
    }

    void restarts() {
        HandlerFixture f;
        f.start();
        for (int round = 0; round < 200; ++round) {
            f.service.stop();
            if (round % 2 == 0) {
                f.region.replace(1); // the new process makes its region before it listens
                f.publishPort(f.service.port());
            }
            if (round % 3 == 0)
                QCOMPARE(ask(f, "DOWN?"), kFailed);
            f.service.start();
            QCOMPARE(ask(f, "NEXT?"), kAnswered);
        }
    }

    void linkState() {
        HandlerFixture f;
        EventHandler handler(f.settings());
        QSignalSpy changes(&handler, &EventHandler::linkChanged);
        QVERIFY(!handler.isLinkUp());
        handler.InitChannels();
        QVERIFY(handler.isLinkUp());
        // Seen without any command.
        f.service.stop();
        QTRY_COMPARE(changes.size(), 2);
        QVERIFY(!handler.isLinkUp());
        f.service.start();
        QTRY_COMPARE(changes.size(), 3);
        f.region.unlink();
        QTRY_COMPARE(changes.size(), 4);
        f.region.replace(1);
        f.publishPort(f.service.port());
        QTRY_COMPARE(changes.size(), 5);
        for (int i = 0; i < changes.size(); ++i)
            QCOMPARE(changes[i][0].toBool(), i % 2 == 0);
    }

    void endsWhileWaiting() {
        HandlerFixture f;
        f.service.answerWith({});
        f.start();
        QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
        QElapsedTimer took;
        took.start();
        QCOMPARE(ask(f, "A?"), kFailed);
        QVERIFY(took.elapsed() < f.timeoutMs);
        f.handler.reset();
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestInstrumentLink)
#include "tst_instrument_link.moc"
