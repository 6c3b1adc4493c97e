#include "tests/common/instrument/handlerfixture.h"
#include "tests/support/testbase.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <atomic>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

QString invalidInput(const char* function, unsigned channels) {
    return QString("^%1: invalid input ldshmem, channel_no = %2$").arg(function).arg(channels);
}

/// The reply; "-1" and what was in its place before when the handler reports a failure.
std::string ask(HandlerFixture& f, const char* command) {
    std::string reply = "before";
    const int result = f.handler->veldaScpiTrans(command, std::string(), reply);
    return result == 0 ? reply : std::to_string(result) + ' ' + reply;
}

const std::string Failed = "-1 before";
const std::string Answered = "1";

} // namespace

/// The lower half of the handler: the region and its misfortunes, the blocking send operations, the state of the link.
class TestInstrumentLink : public TestBase {
    Q_OBJECT

private slots:
    void unusableRegions() {
        allowMessages("not sent, there is no client: :OUTP OFF");
        allowMessages("channel 0 is not connected"); // the new region's word
        // None, a byte short of a record, five records.
        for (const auto& [bytes, loggedChannels] : {std::pair(-1, 1U), {1815, 1U}, {5 * 1816, 5U}}) {
            HandlerFixture f;
            f.region.unlink();
            if (bytes >= 0)
                f.region.replaceWithSize(static_cast<std::size_t>(bytes));
            if (bytes >= 1816) {
                f.region.record().frequency.value = 1e6;
                f.publishPort(f.service.port());
            }
            expectMessage(invalidInput("init_channel", loggedChannels));
            expectMessage("^\\*{13}Channels initializarion failure \\*{10}$");
            f.start();
            EventHandler& e = *f.handler;
            QCOMPARE(e.channelCount(), 1U);
            QCOMPARE(e.getDisconnectedChannels(), 1U);
            QCOMPARE(e.get_frequency(), 0.0);
            QCOMPARE(e.set_rf_onoff(OnOff::off), -1); // a record of zeros is nobody's word that the output is off
            QCOMPARE(ask(f, "A?"), Failed);
            QCOMPARE(f.service.connections, 0);
            // One that comes later is picked up; the odd bytes at its end are no channel.
            f.region.replaceWithSize(3 * 1816 - 1);
            f.publishPort(f.service.port());
            f.region.record(1).phase.value = 45;
            QCOMPARE(ask(f, "A?"), Answered);
            QCOMPARE(e.channelCount(), 2U);
            QCOMPARE(e.set_channel(1), 0);
            QCOMPARE(e.snapshot().phase.value, 45.0);
        }
    }

    // The panel copies the record once a second: an hour without a module must not be 3600 critical lines.
    void lossIsReportedOnce() {
        HandlerFixture f;
        f.start();
        for (int loss = 0; loss < 2; ++loss) {
            f.region.replaceWithSize(5 * 1816);
            expectMessage("region is gone, or of no usable size");
            expectMessage(invalidInput("revert_preset", 5));
            QCOMPARE(f.handler->revert_preset(0), -1);
            QCOMPARE(f.handler->revert_preset(0), -1);
            f.region.replace(1);
            QCOMPARE(f.handler->revert_preset(0), 0);
        }
    }

    void badPorts() {
        for (const char* port : {"", "65536", "99999999999999999999999999999999"}) { // the last one fills its field
            HandlerFixture f;
            f.publishPort(port);
            expectMessage("\\[SCPI\\] no connection, the channel record holds no port number");
            expectMessage("^\\[SCPI\\] not sent, there is no client: A\\?$"); // once
            f.start();
            QCOMPARE(ask(f, "A?"), Failed);
            QCOMPARE(ask(f, "B?"), Failed);
            QVERIFY(!f.handler->isLinkUp());
            f.publishPort(f.service.port());
            QCOMPARE(ask(f, "A?"), Answered);
        }
    }

    void replacedRegion() {
        HandlerFixture f(2);
        f.region.record().frequency.value = 1e6;
        f.start();
        expectMessage("region was made anew");
        expectMessage("region was made anew");
        f.region.replace(2); // a port that is not yet there changes nothing
        QCOMPARE(ask(f, "A?"), Answered);
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
        expectMessage("region was made anew or resized");
        expectMessage("region is gone, or of no usable size");
        expectMessage("channel 0 is not connected any more");
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
        QCOMPARE(f.handler->getDisconnectedChannels(), 3U);
    }

    // Cut and grown again at any moment, also between the look at its size and the reading.
    void regionCutWhileItIsRead() {
        allowMessages("\\[SCPI\\]");
        allowMessages("invalid input ldshmem");
        HandlerFixture f(4);
        f.start();
        std::atomic<bool> ends{false};
        std::thread service([&] {
            for (int cut = 0; !ends; ++cut)
                f.region.resizeInPlace(cut % 2 ? 4 * 1816 : (cut / 2 % 4) * 1816);
        });
        QElapsedTimer time;
        time.start();
        while (time.elapsed() < 1500) {
            f.handler->get_phase();
            f.handler->revert_preset(3);
            f.handler->getDisconnectedChannels();
            f.handler->refresh();
        }
        ends = true;
        service.join();
    }

    /// A module that falls off its running service.
    void moduleDisconnects() {
        HandlerFixture f;
        f.start();
        QVERIFY(f.handler->isModuleConnected());
        QSignalSpy changes(f.handler.get(), &InstrumentLink::moduleConnectedChanged);
        for (int round = 0; round < 2; ++round) {
            expectMessage("channel 0 is not connected any more");
            for (const int connected : {0, 0, 1}) {
                f.region.record().connected = connected;
                QCOMPARE(f.handler->revert_preset(0), 0);
                QCOMPARE(f.handler->isModuleConnected(), connected != 0);
            }
        }
        QCOMPARE(changes.count(), 4);
    }

    /// The service that has come back knows nothing of the channel.
    void currentChannelIsSelectedAgain() {
        HandlerFixture f(2);
        f.start();
        f.service.dropConnection();
        QCOMPARE(ask(f, "A?"), Answered);
        QCOMPARE(f.handler->set_channel(1), 0);
        f.service.lines.clear();
        f.service.dropConnection();
        QCOMPARE(ask(f, "A?"), Answered);
        QCOMPARE(f.service.lines, (QList<QByteArray>{":INST:SEL 1", "A?"}));
    }

    void binaryTimeoutGrowsWithSize() {
        HandlerFixture f;
        f.timeoutMs = 50;
        f.service.answerWith({});
        f.start();
        QElapsedTimer took;
        took.start();
        expectMessage("^\\[SCPI\\] bytearray write failed: timeout to");
        expectMessage("does not answer");
        QCOMPARE(f.handler->veldaScpiTransData(QByteArray(300 * 1024 - 2, 'x')), -1);
        QVERIFY2(took.elapsed() >= 349, qPrintable(QString::number(took.elapsed())));
    }

    // A service whose host does not even refuse: the connection stays in the making.
    void waitEndsWhenNoConnectionComes() {
        const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        QCOMPARE(bind(listener, reinterpret_cast<sockaddr*>(&address), length), 0);
        QCOMPARE(listen(listener, 0), 0);
        QCOMPARE(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length), 0);
        QTcpSocket fillers[4];
        for (QTcpSocket& filler : fillers)
            filler.connectToHost(QHostAddress::LocalHost, ntohs(address.sin_port));

        HandlerFixture f;
        f.publishPort(ntohs(address.sin_port));
        f.timeoutMs = 100;
        InstrumentSettings settings = f.settings();
        settings.connectWaitMs = 20;
        f.handler = std::make_unique<EventHandler>(settings);
        f.handler->InitChannels();
        QElapsedTimer took;
        took.start();
        expectMessage("^\\[SCPI\\] write failed: timeout to \\*TRG $");
        expectMessage("does not answer");
        QCOMPARE(f.handler->setTrigger(), -1);
        QVERIFY2(took.elapsed() >= 149 && took.elapsed() < 1000, qPrintable(QString::number(took.elapsed())));

        // Once the service takes connections after all, what was given up is not carried out.
        for (QTcpSocket& filler : fillers)
            filler.abort();
        for (int one = accept(listener, nullptr, nullptr); one >= 0; one = accept(listener, nullptr, nullptr))
            close(one);
        QTRY_VERIFY_WITH_TIMEOUT(f.handler->isLinkUp(), 20000);
        QCOMPARE(ask(f, "A?"), Failed);
        QByteArray received(100, '\0');
        for (int one = accept(listener, nullptr, nullptr); one >= 0; one = accept(listener, nullptr, nullptr)) {
            const auto got = recv(one, received.data(), 100, MSG_DONTWAIT);
            if (got > 0)
                received.truncate(static_cast<int>(got));
            close(one);
        }
        QCOMPARE(received, QByteArray("A?\r\n"));
        close(listener);
    }

    void replacedClientEndsTheWait() {
        HandlerFixture f;
        f.service.answerWith({});
        f.start();
        ScriptedService other;
        QTimer::singleShot(0, f.handler.get(), [&] { f.publishPort(other.port()); });
        expectMessage("^\\[SCPI\\] write failed: shutdown to \\*TRG $");
        QCOMPARE(f.handler->setTrigger(), -1);
        QCOMPARE(f.handler->setTrigger(), 0);
        QCOMPARE(other.lines, QList<QByteArray>{"*TRG "});
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestInstrumentLink)
#include "tst_instrument_link.moc"
