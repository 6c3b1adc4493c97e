#include "tests/support/testbase.h"
#include "tests/values/recordingsink.h"
#include "values/formatting.h"
#include "values/normalize.h"
#include "values/rangemessages.h"
#include "values/units.h"

#include <QStringList>
#include <cmath>

namespace {

const QString MicroSecond = QString::fromUtf8("\xC2\xB5s");

enum class Kind { Frequency, Time, Power };

QString number(double value) {
    return QString::number(value, 'g', 15);
}

/// The unit, by its place in a table of kScale or (-1) of times, and the value in it.
QString best(int table, double canonical) {
    const CalcResult result = calculateNormalization(canonical, table < 0 ? timeScales : kScale[table], table < 0);
    return QString("%1 in %2").arg(number(result.value)).arg(result.index) +
           (result.canonical == canonical ? "" : " and the canonical value is lost");
}

/// What a list shows for an entry, and what it is. The variables that a step holds are both source and target.
QString shown(Kind kind, double value, const QString& unit) {
    std::string outUnit = unit.toStdString();
    const auto normalize = [&](auto function) {
        return function(value, outUnit, value, outUnit);
    };
    const double canonical = kind == Kind::Frequency ? normalize([](auto&... a) { return normalizeListFreq(a...); })
                             : kind == Kind::Time    ? normalize([](auto&... a) { return normalizeListTime(a...); })
                                                     : normalize([](auto&... a) { return normalizeListPower(a...); });
    return QString("%1 %2 is %3").arg(number(value), QString::fromStdString(outUnit), number(canonical));
}

/// "taken" or "refused", what is shown (-1: nothing), and what the user is told for how long (0: the usual time).
QString checked(Kind kind, double value, const QString& unit, double min, double max) {
    const auto check = [&](double entered, double& outValue, MessageSink* sink) {
        std::string outUnit;
        const std::string inUnit = unit.toStdString();
        if (kind == Kind::Power)
            return normalizeListPower(outValue, outUnit, min, max, entered, inUnit, sink, nullptr, "It");
        return kind == Kind::Time ? normalizeListTime(outValue, outUnit, min, max, entered, inUnit, sink, "It")
                                  : normalizeListFreq(outValue, outUnit, min, max, entered, inUnit, sink, "It");
    };
    RecordingSink sink;
    double outValue = -1;
    double ignored = 0;
    const bool taken = check(value, outValue, &sink);
    if (check(value, ignored, nullptr) != taken || check(NAN, ignored, nullptr))
        return "another result without somebody to tell, or for what is no number";
    QString told = "|";
    for (int i = 0; i < sink.texts.size(); ++i)
        told += sink.texts.at(i) + '/' + QString::number(sink.times.at(i));
    return QString(taken ? "taken, %1" : "refused, %1").arg(number(outValue)) + told;
}

} // namespace

class TestNormalize : public TestBase {
    Q_OBJECT

private slots:
    void results_data() {
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString& result, const QString& expected) {
            addRow(expected.toUtf8().constData(), result, expected);
        };
        const Kind frequency = Kind::Frequency;
        row(best(0, 1e9), "1 in 0");
        row(best(0, 999999999), "999.999999 in 1");
        row(best(-1, 1000), "1 in 1");
        row(best(-1, 999999999.9), "999.9999999 in 2");

        row(shown(frequency, 2400, "MHz"), "2.4 GHz is 2400000000");
        row(shown(frequency, 5000, "kHz"), "5 KHz is 5000");
        row(shown(frequency, 7, ""), "7 Hz is 7");
        row(shown(Kind::Time, 1000, MicroSecond), "1 ms is 1000000");
        row(shown(Kind::Time, 2000, "hours"), "2 " + MicroSecond + " is 2000");
        row(shown(Kind::Power, 1000, "mV"), "1000 mV is 13.0102999566398");
        row(shown(Kind::Power, -5, "mV"), "-5 mV is -5");

        const QString range = "|Valid It  range: 9 KHz to 6 GHz/0";
        const QString power = "|Valid It  range: -120 dBm to 10 dBm/0";
        row(checked(frequency, 9, "KHz", 9e3, 6e9), "taken, 9|");
        row(checked(frequency, 6000, "MHz", 9e3, 6e9), "taken, 6|");
        row(checked(frequency, 8999, "Hz", 9e3, 6e9), "refused, 8.999" + range);
        row(checked(frequency, 6000.5, "MHz", 9e3, 6e9), "refused, 6.0005" + range);
        row(checked(Kind::Time, 19, "ns", 20, 1e9), "refused, 19|Valid It  range: 20 ns to 1 s/0");
        row(checked(Kind::Power, 10, "dBm", -120, 10), "taken, 10|");
        row(checked(Kind::Power, 10.01, "dBm", -120, 10), "refused, -1" + power);
        row(checked(Kind::Power, -5, "mV", -120, 10), "refused, -1|Invalid power value or unit/0");

        row(getFreqRangeToast(1.23456789, 1234567891, "X"), "Valid X  range: 1.23457 Hz to 1.23457 GHz");

        row(formatNumber(1.5, 6), "1.5");
        row(formatFrequency(2400000, "KHz"), "2.4 GHz");
        row(formatFrequency(-3, "GHz"), "-3000000000 Hz");
        row(formatFrequency(6000000000.001, "Hz"), "6.000000000001 GHz");
        row(formatTime(1500, MicroSecond.toStdString()), "1.5 ms");
        row(formatTime(0, "s"), "0 ns");
    }

    void results() {
        QFETCH(QString, result);
        QTEST(result, "expected");
    }

    void powerCheckHandsOutDbmOnceConverted() {
        double shown = 0;
        std::string unit;
        double dBm = 42;
        QVERIFY(!normalizeListPower(shown, unit, 0, 20, 0, "mV", nullptr, &dBm, ""));
        QCOMPARE(dBm, 42.0);
        QVERIFY(!normalizeListPower(shown, unit, 0, 10, 1000, "mV", nullptr, &dBm, ""));
        QCOMPARE(dBm, 13.010299956639813);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestNormalize)
#include "tst_normalize.moc"
