#include "portable/fields/stepkeys.h"
#include "portable/widgets/freshness.h"
#include "portable/widgets/styles/tokens.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTemporaryDir>

using namespace Kavor::HandheldGui;

/// The keys beside frequency and power, tapped and held, and what the readouts say of a module out of reach.
class StepKeysTest : public PanelTest {
    Q_OBJECT

    QStringList m_sent;
    std::unique_ptr<QTemporaryDir> m_home; // outlives a panel, as the device's does

    int sentSoFar() {
        m_sent += panel().sent();
        return m_sent.size();
    }
    QWidget* key(const char* name) { return panel().widget<QWidget>(name); }
    void hold(QWidget* key) { QTest::mousePress(key, Qt::LeftButton, Qt::NoModifier, key->rect().center()); }
    bool has(const QWidget* field, QRgb colour) {
        const QImage image =
            panel().window().grab(QRect(field->mapTo(&panel().window(), QPoint()), field->size())).toImage();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) == colour)
                    return true;
            }
        }
        return false;
    }

protected:
    void setUp() override {
        m_sent.clear();
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("VELDA_HOME", QFile::encodeName(m_home->path()));
        start();
    }
    void tearDown() override {
        PanelTest::tearDown();
        qunsetenv("VELDA_HOME");
    }

private slots:
    void taps_data() {
        addColumns<QString, QString, QString>("key", "sent", "toast");
        const QString none;
        addRow("up", "frequencyStepUp", ":FREQ 5999501000.000", none);
        addRow("down", "frequencyStepDown", ":FREQ 5997501000.000", none);
        addRow("power", "powerStepUp", ":POW 19.8765", none);
        addRow("power down", "powerStepDown", ":POW 17.8765", none);
    }
    void taps() {
        QFETCH(QString, key);
        QFETCH(QString, sent);
        // Another client's values, with more digits than the fields show.
        panel().module().modify(0, [](ChannelRecord& r) { r.frequency.value = 5.998501e9, r.power.value = 18.8765; });
        QTRY_COMPARE(panel().text("cwPower"), QString("18.88"));
        QCOMPARE(sentAfter(key), QStringList{sent});
        QTEST(panel().toast(), "toast");
    }

    /// Held, a key goes on by itself until something ends it, with one command on its way at a time.
    void held_data() {
        addColumns<int, int, QString>("fault", "most", "toast");
        addRow("to the limit", -1, 3, "Valid CW frequency  range: 9 KHz to 6 GHz");
        addRow("a module that refuses", int(Sim::Fault::Refuse), 1, "command send failure");
        addRow("a module that keeps its value", int(Sim::Fault::Keep), 1, "command send failure");
    }
    void held() {
        QFETCH(int, fault);
        QFETCH(int, most);
        allowMessages("\\[SCPI\\]");
        panel().module().modify(0, [](ChannelRecord& r) { r.frequency.value = 5.9965e9; });
        QTRY_COMPARE(panel().text("cwFrequency"), QString("5.996500000000"));
        if (fault >= 0)
            fail(static_cast<Sim::Fault::Kind>(fault), ":FREQ");
        QWidget* up = key("frequencyStepUp");
        hold(up);
        QTRY_VERIFY(!panel().toast().isEmpty());
        QTEST(panel().toast(), "toast");
        QTEST(sentSoFar(), "most");
        QVERIFY(!QTest::qWaitFor([this, most] { return sentSoFar() > most; }, 4 * StepKeys::RepeatEveryMs));
        QTest::mouseRelease(up, Qt::LeftButton, Qt::NoModifier, up->rect().center());
        QVERIFY(panel().settle());
        QTEST(sentSoFar(), "most"); // letting go is no step
    }

    void heldOnASlowModule() {
        constexpr int AnswerMs = 300;
        fail(Sim::Fault::Late, ":FREQ", AnswerMs);
        QWidget* down = key("frequencyStepDown");
        QElapsedTimer clock;
        clock.start();
        hold(down);
        QTRY_VERIFY(sentSoFar() >= 3);
        QVERIFY(clock.elapsed() >= StepKeys::RepeatAfterMs + 2 * AnswerMs); // each after the answer to the one before
        QMouseEvent slide(QEvent::MouseMove, QPoint(-40, 20), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(down, &slide);
        QTRY_VERIFY(panel().settle());
        const int sent = sentSoFar();
        QVERIFY(sent <= 4);
        QVERIFY(!QTest::qWaitFor([this, sent] { return sentSoFar() > sent; }, 4 * StepKeys::RepeatEveryMs));
        QTest::mouseRelease(down, Qt::LeftButton, Qt::NoModifier, QPoint(-40, 20));
        QVERIFY(panel().settle());
        QCOMPARE(sentSoFar(), sent);
        QCOMPARE(panel().record().frequency.value, 1e9 - sent * 1e6);
    }

    void sizeIsKept() {
        QVERIFY(panel().enter("frequencyStepSize", "2.5", "keyUnit2"));
        QVERIFY(panel().enter("powerStepSize", "60")); // no more than 50 dB
        QCOMPARE(panel().toast(), QString("Power step: range 0.01 dB to 50 dB"));
        start();
        QCOMPARE(panel().text("frequencyStepSize"), QString("2.5 KHz"));
        QCOMPARE(panel().text("powerStepSize"), QString("1 dB"));
        QCOMPARE(sentAfter("frequencyStepUp"), QStringList{":FREQ 1000002500.000"});
    }

    /// What the panel cannot know any more is grey, what it never knew is dashes.
    void readoutsOfAModuleOutOfReach() {
        allowMessages("\\[SCPI\\]|initializarion failure|ldshmem|there is no client");
        QWidget* power = key("cwPower");
        QWidget* source = key("sourceInternal");
        QVERIFY(has(power, Style::Text) && !has(power, Style::Stale) && has(source, Style::Active));
        panel().module().stop();
        QTRY_VERIFY(Freshness::panel().isStale());
        QTRY_VERIFY(has(power, Style::Stale) && !has(power, Style::Text));
        QVERIFY(!has(source, Style::Active));
        QVERIFY(panel().module().start());
        QTRY_VERIFY(has(power, Style::Text) && has(source, Style::Active));
        PanelFixture::Setup setup;
        setup.startModule = false;
        start(setup);
        for (const char* name : {"sysModel", "sysTemperature"})
            QCOMPARE(panel().text(name), QString("---"));
        QCOMPARE(panel().text("sysBatteryProtection"), QString("Battery protection ---"));
        power = key("cwPower");
        const QImage dashes = power->grab().toImage();
        panel().widget<QLineEdit>("cwPower")->setText("12.00");
        QCOMPARE(power->grab().toImage(), dashes);
    }
};

VELDA_TEST_MAIN(QApplication, StepKeysTest)
#include "tst_stepkeys.moc"
