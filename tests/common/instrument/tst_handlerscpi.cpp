#include <functional>

#include "tests/common/instrument/handlerfixture.h"
#include "tests/support/testbase.h"

using Call = std::function<int(EventHandler&)>;
using Change = std::function<void(ChannelRecord&)>;
using Reading = std::function<QString(EventHandler&)>;
Q_DECLARE_METATYPE(Call)
Q_DECLARE_METATYPE(Change)
Q_DECLARE_METATYPE(Reading)

namespace {

void setText(char (&field)[32], const char* text) {
    std::memset(field, 0, sizeof field);
    std::memcpy(field, text, std::strlen(text));
}

// clang-format off
QString shown(double number)            { return QString::number(number, 'g', 17); }
QString shown(unsigned count)           { return QString::number(count); }
QString shown(const std::string& text)  { return QString::fromStdString(text); }
// clang-format on

} // namespace

// clang-format off
#define CALL(call)   Call([](EventHandler& e) { return e.call; })
#define HELD(change) Change([](ChannelRecord& r) { change; })
#define SETTER(line, call, taken) QTest::newRow(line) << CALL(call) << HELD(taken)
#define GETTER(get, expected, published)                                                                               \
    QTest::newRow(#get ", " #published) << Reading([](EventHandler& e) { return shown(e.get()); })                      \
                                        << shown(decltype(std::declval<EventHandler&>().get())(expected)) << HELD(published)
// clang-format on

/// What the handler's operations put on the wire, and how they judge what the module then holds.
class TestHandlerScpi : public TestBase {
    Q_OBJECT

private slots:
    void settersWithReadBack_data() {
        // clang-format off
        QTest::addColumn<Call>("call");
        QTest::addColumn<Change>("taken");
        SETTER(":FREQ 1000000000.000", set_frequency(1e9), r.frequency.value = 1e9);
        SETTER(":POW -10.2500", set_power(-10.25), r.power.value = -10.25);
        SETTER(":PHAS 90.000", set_phase(90), r.phase.value = 90);
        SETTER(":TRIG:COUN 12", set_trig_count(12), r.triggerCount.value = 12);
        SETTER(":TRIG:TIM:TIME 0.0010000000", set_trig_timer_time(1e6), r.triggerTimer.value = 1e-3);
        SETTER(":TRIG:DEL 0.0000015000", set_trig_delay(1500), r.triggerDelay.value = 1.5e-6);
        SETTER(":TRIG:INP:IMP 10K", set_trig_impedance(10000), r.triggerImpedance = 10000);
        SETTER(":AM:INT:FREQ 1000.000", set_am_freq(1000), r.amRate.value = 1000);
        SETTER(":AM:DEPT 30.0", set_am_depth(30), r.amDepth.value = 30);
        SETTER(":FM:INT:FREQ 2000", set_fm_freq(2000), r.fmRate.value = 2000);
        SETTER(":FM:DEV 75000.500", set_fm_dev(75000.5), r.fmDeviation.value = 75000.5);
        SETTER(":PM:INT:FREQ 400.250000", set_pm_freq(400.25), r.pmRate.value = 400.25);
        SETTER(":PM:DEV 1.25", set_pm_dev(1.25), r.pmDeviation.value = 1.25);
        SETTER(":PULS:FREQ 1000.000000000", set_pulsem_freq(1000), r.pulseFrequency.value = 1000);
        SETTER(":PULS:WIDT 0.000000100", set_pulsem_width(100), r.pulseWidth.value = 1e-7);
        SETTER(":FRSW:STAR 1000000.001", set_frsw_start(1000000.001), r.frswStart.value = 1000000.001);
        SETTER(":FRSW:STOP 2000000", set_frsw_stop(2e6), r.frswStop.value = 2e6);
        SETTER(":FRSW:STEP 4294967295", set_frsw_steps(4294967295U), r.frswSteps.value = 4294967295U);
        SETTER(":FRSW:TIME 0.000500000", set_frsw_time(500000), r.frswDwell.value = 5e-4);
        SETTER(":PRSW:STAR -20.00", set_prsw_start(-20), r.prswStart.value = -20);
        SETTER(":PRSW:STOP 0.50", set_prsw_stop(0.5), r.prswStop.value = 0.5);
        SETTER(":PRSW:STEP 11", set_prsw_steps(11), r.prswSteps.value = 11);
        SETTER(":PRSW:TIME 0.002000000", set_prsw_time(2e6), r.prswDwell.value = 2e-3);

        SETTER(":OUTP ON", set_rf_onoff(on), r.rfOutput = 1);
        SETTER(":INIT:CONT ON", setRunMode(true), r.runMode = 1);
        SETTER(":SYST:COMM:LAN:DHCP ON", setDhcpMode(on), r.dhcp = 1);
        SETTER(":AM:STAT ON", setStateAM(on), r.amState = 1);
        SETTER(":FM:STAT ON", setStateFM(on), r.fmState = 1);
        SETTER(":PM:STAT OFF", setStatePM(off), r.pmState = 0);
        SETTER(":PULS:STAT ON", setStatePulseM(on), r.pulseState = 1);
        SETTER(":PATT:STAT ON", setStatePatternM(on), r.patternState = 1);
        SETTER(":FRSW ON", setStateFRSW(on), r.frswState = 1);
        SETTER(":PRSW:STAT ON", setStatePRSW(on), r.prswState = 1);
        SETTER(":LIST:STAT ON", setStateList(on), r.listState = 1);

        SETTER(":AM:SOUR EXTernal", setModSrcAM(external), setText(r.amSource, "EXTernal"));
        SETTER(":PM:SOUR EXTernal", setModSrcPM(external), setText(r.pmSource, "EXTernal"));
        SETTER(":PULS:SOUR EXTernal", setModSrcPulseM(external), setText(r.pulseSource, "EXTernal"));
        SETTER(":FRSW:DIR UPDOWN", setDirFRSW(upDown), setText(r.frswDirection, "UPDOWN"));
        SETTER(":PRSW:DIR NORMAL", setDirPRSW(normal), setText(r.prswDirection, "NORMAL"));
        // clang-format on
    }

    void settersWithReadBack() {
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
        expectMessage("^\\[SCPI\\] write failed: -ERR 3, busy$");
        QCOMPARE(call(*f.handler), -1);
    }

    void settersWithoutReadBack_data() {
        QTest::addColumn<Call>("call");
        const auto row = [](const char* line, const Call& call) {
            QTest::newRow(line) << call;
        };
        row(":OUTPut:RESTore:MODE AUTO", CALL(set_power_on_restore(true)));
        row("*TRG ", CALL(setTrigger()));
        row(":SYST:COMM:LAN:PORT 5026", CALL(setPort("5026")));
        row(":SYST:COMM:LAN:IPAD \"192.168.1.5\"", CALL(setIP("192.168.1.5")));
        row(":SYST:COMM:LAN:MASK \"255.255.255.0\"", CALL(setMask("255.255.255.0")));
        row(":SYST:COMM:LAN:GAT \"192.168.1.1\"", CALL(setGateway("192.168.1.1")));
        row(":SYST:SET:REC 12", CALL(setRecallPath("12")));
        row(":SYST:SET:STOR 12", CALL(setStorePath("12")));
        row(":SYST:SET:CLE 12", CALL(setClearPath("12")));
        row(":SYST:SET:TARG usb", CALL(setTarget("usb")));
        row("*RST ", CALL(set_sys_rst()));
        row(":GUI:UPD:SOFT ", CALL(sendGuiSoftUpdate()));
        row(":INST:SEL 2", CALL(set_channel(2)));
    }

    void settersWithoutReadBack() {
        QFETCH(Call, call);
        HandlerFixture f;
        f.start();
        QCOMPARE(call(*f.handler), 0);
        QCOMPARE(f.service.lines, QList<QByteArray>{QTest::currentDataTag()});
        f.service.answerWith("-ERR\r\n");
        expectMessage("write failed: -ERR");
        const bool cannotFail = f.service.lines[0].startsWith(":OUTPut:RESTore");
        QCOMPARE(call(*f.handler), cannotFail ? 0 : -1);
    }

    void readBackStrictness_data() {
        // clang-format off
        QTest::addColumn<int>("result");
        QTest::addColumn<Call>("call");
        QTest::addColumn<Change>("held");
        QTest::newRow("frequency within 1 mHz")          <<  0 << CALL(set_frequency(1000.0))  << HELD(r.frequency.value = 1000.0009);
        QTest::newRow("frequency off by 1 mHz")          << -1 << CALL(set_frequency(1000.0))  << HELD(r.frequency.value = 1000.0011);
        QTest::newRow("power within 0.01 dB")            <<  0 << CALL(set_power(10.0))        << HELD(r.power.value = 10.004);
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

    void rounding() {
        HandlerFixture f;
        const EventHandler e(f.settings());
        QCOMPARE(shown(e.roundedToWire(DeviceValueId::TriggerDelay, 1500.16)), shown(1500.2)); // tenths of a nanosecond
        QCOMPARE(shown(e.roundedToWire(DeviceValueId::PulseWidth, 0.4)), shown(0.0));
        QCOMPARE(shown(e.roundedToWire(DeviceValueId::TriggerCount, 2.9)), shown(3.0));
        QCOMPARE(shown(e.roundedToWire(DeviceValueId::PrswStart, -10.256)), shown(-10.26));
    }

    void getters_data() {
        // clang-format off
        QTest::addColumn<Reading>("get");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<Change>("published");
        GETTER(get_frequency, 1e9, r.frequency.value = 1e9);
        GETTER(get_frequency_def, 2, r.frequency.defaultValue = 2);
        GETTER(get_frequency_max, 3, r.frequency.maximum = 3);
        GETTER(get_power, -5.5, r.power.value = -5.5);
        GETTER(get_power_def, 6, r.power.defaultValue = 6);
        GETTER(get_power_max, 7, r.power.maximum = 7);
        GETTER(get_phase, 9, r.phase.value = 9);
        GETTER(get_trig_count, 10, r.triggerCount.value = 10);
        GETTER(get_trig_timer_time, 1e6, r.triggerTimer.value = 1e-3);
        GETTER(get_trig_delay, 1500, r.triggerDelay.value = 1.5e-6);
        GETTER(get_trig_delay, 0.3, r.triggerDelay.value = 0.3e-9);
        GETTER(get_trig_impedance, 10000, r.triggerImpedance = 75);
        GETTER(get_am_freq, 11, r.amRate.value = 11);
        GETTER(get_am_depth, 12, r.amDepth.value = 12);
        GETTER(get_fm_freq, 13, r.fmRate.value = 13);
        GETTER(get_fm_dev, 14, r.amRate.value = 14; r.fmDeviation.value = 15);
        GETTER(get_pm_freq, 16, r.pmRate.value = 16);
        GETTER(get_pm_dev, 17, r.pmDeviation.value = 17);
        GETTER(get_pulsem_freq, 18, r.pulseFrequency.value = 18);
        GETTER(get_pulsem_width, 100, r.pulseWidth.value = 1e-7);
        GETTER(get_frsw_start, 19, r.frswStart.value = 19);
        GETTER(get_frsw_stop, 20, r.frswStop.value = 20);
        GETTER(get_frsw_steps, 21, r.frswSteps.value = 21);
        GETTER(get_frsw_time, 5e6, r.frswSteps.value = 11; r.frswDwell.value = 5e-4);
        GETTER(get_prsw_start, -22, r.prswStart.value = -22);
        GETTER(get_prsw_stop, -23, r.prswStart.value = -23; r.prswStop.value = 24);
        GETTER(get_prsw_steps, 25, r.prswSteps.value = 25);
        GETTER(get_prsw_time, 2, r.prswSteps.value = 3; r.prswDwell.value = 1e-9);
        GETTER(getDhcpMode, 1, r.dhcp = 1);
        GETTER(get_sys_opt, "ooooooooooooooooooooooooooooooo", std::memset(r.options, 'o', 32));
        GETTER(get_sys_ip, "10.0.0.1", setText(r.ipAddress, "10.0.0.1"));
        GETTER(get_sys_mask, "255.0.0.0", setText(r.networkMask, "255.0.0.0"));
        GETTER(getIP, "10.0.0.2", setText(r.ipAddress, "10.0.0.2"));
        GETTER(getMask, "255.1.0.0", setText(r.networkMask, "255.1.0.0"));
        GETTER(getGateway, "10.0.0.254", setText(r.gateway, "10.0.0.254"));
        GETTER(get_sys_temp, "41.250000", r.temperature = 41.25);
        GETTER(get_sys_bat, "-1", r.batteryCharge = -1);
        GETTER(get_sys_identification, "M S 1.0/2.0", setText(r.model, "M"); setText(r.serial, "S"); setText(r.firmwareVersion, "1.0/2.0"));
        // clang-format on
    }

    void getters() {
        QFETCH(Reading, get);
        QFETCH(Change, published);
        HandlerFixture f(2);
        f.start();
        QCOMPARE(f.handler->set_channel(1), 0);
        published(f.region.record(1));
        QTEST(get(*f.handler), "expected");
        QCOMPARE(f.service.lines, QList<QByteArray>{":INST:SEL 1"});
    }

    void aGetterRefreshesItsFieldAlone() {
        HandlerFixture f;
        f.start();
        f.region.record().frequency = {1, 2, 3, 4};
        setText(f.region.record().model, "new");
        QCOMPARE(f.handler->get_frequency_max(), 3.0);
        QCOMPARE(f.handler->snapshot().frequency.maximum, 3.0);
        QCOMPARE(f.handler->snapshot().frequency.value, 0.0);
        (void)f.handler->getIP();
        QCOMPARE(f.handler->getSysModel(), std::string());
    }

    void cachedValuesAndLimits() {
        HandlerFixture f;
        f.region.record().prswStop = {3, 20, -20};
        f.region.record().frswDwell = {1e-3, 1.0, 1e-9};
        f.region.record().triggerCount = {5, 1000, 1};
        f.start();
        const EventHandler& e = *f.handler;
        QCOMPARE(e.cachedValue(DeviceValueId::PrswStop), 3.0);
        QCOMPARE(e.cachedLimits(DeviceValueId::PrswStop).minimum, -20.0);
        QCOMPARE(e.cachedLimits(DeviceValueId::FrswTime).maximum, 1e9);
        QCOMPARE(e.cachedLimits(DeviceValueId::FrswTime).minimum, 1.0);
        QCOMPARE(e.cachedLimits(DeviceValueId::TriggerCount).maximum, 1000.0);
        QVERIFY(e.cachedLimits(DeviceValueId::TriggerCount).known());
        QVERIFY(!e.cachedLimits(DeviceValueId::AmRate).known());
    }

    void wordChoices_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<Call>("call");
        QTest::addColumn<Change>("held");
        int rows = 0;
        const auto row = [&rows](const char* line, const Call& call, const Change& held) {
            QTest::addRow("%d: %s", ++rows, line) << QByteArray(line) << call << held;
        };
        row(":TRIG:SOUR BUS",           CALL(setTriggerSource(true)),  HELD(setText(r.triggerSource, "EXTernal")));
        row(":TRIG:SOUR TIMer",         CALL(setTriggerSource(true)),  HELD(setText(r.triggerSource, "BUS")));
        row(":TRIG:SOUR EXTernal",      CALL(setTriggerSource(true)),  HELD(setText(r.triggerSource, "TIMer")));
        row(":TRIG:SOUR EXTernal",      CALL(setTriggerSource(true)),  HELD(setText(r.triggerSource, "else")));
        row(":TRIG:SOUR TIMer",         CALL(setTriggerSource(false)), HELD(setText(r.triggerSource, "TIMer")));
        row(":TRIG:EDG NEGative",       CALL(setTRGedge(true)),        HELD(setText(r.triggerEdge, "POSitive")));
        row(":TRIG:ADV ONCe",           CALL(setTRGadv(true)),         HELD(setText(r.triggerAdvance, "STEP")));
        row(":ROSC:EXT:FREQ 100MHz",    CALL(setRefOscMode(true)),     HELD(setText(r.referenceOscillator, "10MHz")));
        row(":ROSC:EXT:FREQ 10MHz",     CALL(setRefOscMode(true)),     HELD(setText(r.referenceOscillator, "100MHz")));
        row(":TRIG:INP:IMP 10000",      CALL(setTRGimp(true)),         HELD(r.triggerImpedance = 50));
        row(":TRIG:INP:IMP 50",         CALL(setTRGimp(false)),        HELD(r.triggerImpedance = 50));
        // clang-format on
    }

    void wordChoices() {
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
            for (auto field : {&ChannelRecord::triggerSource, &ChannelRecord::triggerEdge,
                               &ChannelRecord::triggerAdvance, &ChannelRecord::referenceOscillator})
                setText(r.*field, word.constData());
            r.triggerImpedance = word.toUInt();
            return QByteArray("+OK\r\n");
        };
        QCOMPARE(call(*f.handler), 0);
        QCOMPARE(f.service.lines, QList<QByteArray>{line});
    }

    void cachedWordsAreSent() {
        HandlerFixture f;
        f.start();
        f.handler->setCachedTriggerSource("BUS");
        f.handler->setCachedTriggerEdge("NEGative");
        f.handler->setCachedTriggerAdvance("a word that is longer than its field has room for");
        QCOMPARE(f.handler->setTriggerSource(false), -1);
        QCOMPARE(f.handler->setTRGedge(false), -1);
        QCOMPARE(f.handler->setTRGadv(false), -1);
        QCOMPARE(f.service.lines, (QList<QByteArray>{":TRIG:SOUR BUS", ":TRIG:EDG NEGative",
                                                     ":TRIG:ADV a word that is longer than its "}));
        QCOMPARE(recordText(f.handler->snapshot().triggerSource), std::string());
    }

    void modulationEnable_data() {
        // clang-format off
        QTest::addColumn<unsigned>("mask");
        QTest::addColumn<unsigned>("bits");
        QTest::addColumn<bool>("enable");
        QTest::addColumn<int>("result");
        QTest::addColumn<QByteArray>("line"); // empty: nothing is sent
        QTest::newRow("PM beside FM")                 << 0x02U << 0x04U << true  << 0x02 << QByteArray();
        QTest::newRow("sweep with FM")                << 0x02U << 0x08U << true  << 0    << QByteArray(":MODulation:ENABle:MASK 10");
        QTest::newRow("FM beside AM")                 << 0x01U << 0x02U << true  << 0x01 << QByteArray();
        QTest::newRow("off")                          << 0x0AU << 0x08U << false << 0    << QByteArray(":MODulation:ENABle:MASK 2");
        QTest::newRow("off that is off")              << 0x02U << 0x80U << false << 0    << QByteArray(":MODulation:ENABle:MASK 2");
        QTest::newRow("conflict that the module has") << 0x06U << 0x04U << true  << 0    << QByteArray();
        // clang-format on
    }

    void modulationEnable() {
        QFETCH(unsigned, mask);
        QFETCH(unsigned, bits);
        QFETCH(bool, enable);
        HandlerFixture f;
        f.region.record().modulationEnable = mask;
        f.start();
        QTEST(f.handler->set_modulation_enable(static_cast<modEnableBitMask>(bits), enable), "result");
        QTEST(f.service.lines.value(0), "line");
    }

    void runningModulations() {
        HandlerFixture f(2);
        f.start();
        EventHandler& e = *f.handler;
        std::uint32_t ChannelRecord::*const states[] = {&ChannelRecord::amState,   &ChannelRecord::fmState,
                                                        &ChannelRecord::pmState,   &ChannelRecord::frswState,
                                                        &ChannelRecord::prswState, &ChannelRecord::pulseState,
                                                        &ChannelRecord::listState, &ChannelRecord::patternState};
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
        for (unsigned other : {0U, 2U, 4U})
            QCOMPARE(e.getModulationsState(other), 0U);
        e.clearRunningModulations();
        QCOMPARE(e.getModulationsState(), 0U);
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

    void dhcpToggles() {
        HandlerFixture f;
        f.start();
        for (const unsigned held : {2U, 0U}) {
            f.region.record().dhcp = held;
            f.handler->toggleDHCPMode();
            QCOMPARE(f.service.lines.last(), QByteArray(":SYST:COMM:LAN:DHCP ") + (held != 0 ? "OFF" : "ON"));
        }
    }

    void architecture() {
        HandlerFixture f;
        f.start();
        f.service.answerWith("A,1,2;more\r\n");
        QCOMPARE(f.handler->getModelInternalInf(), std::string("A,1,2"));
        QCOMPARE(f.service.lines, QList<QByteArray>{":INT:INF:DEV:ARCH? "});
        for (const char* nothing : {"#12  ", "-ERR\r\n"}) {
            f.service.answerWith(nothing);
            QCOMPARE(f.handler->getModelInternalInf(), std::string("NMX4000A,20000,1,usb,2001,168c,benchtop"));
        }
    }

    void numbersThatAreNoneAreNotSent() {
        HandlerFixture f;
        f.start();
        QCOMPARE(f.handler->set_frequency(qQNaN()), -1);
        QCOMPARE(f.handler->set_power(-qInf()), -1);
        QVERIFY(f.service.lines.isEmpty());
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestHandlerScpi)
#include "tst_handlerscpi.moc"
