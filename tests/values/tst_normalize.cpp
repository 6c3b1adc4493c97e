#include "tests/support/testbase.h"
#include "values/messagesink.h"
#include "values/normalize.h"
#include "values/rangemessages.h"
#include "values/units.h"

#include <QStringList>

#include <cmath>

namespace {

const QString kMicroSecond = QString::fromUtf8("\xC2\xB5s");

class RecordingSink : public MessageSink {
public:
    void showMessage(const QString& text, float seconds) override {
        texts << text;
        lastSeconds = seconds;
    }

    QStringList texts;
    float lastSeconds = -1;
};

enum class Kind { Frequency, Time, Power };

} // namespace

Q_DECLARE_METATYPE(Kind)

class TestNormalize : public TestBase {
    Q_OBJECT

private slots:
    void choosesUnit_data() {
        QTest::addColumn<int>("row"); // of kScale; -1 is time
        QTest::addColumn<double>("canonical");
        QTest::addColumn<int>("index");
        QTest::addColumn<double>("value");
        const auto row = [](int table, double canonical, int index, double value) {
            QTest::addRow("table %d, %.17g", table, canonical) << table << canonical << index << value;
        };
        row(0, 1e9, 0, 1);
        row(0, 999999999, 1, 999.999999);
        row(0, 0.001, 3, 0.001);
        row(0, 0, 3, 0);
        row(1, 5e9, 0, 5000);
        row(1, 0, 2, 0);
        row(1, 0.5, 2, 0.5);
        row(2, 1000, 0, 1);
        row(2, -1, 1, -1);
        row(-1, 0, 0, 0);
        row(-1, -5e9, 0, -5e9);
        row(-1, 1000, 1, 1);
        row(-1, 999999999.9, 2, 999.9999999);
        row(-1, 1e9, 3, 1);
        row(-1, 5e12, 3, 5000);
    }

    void choosesUnit() {
        QFETCH(int, row);
        QFETCH(double, canonical);
        QFETCH(int, index);
        QFETCH(double, value);
        const CalcResult result = calculateNormalization(canonical, row < 0 ? timeScales : kScale[row], row < 0);
        QCOMPARE(result.index, index);
        QCOMPARE(result.value, value);
        QCOMPARE(result.canonical, canonical);
    }

    void choosesUnitInATableWithAGap() {
        const double scale[4] = {1, 1e6, 0, 0};
        QCOMPARE(calculateNormalization(5000, scale, true).index, 0);
        QCOMPARE(calculateNormalization(5000, scale, true).value, 5000.0);
        QCOMPARE(calculateNormalization(5e12, scale, true).index, 1);
    }

    void listValue_data() {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<double>("canonical");
        QTest::addColumn<double>("outValue");
        QTest::addColumn<QString>("outUnit");
        const auto row = [](Kind kind, double value, const QString& unit, double canonical, double outValue,
                            const QString& outUnit) {
            QTest::addRow("%g %s", value, unit.toUtf8().constData())
                << kind << value << unit << canonical << outValue << outUnit;
        };
        row(Kind::Frequency, 2400, "MHz", 2.4e9, 2.4, "GHz");
        row(Kind::Frequency, 0, "GHz", 0, 0, "Hz");
        row(Kind::Frequency, 5000, "kHz", 5000, 5, "KHz");
        row(Kind::Frequency, 7, "", 7, 7, "Hz");
        row(Kind::Time, 1000, kMicroSecond, 1e6, 1, "ms");
        row(Kind::Time, 5000, "s", 5e12, 5000, "s");
        row(Kind::Time, 0.5, "s", 5e8, 500, "ms");
        row(Kind::Time, 2000, "hours", 2000, 2, kMicroSecond);
        row(Kind::Power, 1000, "mV", 13.010299956639813, 1000, "mV");
        row(Kind::Power, -5, "mV", -5, -5, "mV");
        row(Kind::Power, 3, "", 3, 3, "");
    }

    void listValue() {
        QFETCH(Kind, kind);
        QFETCH(double, value);
        QFETCH(QString, unit);
        // The variables that a step holds are both source and target.
        double outValue = value;
        std::string outUnit = unit.toStdString();
        const auto normalize = kind == Kind::Frequency ? plainFreq : kind == Kind::Time ? plainTime : plainPower;
        QTEST(normalize(outValue, outUnit), "canonical");
        QTEST(outValue, "outValue");
        QTEST(QString::fromStdString(outUnit), "outUnit");
    }

    void listCheck_data() {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<double>("min");
        QTest::addColumn<double>("max");
        QTest::addColumn<QString>("message");
        QTest::addColumn<double>("outValue"); // -1: left alone
        const auto row = [](const char* tag, Kind kind, double value, const QString& unit, double min, double max,
                            const QString& message, double outValue) {
            QTest::newRow(tag) << kind << value << unit << min << max << message << outValue;
        };
        row("frequency at min", Kind::Frequency, 9, "KHz", 9e3, 6e9, "", 9);
        row("frequency at max", Kind::Frequency, 6000, "MHz", 9e3, 6e9, "", 6);
        row("frequency low", Kind::Frequency, 8999, "Hz", 9e3, 6e9, "Valid It  range: 9 KHz to 6 GHz", 8.999);
        row("frequency high", Kind::Frequency, 6000.1, "MHz", 9e3, 6e9, "Valid It  range: 9 KHz to 6 GHz", 6.0001);
        row("time at max", Kind::Time, 1000, "ms", 20, 1e9, "", 1);
        row("power at max", Kind::Power, 10, "dBm", -120, 10, "", 10);
        row("power high", Kind::Power, 10.01, "dBm", -120, 10, "Valid It  range: -120 dBm to 10 dBm", -1);
        row("power low", Kind::Power, 1e-9, "mV", -120, 10, "Valid It  range: -120 dBm to 10 dBm", -1);
        row("power unit", Kind::Power, -5, "W", -120, 10, "Invalid power value or unit", -1);
    }

    void listCheck() {
        QFETCH(Kind, kind);
        QFETCH(double, value);
        QFETCH(QString, unit);
        QFETCH(double, min);
        QFETCH(double, max);
        QFETCH(QString, message);
        RecordingSink sink;
        double outValue = -1;
        QCOMPARE(check(kind, outValue, min, max, value, unit, &sink), message.isEmpty());
        QTEST(outValue, "outValue");
        QCOMPARE(sink.texts, message.isEmpty() ? QStringList() : QStringList(message));
        if (!message.isEmpty())
            QCOMPARE(sink.lastSeconds, 0.0F);
        QCOMPARE(check(kind, outValue, min, max, value, unit, nullptr), message.isEmpty());
        QVERIFY(!check(kind, outValue, min, max, NAN, unit, nullptr));
    }

    void powerCheckHandsOutDbmOnceConverted() {
        double shown = 0;
        std::string unit;
        double dBm = 42;
        QVERIFY(!normalizeListPower(shown, unit, 0, 20, 0, "mV", nullptr, &dBm, ""));
        QCOMPARE(dBm, 42.0);
        QVERIFY(!normalizeListPower(shown, unit, 0, 10, 1000, "mV", nullptr, &dBm, ""));
        QCOMPARE(dBm, 13.010299956639813);
        QVERIFY(unit.empty());
        QVERIFY(normalizeListPower(shown, unit, 0, 20, 1000, "mV", nullptr, &dBm, ""));
        QCOMPARE(QString::fromStdString(unit), QString("mV"));
        QCOMPARE(shown, 1000.0);
    }

    void rangeMessage_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("named") << getFreqRangeToast(9000, 6e9, "Start") << "Valid Start  range: 9 KHz to 6 GHz";
        QTest::newRow("six digits") << getFreqRangeToast(1.23456789, 1234567891, "X")
                                    << "Valid X  range: 1.23457 Hz to 1.23457 GHz";
        QTest::newRow("time") << getTimeRangeToast(20, 2e13, "Total Time")
                              << "Valid Total Time  range: 20 ns to 20000 s";
        QTest::newRow("power") << getPowerRangeToast(-127.5, 19.123456, "")
                               << "Valid  range: -127.5 dBm to 19.1235 dBm";
        QTest::newRow("name like a place") << getPowerRangeToast(0, 1, "at %2") << "Valid at %2  range: 0 dBm to 1 dBm";
    }

    void rangeMessage() {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(text, expected);
    }

private:
    static double plainFreq(double& value, std::string& unit) { return normalizeListFreq(value, unit, value, unit); }
    static double plainTime(double& value, std::string& unit) { return normalizeListTime(value, unit, value, unit); }
    static double plainPower(double& value, std::string& unit) { return normalizeListPower(value, unit, value, unit); }

    static bool check(Kind kind, double& outValue, double min, double max, double value, const QString& unit,
                      MessageSink* sink) {
        std::string outUnit;
        const std::string inUnit = unit.toStdString();
        if (kind == Kind::Power)
            return normalizeListPower(outValue, outUnit, min, max, value, inUnit, sink, nullptr, "It");
        return kind == Kind::Time ? normalizeListTime(outValue, outUnit, min, max, value, inUnit, sink, "It")
                                  : normalizeListFreq(outValue, outUnit, min, max, value, inUnit, sink, "It");
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestNormalize)
#include "tst_normalize.moc"
