#include <functional>

#include "tests/common/instrument/handlerfixture.h"
#include "tests/support/testbase.h"

using Call = std::function<int(EventHandler&)>;
using Change = std::function<void(ChannelRecord&)>;
using Reading = std::function<QString(EventHandler&)>;
Q_DECLARE_METATYPE(Call)
Q_DECLARE_METATYPE(Change)
Q_DECLARE_METATYPE(Reading)

/// What the handler's operations put on the wire, and how they judge what the module then holds.
class TestHandlerScpi : public TestBase {
    Q_OBJECT

private slots:
    void settersWithReadBack_data();
    void settersWithReadBack();
    void settersWithoutReadBack_data();
    void settersWithoutReadBack();
    void readBackStrictness_data();
    void readBackStrictness();
    void roundedValuesAreAlwaysTaken();
    void rounding_data();
    void rounding();
    void getters_data();
    void getters();
    void aGetterRefreshesItsFieldAlone();
    void cachedValuesAndLimits();
    void wordChoices_data();
    void wordChoices();
    void cachedWordsAreSent();
    void modulationEnable_data();
    void modulationEnable();
    void runningModulations();
    void channels();
    void dhcpToggles();
    void architecture();
    void numbersThatAreNoneAreNotSent();
};

namespace {

void setText(char (&field)[32], const char* text) {
    std::memset(field, 0, sizeof field);
    std::memcpy(field, text, std::strlen(text));
}

} // namespace

void TestHandlerScpi::settersWithReadBack_data() {
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<Change>("taken");
    using E = EventHandler;
    using R = ChannelRecord;
    const auto row = [](const char* line, Call call, Change taken) {
        QTest::newRow(line) << call << QByteArray(line) << taken;
    };
    row(
        ":FREQ 1000000000.000", [](E& e) { return e.set_frequency(1e9); }, [](R& r) { r.frequency.value = 1e9; });
    row(
        ":POW -10.2500", [](E& e) { return e.set_power(-10.25); }, [](R& r) { r.power.value = -10.25; });
    row(
        ":PHAS 90.000", [](E& e) { return e.set_phase(90); }, [](R& r) { r.phase.value = 90; });
    row(
        ":TRIG:COUN 12", [](E& e) { return e.set_trig_count(12); }, [](R& r) { r.triggerCount.value = 12; });
    row(
        ":TRIG:TIM:TIME 0.0010000000", [](E& e) { return e.set_trig_timer_time(1e6); },
        [](R& r) { r.triggerTimer.value = 1e-3; });
    row(
        ":TRIG:DEL 0.0000015000", [](E& e) { return e.set_trig_delay(1500); },
        [](R& r) { r.triggerDelay.value = 1.5e-6; });
    row(
        ":TRIG:INP:IMP 50", [](E& e) { return e.set_trig_impedance(50); }, [](R& r) { r.triggerImpedance = 50; });
    row(
        ":TRIG:INP:IMP 10K", [](E& e) { return e.set_trig_impedance(10000); },
        [](R& r) { r.triggerImpedance = 10000; });
    row(
        ":AM:INT:FREQ 1000.000", [](E& e) { return e.set_am_freq(1000); }, [](R& r) { r.amRate.value = 1000; });
    row(
        ":AM:DEPT 30.0", [](E& e) { return e.set_am_depth(30); }, [](R& r) { r.amDepth.value = 30; });
    row(
        ":FM:INT:FREQ 2000", [](E& e) { return e.set_fm_freq(2000); }, [](R& r) { r.fmRate.value = 2000; });
    row(
        ":FM:DEV 75000.500", [](E& e) { return e.set_fm_dev(75000.5); }, [](R& r) { r.fmDeviation.value = 75000.5; });
    row(
        ":PM:INT:FREQ 400.250000", [](E& e) { return e.set_pm_freq(400.25); }, [](R& r) { r.pmRate.value = 400.25; });
    row(
        ":PM:DEV 1.25", [](E& e) { return e.set_pm_dev(1.25); }, [](R& r) { r.pmDeviation.value = 1.25; });
    row(
        ":PULS:FREQ 1000.000000000", [](E& e) { return e.set_pulsem_freq(1000); },
        [](R& r) { r.pulseFrequency.value = 1000; });
    row(
        ":PULS:WIDT 0.000000100", [](E& e) { return e.set_pulsem_width(100); },
        [](R& r) { r.pulseWidth.value = 1e-7; });
    row(
        ":FRSW:STAR 1000000.001", [](E& e) { return e.set_frsw_start(1000000.001); },
        [](R& r) { r.frswStart.value = 1000000.001; });
    row(
        ":FRSW:STOP 2000000", [](E& e) { return e.set_frsw_stop(2e6); }, [](R& r) { r.frswStop.value = 2e6; });
    row(
        ":FRSW:STEP 4294967295", [](E& e) { return e.set_frsw_steps(4294967295U); },
        [](R& r) { r.frswSteps.value = 4294967295U; });
    row(
        ":FRSW:TIME 0.000500000", [](E& e) { return e.set_frsw_time(500000); }, [](R& r) { r.frswDwell.value = 5e-4; });
    row(
        ":PRSW:STAR -20.00", [](E& e) { return e.set_prsw_start(-20); }, [](R& r) { r.prswStart.value = -20; });
    row(
        ":PRSW:STOP 0.50", [](E& e) { return e.set_prsw_stop(0.5); }, [](R& r) { r.prswStop.value = 0.5; });
    row(
        ":PRSW:STEP 11", [](E& e) { return e.set_prsw_steps(11); }, [](R& r) { r.prswSteps.value = 11; });
    row(
        ":PRSW:TIME 0.002000000", [](E& e) { return e.set_prsw_time(2e6); }, [](R& r) { r.prswDwell.value = 2e-3; });

    row(
        ":OUTP ON", [](E& e) { return e.set_rf_onoff(on); }, [](R& r) { r.rfOutput = 1; });
    row(
        ":OUTP OFF", [](E& e) { return e.set_rf_onoff(off); }, [](R& r) { r.rfOutput = 0; });
    row(
        ":INIT:CONT ON", [](E& e) { return e.setRunMode(true); }, [](R& r) { r.runMode = 1; });
    row(
        ":INIT:CONT OFF", [](E& e) { return e.setRunMode(false); }, [](R& r) { r.runMode = 0; });
    row(
        ":SYST:COMM:LAN:DHCP ON", [](E& e) { return e.setDhcpMode(on); }, [](R& r) { r.dhcp = 1; });
    row(
        ":AM:STAT ON", [](E& e) { return e.setStateAM(on); }, [](R& r) { r.amState = 1; });
    row(
        ":FM:STAT ON", [](E& e) { return e.setStateFM(on); }, [](R& r) { r.fmState = 1; });
    row(
        ":PM:STAT OFF", [](E& e) { return e.setStatePM(off); }, [](R& r) { r.pmState = 0; });
    row(
        ":PULS:STAT ON", [](E& e) { return e.setStatePulseM(on); }, [](R& r) { r.pulseState = 1; });
    row(
        ":PATT:STAT ON", [](E& e) { return e.setStatePatternM(on); }, [](R& r) { r.patternState = 1; });
    row(
        ":FRSW ON", [](E& e) { return e.setStateFRSW(on); }, [](R& r) { r.frswState = 1; });
    row(
        ":PRSW:STAT ON", [](E& e) { return e.setStatePRSW(on); }, [](R& r) { r.prswState = 1; });
    row(
        ":LIST:STAT ON", [](E& e) { return e.setStateList(on); }, [](R& r) { r.listState = 1; });

    row(
        ":AM:SOUR EXTernal", [](E& e) { return e.setModSrcAM(external); },
        [](R& r) { setText(r.amSource, "EXTernal"); });
    row(
        ":FM:SOUR INTernal", [](E& e) { return e.setModSrcFM(internal); },
        [](R& r) { setText(r.fmSource, "INTernal"); });
    row(
        ":PM:SOUR EXTernal", [](E& e) { return e.setModSrcPM(external); },
        [](R& r) { setText(r.pmSource, "EXTernal"); });
    row(
        ":PULS:SOUR EXTernal", [](E& e) { return e.setModSrcPulseM(external); },
        [](R& r) { setText(r.pulseSource, "EXTernal"); });
    row(
        ":FRSW:DIR UPDOWN", [](E& e) { return e.setDirFRSW(upDown); },
        [](R& r) { setText(r.frswDirection, "UPDOWN"); });
    row(
        ":PRSW:DIR NORMAL", [](E& e) { return e.setDirPRSW(normal); },
        [](R& r) { setText(r.prswDirection, "NORMAL"); });
}

void TestHandlerScpi::settersWithReadBack() {
    QFETCH(Call, call);
    QFETCH(QByteArray, line);
    QFETCH(Change, taken);
    HandlerFixture f;
    f.fillWithNonsense();
    f.start();

    QCOMPARE(call(*f.handler), -1); // acknowledged, but the module did not take it
    QCOMPARE(f.service.lines, QList<QByteArray>{line});

    f.service.answer = [&](const QByteArray&) {
        taken(f.region.record());
        return QByteArray("+OK\r\n");
    };
    QCOMPARE(call(*f.handler), 0);

    f.fillWithNonsense();
    f.service.answer = [](const QByteArray&) {
        return QByteArray("-ERR 3, busy\r\n");
    };
    expectMessage("^\\[SCPI\\] write failed: -ERR 3, busy$");
    QCOMPARE(call(*f.handler), -1);
}

void TestHandlerScpi::settersWithoutReadBack_data() {
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("whenRefused");
    using E = EventHandler;
    const auto row = [](const char* line, Call call, int whenRefused = -1) {
        QTest::newRow(line) << call << QByteArray(line) << whenRefused;
    };
    row(
        ":OUTPut:RESTore:MODE AUTO", [](E& e) { return e.set_power_on_restore(true); }, 0);
    row(
        ":OUTPut:RESTore:MODE MANUAL", [](E& e) { return e.set_power_on_restore(false); }, 0);
    row("*TRG ", [](E& e) { return e.setTrigger(); });
    row(":SYST:COMM:LAN:PORT 5026", [](E& e) { return e.setPort("5026"); });
    row(":SYST:COMM:LAN:IPAD \"192.168.1.5\"", [](E& e) { return e.setIP("192.168.1.5"); });
    row(":SYST:COMM:LAN:MASK \"255.255.255.0\"", [](E& e) { return e.setMask("255.255.255.0"); });
    row(":SYST:COMM:LAN:GAT \"192.168.1.1\"", [](E& e) { return e.setGateway("192.168.1.1"); });
    row(":SYST:SET:REC 12", [](E& e) { return e.setRecallPath("12"); });
    row(":SYST:SET:STOR 12", [](E& e) { return e.setStorePath("12"); });
    row(":SYST:SET:CLE 12", [](E& e) { return e.setClearPath("12"); });
    row(":SYST:SET:TARG usb", [](E& e) { return e.setTarget("usb"); });
    row("*RST ", [](E& e) { return e.set_sys_rst(); });
    row(":GUI:UPD:SOFT ", [](E& e) { return e.sendGuiSoftUpdate(); });
    row(":INST:SEL 2", [](E& e) { return e.set_channel(2); });
}

void TestHandlerScpi::settersWithoutReadBack() {
    QFETCH(Call, call);
    QFETCH(QByteArray, line);
    HandlerFixture f;
    f.start();
    QCOMPARE(call(*f.handler), 0);
    QCOMPARE(f.service.lines, QList<QByteArray>{line});
    f.service.answer = [](const QByteArray&) {
        return QByteArray("-ERR\r\n");
    };
    expectMessage("write failed: -ERR");
    QTEST(call(*f.handler), "whenRefused");
}

void TestHandlerScpi::readBackStrictness_data() {
    QTest::addColumn<Call>("call");
    QTest::addColumn<Change>("held");
    QTest::addColumn<int>("result");
    using E = EventHandler;
    using R = ChannelRecord;
    const auto row = [](const char* name, int result, Call call, Change held) {
        QTest::newRow(name) << call << held << result;
    };
    const Call hertz = [](E& e) {
        return e.set_frequency(1000.0);
    };
    row("frequency within 1 mHz", 0, hertz, [](R& r) { r.frequency.value = 1000.0009; });
    row("frequency off by 1 mHz", -1, hertz, [](R& r) { r.frequency.value = 1000.0011; });
    const Call decibel = [](E& e) {
        return e.set_power(10.0);
    };
    row("power within 0.01 dB", 0, decibel, [](R& r) { r.power.value = 10.004; });
    row("power off by 0.02 dB", -1, decibel, [](R& r) { r.power.value = 10.02; });
    row("power below", -1, decibel, [](R& r) { r.power.value = 9.98; });
    row(
        "everything else is exact", -1, [](E& e) { return e.set_am_freq(1000.0); },
        [](R& r) { r.amRate.value = 1000.0000000001; });
    row(
        "a value finer than its text", -1, [](E& e) { return e.set_am_freq(1000.00049); },
        [](R& r) { r.amRate.value = 1000.0; });
    row(
        "a time as its text says", 0, [](E& e) { return e.set_trig_delay(1500.04); },
        [](R& r) { r.triggerDelay.value = 1.5e-6; });
    row(
        "a time by multiplication", -1, [](E& e) { return e.set_trig_delay(1500); },
        [](R& r) { r.triggerDelay.value = 1500 * 1.0000000001e-9; });
    row(
        "high impedance by another name", 0, [](E& e) { return e.setTRGimp(true); },
        [](R& r) { r.triggerImpedance = 100000; });
    row(
        "a count is whole", -1, [](E& e) { return e.set_trig_count(2.4); }, [](R& r) { r.triggerCount.value = 2; });
}

void TestHandlerScpi::readBackStrictness() {
    QFETCH(Call, call);
    QFETCH(Change, held);
    HandlerFixture f;
    f.region.record().triggerImpedance = 50;
    f.start();
    f.service.answer = [&](const QByteArray&) {
        held(f.region.record());
        return QByteArray("+OK\r\n");
    };
    QTEST(call(*f.handler), "result");
}

// The entry path's promise: what it rounds to is what the module, told so in text, will hold.
void TestHandlerScpi::roundedValuesAreAlwaysTaken() {
    HandlerFixture f;
    f.start();
    EventHandler& e = *f.handler;
    for (int i = 0; i < kDeviceValueCount; ++i) {
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

void TestHandlerScpi::rounding_data() {
    QTest::addColumn<int>("id");
    QTest::addColumn<double>("entered");
    QTest::addColumn<double>("rounded");
    const auto row = [](const char* name, DeviceValueId id, double entered, double rounded) {
        QTest::newRow(name) << static_cast<int>(id) << entered << rounded;
    };
    row("kilohertz that has no binary form", DeviceValueId::Frequency, 1.001 * 1000, 1001.0);
    row("whole hertz", DeviceValueId::FmRate, 3.7, 4.0);
    row("tenths of a nanosecond", DeviceValueId::TriggerDelay, 1500.04, 1500.0);
    row("tenth kept", DeviceValueId::TriggerDelay, 1500.1, 1500.1);
    row("whole nanoseconds", DeviceValueId::PulseWidth, 12.6, 13.0);
    row("below the smallest", DeviceValueId::PulseWidth, 0.4, 0.0);
    row("count", DeviceValueId::TriggerCount, 2.9, 3.0);
    row("hundredths of a decibel", DeviceValueId::PrswStart, -10.256, -10.26);
}

void TestHandlerScpi::rounding() {
    QFETCH(int, id);
    QFETCH(double, entered);
    QFETCH(double, rounded);
    HandlerFixture f;
    EventHandler handler(f.settings());
    QVERIFY(handler.roundedToWire(static_cast<DeviceValueId>(id), entered) == rounded);
}

void TestHandlerScpi::getters_data() {
    QTest::addColumn<Reading>("get");
    QTest::addColumn<Change>("published");
    QTest::addColumn<QString>("expected");
    using E = EventHandler;
    using R = ChannelRecord;
    const auto row = [](const char* name, Reading get, Change published, const QString& expected) {
        QTest::newRow(name) << get << published << expected;
    };
    const auto number = [](double n) {
        return QString::number(n, 'g', 17);
    };
    const auto real = [&](const char* name, double (E::*get)(), Change published, double expected) {
        row(
            name, [get, number](E& e) { return number((e.*get)()); }, published, number(expected));
    };
    const auto count = [&](const char* name, unsigned (E::*get)(), Change published, unsigned expected) {
        row(
            name, [get](E& e) { return QString::number((e.*get)()); }, published, QString::number(expected));
    };
    const auto text = [&](const char* name, std::string (E::*get)(), Change published, const char* expected) {
        row(
            name, [get](E& e) { return QString::fromStdString((e.*get)()); }, published, expected);
    };
    real(
        "frequency", &E::get_frequency, [](R& r) { r.frequency.value = 1e9; }, 1e9);
    real(
        "frequency default", &E::get_frequency_def, [](R& r) { r.frequency.defaultValue = 2; }, 2);
    real(
        "frequency maximum", &E::get_frequency_max, [](R& r) { r.frequency.maximum = 3; }, 3);
    real(
        "frequency minimum", &E::get_frequency_min, [](R& r) { r.frequency.minimum = 4; }, 4);
    real(
        "power", &E::get_power, [](R& r) { r.power.value = -5.5; }, -5.5);
    real(
        "power default", &E::get_power_def, [](R& r) { r.power.defaultValue = 6; }, 6);
    real(
        "power maximum", &E::get_power_max, [](R& r) { r.power.maximum = 7; }, 7);
    real(
        "power minimum", &E::get_power_min, [](R& r) { r.power.minimum = -8; }, -8);
    real(
        "phase", &E::get_phase, [](R& r) { r.phase.value = 9; }, 9);
    count(
        "trigger count", &E::get_trig_count, [](R& r) { r.triggerCount.value = 10; }, 10);
    real(
        "trigger timer", &E::get_trig_timer_time, [](R& r) { r.triggerTimer.value = 1e-3; }, 1e6);
    real(
        "trigger delay", &E::get_trig_delay, [](R& r) { r.triggerDelay.value = 1.5e-6; }, 1500);
    real(
        "trigger delay, tenth", &E::get_trig_delay, [](R& r) { r.triggerDelay.value = 0.3e-9; }, 0.3);
    count(
        "impedance 50", &E::get_trig_impedance, [](R& r) { r.triggerImpedance = 50; }, 50);
    count(
        "impedance other", &E::get_trig_impedance, [](R& r) { r.triggerImpedance = 75; }, 10000);
    real(
        "AM rate", &E::get_am_freq, [](R& r) { r.amRate.value = 11; }, 11);
    real(
        "AM depth", &E::get_am_depth, [](R& r) { r.amDepth.value = 12; }, 12);
    real(
        "FM rate", &E::get_fm_freq, [](R& r) { r.fmRate.value = 13; }, 13);
    real(
        "FM deviation is the AM rate", &E::get_fm_dev,
        [](R& r) {
            r.amRate.value = 14;
            r.fmDeviation.value = 15;
        },
        14);
    real(
        "PM rate", &E::get_pm_freq, [](R& r) { r.pmRate.value = 16; }, 16);
    real(
        "PM deviation", &E::get_pm_dev, [](R& r) { r.pmDeviation.value = 17; }, 17);
    real(
        "pulse frequency", &E::get_pulsem_freq, [](R& r) { r.pulseFrequency.value = 18; }, 18);
    real(
        "pulse width", &E::get_pulsem_width, [](R& r) { r.pulseWidth.value = 1e-7; }, 100);
    real(
        "frequency sweep start", &E::get_frsw_start, [](R& r) { r.frswStart.value = 19; }, 19);
    real(
        "frequency sweep stop", &E::get_frsw_stop, [](R& r) { r.frswStop.value = 20; }, 20);
    count(
        "frequency sweep steps", &E::get_frsw_steps, [](R& r) { r.frswSteps.value = 21; }, 21);
    real(
        "frequency sweep time", &E::get_frsw_time,
        [](R& r) {
            r.frswSteps.value = 11;
            r.frswDwell.value = 5e-4;
        },
        5e6);
    real(
        "frequency sweep of no step", &E::get_frsw_time, [](R& r) { r.frswDwell.value = 5e-4; }, 0);
    real(
        "power sweep start", &E::get_prsw_start, [](R& r) { r.prswStart.value = -22; }, -22);
    real(
        "power sweep stop is the start", &E::get_prsw_stop,
        [](R& r) {
            r.prswStart.value = -23;
            r.prswStop.value = 24;
        },
        -23);
    count(
        "power sweep steps", &E::get_prsw_steps, [](R& r) { r.prswSteps.value = 25; }, 25);
    real(
        "power sweep time", &E::get_prsw_time,
        [](R& r) {
            r.prswSteps.value = 3;
            r.prswDwell.value = 1e-9;
        },
        2);
    count(
        "DHCP", &E::getDhcpMode, [](R& r) { r.dhcp = 1; }, 1);
    text(
        "options", &E::get_sys_opt, [](R& r) { setText(r.options, "LF,HP"); }, "LF,HP");
    text(
        "options without an end", &E::get_sys_opt, [](R& r) { std::memset(r.options, 'o', 32); },
        "ooooooooooooooooooooooooooooooo");
    text(
        "address", &E::get_sys_ip, [](R& r) { setText(r.ipAddress, "10.0.0.1"); }, "10.0.0.1");
    text(
        "mask", &E::get_sys_mask, [](R& r) { setText(r.networkMask, "255.0.0.0"); }, "255.0.0.0");
    text(
        "address, region", &E::getIP, [](R& r) { setText(r.ipAddress, "10.0.0.2"); }, "10.0.0.2");
    text(
        "mask, region", &E::getMask, [](R& r) { setText(r.networkMask, "255.1.0.0"); }, "255.1.0.0");
    text(
        "gateway", &E::getGateway, [](R& r) { setText(r.gateway, "10.0.0.254"); }, "10.0.0.254");
    text(
        "temperature", &E::get_sys_temp, [](R& r) { r.temperature = 41.25; }, "41.250000");
    text(
        "battery", &E::get_sys_bat, [](R& r) { r.batteryCharge = -1; }, "-1");
    text(
        "identification", &E::get_sys_identification,
        [](R& r) {
            setText(r.model, "M");
            setText(r.serial, "S");
            setText(r.firmwareVersion, "1.0/2.0");
        },
        "M S 1.0/2.0");
}

void TestHandlerScpi::getters() {
    QFETCH(Reading, get);
    QFETCH(Change, published);
    HandlerFixture f(2);
    f.start();
    QCOMPARE(f.handler->set_channel(1), 0);
    published(f.region.record(1));
    QTEST(get(*f.handler), "expected");
    QCOMPARE(f.service.lines, QList<QByteArray>{":INST:SEL 1"});
}

void TestHandlerScpi::aGetterRefreshesItsFieldAlone() {
    HandlerFixture f;
    f.start();
    f.region.record().frequency = {1, 2, 3, 4};
    setText(f.region.record().model, "new");
    setText(f.region.record().ipAddress, "10.0.0.1");
    QCOMPARE(f.handler->get_frequency_max(), 3.0);
    QCOMPARE(f.handler->snapshot().frequency.maximum, 3.0);
    QCOMPARE(f.handler->snapshot().frequency.value, 0.0);
    QCOMPARE(f.handler->getIP(), std::string("10.0.0.1"));
    QCOMPARE(recordText(f.handler->snapshot().ipAddress), std::string());
    QCOMPARE(f.handler->getSysModel(), std::string());
}

void TestHandlerScpi::cachedValuesAndLimits() {
    HandlerFixture f;
    f.region.record().fmDeviation = {7, 100, 1};
    f.region.record().prswStop = {3, 20, -20};
    f.region.record().frswDwell = {1e-3, 1.0, 1e-9};
    f.region.record().triggerCount = {5, 1000, 1};
    f.start();
    const EventHandler& e = *f.handler;
    QCOMPARE(e.cachedValue(DeviceValueId::FmDeviation), 7.0);
    QCOMPARE(e.cachedValue(DeviceValueId::PrswStop), 3.0);
    QCOMPARE(e.cachedLimits(DeviceValueId::PrswStop).minimum, -20.0);
    QCOMPARE(e.cachedLimits(DeviceValueId::FrswTime).maximum, 1e9);
    QCOMPARE(e.cachedLimits(DeviceValueId::FrswTime).minimum, 1.0);
    QCOMPARE(e.cachedLimits(DeviceValueId::TriggerCount).maximum, 1000.0);
    QVERIFY(e.cachedLimits(DeviceValueId::TriggerCount).known());
    QVERIFY(!e.cachedLimits(DeviceValueId::AmRate).known());
}

void TestHandlerScpi::wordChoices_data() {
    QTest::addColumn<Change>("held");
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("line");
    using E = EventHandler;
    using R = ChannelRecord;
    const auto source = [](const char* word, bool advance, const char* line) {
        QTest::newRow(qPrintable(QString("%1 from \"%2\"").arg(line, word)))
            << Change([=](R& r) { setText(r.triggerSource, word); })
            << Call([=](E& e) { return e.setTriggerSource(advance); }) << QByteArray(line);
    };
    source("EXTernal", true, ":TRIG:SOUR BUS");
    source("BUS", true, ":TRIG:SOUR TIMer");
    source("TIMer", true, ":TRIG:SOUR EXTernal");
    source("", true, ":TRIG:SOUR EXTernal");
    source("else", true, ":TRIG:SOUR EXTernal");
    source("TIMer", false, ":TRIG:SOUR TIMer");
    const auto row = [](const char* line, Change held, Call call) {
        QTest::newRow(line) << held << call << QByteArray(line);
    };
    row(
        ":TRIG:EDG NEGative", [](R& r) { setText(r.triggerEdge, "POSitive"); },
        [](E& e) { return e.setTRGedge(true); });
    row(
        ":TRIG:EDG POSitive", [](R& r) { setText(r.triggerEdge, "NEGative"); },
        [](E& e) { return e.setTRGedge(true); });
    row(
        ":TRIG:ADV STEP", [](R& r) { setText(r.triggerAdvance, "STEP"); }, [](E& e) { return e.setTRGadv(false); });
    row(
        ":TRIG:ADV ONCe", [](R& r) { setText(r.triggerAdvance, "STEP"); }, [](E& e) { return e.setTRGadv(true); });
    row(
        ":ROSC:EXT:FREQ 100MHz", [](R& r) { setText(r.referenceOscillator, "10MHz"); },
        [](E& e) { return e.setRefOscMode(true); });
    row(
        ":ROSC:EXT:FREQ 10MHz", [](R& r) { setText(r.referenceOscillator, "100MHz"); },
        [](E& e) { return e.setRefOscMode(true); });
    row(
        ":TRIG:INP:IMP 10000", [](R& r) { r.triggerImpedance = 50; }, [](E& e) { return e.setTRGimp(true); });
    row(
        ":TRIG:INP:IMP 50", [](R& r) { r.triggerImpedance = 50; }, [](E& e) { return e.setTRGimp(false); });
}

void TestHandlerScpi::wordChoices() {
    QFETCH(Change, held);
    QFETCH(Call, call);
    QFETCH(QByteArray, line);
    HandlerFixture f;
    held(f.region.record());
    f.start();
    // The module takes the word, wherever it belongs.
    f.service.answer = [&](const QByteArray& received) {
        ChannelRecord& r = f.region.record();
        const QByteArray word = received.mid(received.indexOf(' ') + 1);
        for (auto field : {&ChannelRecord::triggerSource, &ChannelRecord::triggerEdge, &ChannelRecord::triggerAdvance,
                           &ChannelRecord::referenceOscillator})
            setText(r.*field, word.constData());
        r.triggerImpedance = word.toUInt();
        return QByteArray("+OK\r\n");
    };
    QCOMPARE(call(*f.handler), 0);
    QCOMPARE(f.service.lines, QList<QByteArray>{line});
}

void TestHandlerScpi::cachedWordsAreSent() {
    HandlerFixture f;
    f.start();
    f.handler->setCachedTriggerSource("BUS");
    f.handler->setCachedTriggerEdge("NEGative");
    f.handler->setCachedTriggerAdvance("a word that is longer than its field has room for");
    QCOMPARE(f.handler->setTriggerSource(false), -1);
    QCOMPARE(f.handler->setTRGedge(false), -1);
    QCOMPARE(f.handler->setTRGadv(false), -1);
    QCOMPARE(f.service.lines,
             (QList<QByteArray>{":TRIG:SOUR BUS", ":TRIG:EDG NEGative", ":TRIG:ADV a word that is longer than its "}));
    QCOMPARE(recordText(f.handler->snapshot().triggerSource), std::string());
}

void TestHandlerScpi::modulationEnable_data() {
    QTest::addColumn<unsigned>("mask");
    QTest::addColumn<unsigned>("bits");
    QTest::addColumn<bool>("enable");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("line");
    const QByteArray none;
    QTest::newRow("PM beside FM") << 0x02U << 0x04U << true << 0x02 << none;
    QTest::newRow("sweep with FM") << 0x02U << 0x08U << true << 0 << QByteArray(":MODulation:ENABle:MASK 10");
    QTest::newRow("AM first") << 0x00U << 0x01U << true << 0 << QByteArray(":MODulation:ENABle:MASK 1");
    QTest::newRow("FM beside AM") << 0x01U << 0x02U << true << 0x01 << none;
    QTest::newRow("nothing, which the module has") << 0x00U << 0x00U << true << 0 << none;
    QTest::newRow("off") << 0x0AU << 0x08U << false << 0 << QByteArray(":MODulation:ENABle:MASK 2");
    QTest::newRow("off that is off") << 0x02U << 0x80U << false << 0 << QByteArray(":MODulation:ENABle:MASK 2");
    QTest::newRow("conflict that the module has") << 0x06U << 0x04U << true << 0 << none;
}

void TestHandlerScpi::modulationEnable() {
    QFETCH(unsigned, mask);
    QFETCH(unsigned, bits);
    QFETCH(bool, enable);
    QFETCH(QByteArray, line);
    HandlerFixture f;
    f.region.record().modulationEnable = mask;
    f.start();
    QTEST(f.handler->set_modulation_enable(static_cast<modEnableBitMask>(bits), enable), "result");
    QCOMPARE(f.service.lines, line.isEmpty() ? QList<QByteArray>() : QList<QByteArray>{line});
}

void TestHandlerScpi::runningModulations() {
    HandlerFixture f(2);
    f.start();
    EventHandler& e = *f.handler;
    std::uint32_t ChannelRecord::*const states[] = {
        &ChannelRecord::amState,   &ChannelRecord::fmState,    &ChannelRecord::pmState,   &ChannelRecord::frswState,
        &ChannelRecord::prswState, &ChannelRecord::pulseState, &ChannelRecord::listState, &ChannelRecord::patternState};
    unsigned bit = 1;
    for (const auto state : states) {
        f.region.record().*state = 1;
        QCOMPARE(e.revert_preset(0), 0);
        QCOMPARE(e.isModulationsOn(), bit);
        f.region.record().*state = 2; // only 1 is on
        QCOMPARE(e.revert_preset(0), 0);
        QCOMPARE(e.isModulationsOn(), 0U);
        bit <<= 1;
    }
    f.region.record(1).fmState = 1;
    f.region.record(1).listState = 1;
    QCOMPARE(e.revert_preset(1), 0);
    QCOMPARE(e.set_channel(1), 0);
    QCOMPARE(e.getModulationsState(), 0U);
    QCOMPARE(e.isModulationsOn(), 0x42U);
    QCOMPARE(e.getModulationsState(), 0x42U);
    QCOMPARE(e.getModulationsState(1), 0x42U);
    QCOMPARE(e.getModulationsState(0), 0U);
    QCOMPARE(e.getModulationsState(2), 0U);
    QCOMPARE(e.getModulationsState(4), 0U);
    e.clearRunningModulations();
    QCOMPARE(e.getModulationsState(), 0U);
}

void TestHandlerScpi::channels() {
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

void TestHandlerScpi::dhcpToggles() {
    HandlerFixture f;
    f.region.record().dhcp = 2;
    f.start();
    f.handler->toggleDHCPMode();
    f.region.record().dhcp = 0;
    f.handler->toggleDHCPMode();
    QCOMPARE(f.service.lines, (QList<QByteArray>{":SYST:COMM:LAN:DHCP OFF", ":SYST:COMM:LAN:DHCP ON"}));
}

void TestHandlerScpi::architecture() {
    HandlerFixture f;
    f.start();
    const std::string builtIn = "NMX4000A,20000,1,usb,2001,168c,benchtop";
    f.service.answer = [](const QByteArray&) {
        return QByteArray("A,1,2;more\r\n");
    };
    QCOMPARE(f.handler->getModelInternalInf(), std::string("A,1,2"));
    QCOMPARE(f.service.lines, QList<QByteArray>{":INT:INF:DEV:ARCH? "});
    f.service.answer = [](const QByteArray&) {
        return QByteArray("#12  ");
    };
    QCOMPARE(f.handler->getModelInternalInf(), builtIn);
    f.service.answer = [](const QByteArray&) {
        return QByteArray("-ERR\r\n");
    };
    QCOMPARE(f.handler->getModelInternalInf(), builtIn);
}

void TestHandlerScpi::numbersThatAreNoneAreNotSent() {
    HandlerFixture f;
    f.start();
    QCOMPARE(f.handler->set_frequency(qQNaN()), -1);
    QCOMPARE(f.handler->set_power(-qInf()), -1);
    QVERIFY(f.service.lines.isEmpty());
}

VELDA_TEST_MAIN(QCoreApplication, TestHandlerScpi)
#include "tst_handlerscpi.moc"
