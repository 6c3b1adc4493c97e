#include "portable/screens/channels/channelrow.h"
#include "portable/widgets/styles/styles.h"
#include "portable/window/channelkey.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTimer>

using namespace Kavor::HandheldGui;

/// A region with several channels: which one is shown, what reaches which, and all of them off at once.
class ChannelsTest : public PanelTest {
    Q_OBJECT

private:
    void startWith(unsigned channels, unsigned disconnected = 0, int timeoutMs = 2000) {
        PanelFixture::Setup setup;
        setup.channels = channels;
        setup.disconnected = disconnected;
        setup.commandTimeoutMs = timeoutMs;
        start(setup);
    }

    bool showChannel(int number) {
        return (panel().window().currentState() == STATE_CHANNELS || panel().press("funcChannel")) &&
               panel().press(QStringLiteral("channel%1").arg(number)) && panel().settle();
    }

    QString key() { return panel().widget<ChannelKey>("funcChannel")->text(); }

private slots:
    void oneChannelShowsNoneOfThis() {
        QVERIFY(!panel().widget<ChannelKey>("funcChannel")->isVisible());
        QVERIFY(panel().widget<QLabel>("temperatureIcon")->isVisible());
    }

    /// Nine touches, and every command of every screen goes to the channel that is shown.
    void commandsGoToTheChannelShown() {
        startWith(4);
        QVERIFY(showChannel(3));                                  // 2 touches
        QVERIFY(panel().press("funcCw"));                         // 3
        QVERIFY(panel().enter("cwFrequency", "2.4", "keyUnit0")); // 8
        QVERIFY(panel().press("rfOn") && panel().settle());       // 9
        QCOMPARE(panel().sent(), (QStringList{":INST:SEL 2", ":FREQ 2400000000.000", ":OUTP ON"}));
        QCOMPARE(panel().module().record(2).frequency.value, 2.4e9);
        QCOMPARE(panel().module().record(2).rfOutput, 1U);
        QCOMPARE(panel().module().record(0).rfOutput, 0U);
        QCOMPARE(panel().module().data().selected, 2U);
        QCOMPARE(key(), QString("CH 3"));

        // Another walk over all screens: only shown, nothing sent.
        for (const char* screen : {"funcSweep", "funcList", "funcRunMode", "funcSystem", "funcAbout", "funcCw"})
            QVERIFY(panel().press(screen) && panel().settle());
        QCOMPARE(panel().sent(), QStringList());
        QVERIFY(showChannel(1));
        QVERIFY(panel().press("funcCw") && panel().settle());
        QCOMPARE(panel().disagreements(), QStringList());
        QVERIFY(panel().hasStyle("rfOff", PRESSED_MOD_BTN_STYLE)); // the other one radiates, this one does not
        QCOMPARE(panel().sent(), QStringList{":INST:SEL 0"});
    }

    void overviewFollowsTheRecords() {
        startWith(4, 0b0100);
        panel().module().modify(1, [](ChannelRecord& record) {
            record.frequency.value = 2.4e9;
            record.power.value = -30;
            record.rfOutput = 1;
            record.amState = 1;
        });
        QVERIFY(panel().press("funcChannel"));
        const auto facts = [this](int number) {
            return panel().widget<ChannelRow>(QStringLiteral("channel%1").arg(number))->facts();
        };
        QTRY_COMPARE(facts(2).frequency, QString("2.4 GHz"));
        QCOMPARE(facts(2).power, QString("-30.00 dBm"));
        QCOMPARE(facts(2).mode, QString("AM"));
        QVERIFY(facts(2).radiates && facts(2).connected && !facts(3).connected && !facts(1).radiates);
        QCOMPARE(panel().text("channelsCount"), QString("1 of 4 outputs on"));
        // A second press on the key goes back to where it was opened from.
        QVERIFY(panel().press("funcChannel"));
        QCOMPARE(panel().window().currentState(), STATE_CW);
    }

    /// One that refuses keeps none of the others on, and is named.
    void allOff_data() {
        QTest::addColumn<int>("refusals");
        QTest::addColumn<QString>("told");
        addRow("all go off", 0, QString());
        addRow("the first refuses", 1, QString("RF is not off: channel 1"));
    }
    void allOff() {
        QFETCH(int, refusals);
        QFETCH(QString, told);
        startWith(4, 0b1000);
        if (refusals > 0)
            allowMessages(":OUTP OFF");
        for (const unsigned channel : {0U, 1U, 2U})
            panel().module().modify(channel, [](ChannelRecord& record) {
                record.rfOutput = 1;
                record.amState = 1;
            });
        if (refusals > 0)
            panel().module().addFault({Sim::Fault::Refuse, ":OUTP OFF", refusals, 0, QByteArray()});
        QVERIFY(showChannel(3) && panel().press("channelsAllOff") && panel().settle());
        QCOMPARE(panel().toast(), told);
        for (const unsigned channel : {0U, 1U, 2U}) {
            QCOMPARE(panel().module().record(channel).rfOutput, channel == 0 ? unsigned(refusals) : 0U);
            QCOMPARE(panel().module().record(channel).amState, 0U);
        }
        QCOMPARE(key(), QString("CH 3")); // the one that was shown
        QCOMPARE(panel().module().data().selected, 2U);
    }

    /// Refused or silent, the selection stays where it was, and what follows goes there.
    void selectionThatFails_data() {
        QTest::addColumn<int>("fault");
        addRow("refused", int(Sim::Fault::Refuse));
        addRow("silent", int(Sim::Fault::Silent));
        addRow("answer lost", int(Sim::Fault::Lost));
    }
    void selectionThatFails() {
        QFETCH(int, fault);
        startWith(3, 0, 300);
        allowMessages("\\[SCPI\\]");
        fail(static_cast<Sim::Fault::Kind>(fault), ":INST:SEL");
        QVERIFY(panel().press("funcChannel"));
        QTimer::singleShot(0, [this] { panel().press("rfOn"); }); // meant for the channel that is not reached
        QVERIFY(showChannel(2));
        QCOMPARE(key(), QString("CH 1"));
        QCOMPARE(panel().module().record(0).rfOutput, 0U);
        panel().module().clearFaults();
        QVERIFY(panel().press("funcCw"));
        QTRY_VERIFY(panel().handler().isLinkUp());
        QVERIFY(panel().enter("cwFrequency", "3", "keyUnit0") && panel().settle());
        QCOMPARE(panel().module().record(0).frequency.value, 3e9);
        QVERIFY(panel().module().record(1).frequency.value != 3e9);
    }

    /// An Off in the wait for a selection stops what was on show, and what was asked for.
    void offWhileSelecting() {
        startWith(3);
        for (const unsigned channel : {0U, 1U})
            panel().module().modify(channel, [](ChannelRecord& record) { record.rfOutput = 1; });
        QVERIFY(panel().press("funcChannel"));
        QTimer::singleShot(0, [this] { panel().press("rfOff"); });
        QVERIFY(showChannel(2));
        QCOMPARE(panel().module().record(0).rfOutput + panel().module().record(1).rfOutput, 0U);
        QCOMPARE(key(), QString("CH 2"));
    }

    /// A service that has come back and refuses the channel is told nothing that was meant for it.
    void greetingRefused() {
        startWith(3);
        allowMessages("\\[SCPI\\]");
        QVERIFY(showChannel(3));
        panel().module().stop();
        QTRY_VERIFY(!panel().handler().isLinkUp());
        fail(Sim::Fault::Refuse, ":INST:SEL");
        QVERIFY(panel().module().start());
        QVERIFY(panel().press("rfOn") && panel().settle());
        QCOMPARE(panel().module().record(0).rfOutput + panel().module().record(2).rfOutput, 0U);
        panel().module().clearFaults();
        QTRY_COMPARE(panel().module().data().selected, 2U);
        QTRY_VERIFY(panel().press("rfOn") && panel().settle() && panel().module().record(2).rfOutput == 1);
    }

    /// The choice is the connection's: it is made again after a restart, and taken back where it has no record.
    void choiceLivesOn() {
        startWith(4);
        allowMessages("\\[SCPI\\]");
        QVERIFY(showChannel(3));
        panel().module().stop();
        QTRY_VERIFY(!panel().handler().isLinkUp());
        QVERIFY(panel().module().start());
        QTRY_VERIFY(panel().handler().isLinkUp());
        QTRY_COMPARE(panel().module().data().selected, 2U);
        QCOMPARE(key(), QString("CH 3"));
        QVERIFY(panel().module().replaceRegion(2));
        QTRY_COMPARE(key(), QString("CH 1"));
        QTRY_VERIFY(panel().handler().isLinkUp());
        QVERIFY(panel().press("funcCw") && panel().enter("cwFrequency", "3", "keyUnit0") && panel().settle());
        QCOMPARE(panel().module().record(0).frequency.value, 3e9);
        QVERIFY(panel().module().replaceRegion(1));
        QTRY_VERIFY(!panel().widget<ChannelKey>("funcChannel")->isVisible());
    }

    /// Random steps and changes of channel beside a model: record, screen and wire agree.
    void steps() {
        constexpr unsigned Seed = 20261122;
        QRandomGenerator random(Seed);
        startWith(4);
        double held[4];
        for (unsigned channel = 0; channel < 4; ++channel)
            held[channel] = panel().module().record(channel).frequency.value;
        unsigned current = 0;
        for (int i = 0; i < 500; ++i) {
            if (random.bounded(8) == 0) {
                current = random.bounded(4U);
                QVERIFY(showChannel(int(current) + 1) && panel().press("funcCw"));
                QTest::qWait(0);
            } else {
                const bool up = random.bounded(2) == 0;
                QVERIFY(panel().press(up ? "frequencyStepUp" : "frequencyStepDown") && panel().settle());
                held[current] += up ? 1e6 : -1e6;
            }
            QCOMPARE(panel().module().record(current).frequency.value, held[current]);
        }
        for (unsigned channel = 0; channel < 4; ++channel)
            QCOMPARE(panel().module().record(channel).frequency.value, held[channel]);
        QCOMPARE(panel().disagreements(), QStringList());
    }
};

VELDA_TEST_MAIN(QApplication, ChannelsTest)
#include "tst_channels.moc"
