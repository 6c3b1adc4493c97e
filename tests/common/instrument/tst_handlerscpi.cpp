#include "tests/common/instrument/handlerfixture.h"
#include "tests/support/testbase.h"

#include <functional>

using Call = std::function<int(EventHandler&)>;
using Change = std::function<void(ChannelRecord&)>;
Q_DECLARE_METATYPE(Call)
Q_DECLARE_METATYPE(Change)

namespace {

void setText(char (&field)[32], const char* text) {
    std::memset(field, 0, sizeof field);
    std::memcpy(field, text, std::strlen(text));
}

} // namespace

// clang-format off
#define CALL(call)   Call([](EventHandler& e) { return e.call; })
#define HELD(change) Change([](ChannelRecord& r) { change; })
#define SETTER(line, call, taken) QTest::newRow(line) << CALL(call) << HELD(taken)
// clang-format on

/// What the handler's operations put on the wire, and how they judge what the module then holds.
class TestHandlerScpi : public TestBase {
    Q_OBJECT

private slots:
    void setters_data() {
        // clang-format off
        addColumns<Call, Change>("call", "taken");
        SETTER(":TRIG:INP:IMP 10K", set_trig_impedance(10000), r.triggerImpedance = 10000);
        SETTER(":FRSW:STEP 4294967295", set_frsw_steps(4294967295U), r.frswSteps.value = 4294967295U);
        SETTER(":PRSW:STOP 0.50", set_prsw_stop(0.5), r.prswStop.value = 0.5);
        SETTER(":PRSW:STAR 0.00", set_prsw_start(-0.001), r.prswStart.value = -0.001);

        SETTER(":PULS:STAT ON", setStatePulseM(OnOff::on), r.pulseState = 1);
        SETTER(":PRSW:STAT ON", setStatePRSW(OnOff::on), r.prswState = 1);

        SETTER(":PM:SOUR EXTernal", setModSrcPM(ModSrcMode::external), setText(r.pmSource, "EXTernal"));
        SETTER(":PULS:SOUR EXTernal", setModSrcPulseM(ModSrcMode::external), setText(r.pulseSource, "EXTernal"));
        SETTER(":PRSW:DIR NORMAL", setDirPRSW(SweepDirection::normal), setText(r.prswDirection, "NORMAL"));
        // clang-format on
    }

    void setters() {
        QFETCH(Call, call);
        QFETCH(Change, taken);
        HandlerFixture f;
        f.fillWithNonsense();
        f.start();
        QCOMPARE(call(*f.handler), -1); // acknowledged, but the module did not take it
        QCOMPARE(f.service.lines, QList<QByteArray>{QTest::currentDataTag()});
        f.service.answer = f.taking(taken);
        QCOMPARE(call(*f.handler), 0);
        f.fillWithNonsense();
        f.service.answerWith("-ERR 3, busy\r\n");
        expectMessage("^\\[SCPI\\] write failed: -ERR 3, busy to ");
        QCOMPARE(call(*f.handler), -1);
    }

    void readBackStrictness_data() {
        // clang-format off
        addColumns<int, Call, Change>("result", "call", "held");
        QTest::newRow("frequency within 1 mHz")          <<  0 << CALL(set_frequency(1000.0))  << HELD(r.frequency.value = 1000.0009);
        QTest::newRow("frequency off by 1 mHz")          << -1 << CALL(set_frequency(1000.0))  << HELD(r.frequency.value = 1000.0011);
        QTest::newRow("power off by 0.02 dB")            << -1 << CALL(set_power(10.0))        << HELD(r.power.value = 10.02);
        QTest::newRow("everything else is exact")        << -1 << CALL(set_am_freq(1000.0))    << HELD(r.amRate.value = 1000.0000000001);
        QTest::newRow("a time as its text says")         <<  0 << CALL(set_trig_delay(1500.04)) << HELD(r.triggerDelay.value = 1.5e-6);
        QTest::newRow("a time by multiplication")        << -1 << CALL(set_trig_delay(1500))   << HELD(r.triggerDelay.value = 1500 * 1.0000000001e-9);
        QTest::newRow("high impedance by another name")  <<  0 << CALL(setTRGimp(true))        << HELD(r.triggerImpedance = 100000);
        QTest::newRow("a count is whole")                << -1 << CALL(set_trig_count(2.4))    << HELD(r.triggerCount.value = 2);
        // clang-format on
    }

    void readBackStrictness() {
        QFETCH(Call, call);
        QFETCH(Change, held);
        HandlerFixture f;
        f.region.record().triggerImpedance = 50;
        f.start();
        f.service.answer = f.taking(held);
        QTEST(call(*f.handler), "result");
    }

    // The entry path's promise: what it rounds to is what the module, told so in text, will hold.
    void roundedValuesAreAlwaysTaken() {
        HandlerFixture f;
        f.start();
        EventHandler& e = *f.handler;
        for (int i = 0; i < DeviceValueCount; ++i) {
            const auto id = static_cast<DeviceValueId>(i);
            const DeviceValue& item = deviceValue(id);
            for (double entered : {0.0, 0.1, 1.001, 2.5, 3.3333333, 99.95, 1234.56789, 1e6 / 3, 123456789.123456}) {
                f.service.answer = [&](const QByteArray& line) {
                    // The module reads the number by itself, as any C program would.
                    const double number = std::strtod(line.mid(line.indexOf(' ') + 1).constData(), nullptr);
                    char* field = reinterpret_cast<char*>(&f.region.record()) + item.valueOffset;
                    const auto count = static_cast<std::uint32_t>(number);
                    if (item.kind == DeviceValue::Kind::Count)
                        std::memcpy(field, &count, sizeof count);
                    else
                        std::memcpy(field, &number, sizeof number);
                    return QByteArray("+OK\r\n");
                };
                const double rounded = e.roundedToWire(id, entered);
                QVERIFY2(e.setDeviceValue(id, rounded) == 0, f.service.lines.last().constData());
                QCOMPARE(e.cachedValue(id), rounded);
            }
        }
    }

    // Two getters read another field than their name says, and stay so: what reads them was written for it.
    void deliberatePairs() {
        HandlerFixture f;
        f.region.record().amRate.value = 400;
        f.region.record().fmDeviation.value = 7e3;
        f.region.record().prswStart.value = -10;
        f.region.record().prswStop.value = 5;
        f.start();
        QCOMPARE(f.handler->get_fm_dev(), 400.0);
        QCOMPARE(f.handler->get_prsw_stop(), -10.0);
        QCOMPARE(f.handler->cachedValue(DeviceValueId::FmDeviation), 7e3);
    }

    void channels() {
        HandlerFixture f(2);
        f.region.record(1).frequency.value = 5e6;
        f.start();
        EventHandler& e = *f.handler;
        QCOMPARE(e.channelCount(), 2U);
        QCOMPARE(e.set_channel(1), 0);
        QCOMPARE(e.snapshot().frequency.value, 5e6);
        QCOMPARE(e.set_channel(5), -1);
        QCOMPARE(e.currentChannel(), 1U);
        // One more than a region can hold is let through and is a channel of zeros, which cannot take anything.
        QCOMPARE(e.set_channel(4), 0);
        QCOMPARE(e.get_frequency(), 0.0);
        QCOMPARE(e.set_frequency(0.0), -1);
        QCOMPARE(e.isModulationsOn(), 0U);
        QCOMPARE(e.set_channel(0), 0);
        QCOMPARE(f.service.lines, (QList<QByteArray>{":INST:SEL 1", ":INST:SEL 4", ":FREQ 0.000", ":INST:SEL 0"}));
    }

    void architecture() {
        HandlerFixture f;
        f.start();
        f.service.answerWith("A,1,2;more\r\n");
        QCOMPARE(f.handler->getModelInternalInf(), std::string("A,1,2"));
        QCOMPARE(f.service.lines, QList<QByteArray>{":INT:INF:DEV:ARCH? "});
        f.service.answerWith("-ERR\r\n");
        expectMessage("query refused: -ERR to ");
        QCOMPARE(f.handler->getModelInternalInf(), std::string("NMX4000A,20000,1,usb,2001,168c,benchtop"));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestHandlerScpi)
#include "tst_handlerscpi.moc"
