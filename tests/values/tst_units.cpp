#include "tests/support/testbase.h"
#include "values/formatting.h"
#include "values/units.h"

#include <cmath>
#include <tuple>

Q_DECLARE_METATYPE(UnitQuantity)

namespace {

const QString MicroSecond = QString::fromUtf8("\xC2\xB5s");
const QString GreekMicroSecond = QString::fromUtf8("\xCE\xBCs");
const QString MicroVolt = QString::fromUtf8("\xC2\xB5V");
const QString DecibelMicroVolt = QString::fromUtf8("dB\xC2\xB5V");

bool near(double actual, double expected) {
    return std::abs(actual - expected) <= 1e-9 * std::max(1.0, std::abs(expected));
}

} // namespace

class TestUnits : public TestBase {
    Q_OBJECT

private slots:
    void conversion_data() {
        QTest::addColumn<UnitQuantity>("quantity");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<double>("canonical");
        const auto row = [](UnitQuantity quantity, double value, const QString& unit, bool ok, double canonical) {
            QTest::addRow("%d %g %s", int(quantity), value, unit.toUtf8().constData())
                << quantity << value << unit << ok << canonical;
        };
        row(UnitQuantity::Frequency, 1.5, "GHz", true, 1.5e9);
        row(UnitQuantity::Frequency, 0.5, "Hz", true, 0.5);
        row(UnitQuantity::Frequency, 9, "kHz", false, 9);
        row(UnitQuantity::Time, 2, "s", true, 2e9);
        row(UnitQuantity::Time, 7, MicroSecond, true, 7e3);
        row(UnitQuantity::Time, 7, GreekMicroSecond, false, 7);
        row(UnitQuantity::Power, 106.98970004336019, DecibelMicroVolt, true, 0);
        row(UnitQuantity::Power, 1000, "mV", true, 13.010299956639813);
        row(UnitQuantity::Power, 5, "W", false, 5);
        row(UnitQuantity::Unitless, 5, "Hz", false, 5);
    }

    void conversion() {
        QFETCH(UnitQuantity, quantity);
        QFETCH(double, value);
        QFETCH(QString, unit);
        QFETCH(bool, ok);
        QFETCH(double, canonical);
        double out = -1;
        QCOMPARE(unitToCanonical(quantity, value, unit, out), ok);
        QVERIFY2(near(out, canonical), qPrintable(QString::number(out, 'g', 17)));
        out = -1;
        QCOMPARE(canonicalToUnit(quantity, canonical, unit, out), ok);
        QVERIFY2(near(out, value), qPrintable(QString::number(out, 'g', 17)));
    }

    // A limit that is typed as it is shown must not fall beside itself.
    void decimalNumbersConvertExactly() {
        for (const auto& [value, factor, product] : {std::tuple(1e-7, 1e6, 0.1),
                                                     {0.000000105, 1e6, 0.105},
                                                     {1.001, 1e3, 1001.0},
                                                     {-0.0000000009, 1e9, -0.9},
                                                     {6.000000000001, 1e9, 6000000000.001},
                                                     {1e305, 1e9, HUGE_VAL},
                                                     {0.0, 1e9, 0.0},
                                                     {0.1, 1.0, 0.1}})
            QVERIFY2(timesPowerOfTen(value, factor) == product, qPrintable(QString::number(value)));
    }

    void zeroHasNoSign() {
        QCOMPARE(fixedNumber(-0.004, 2), QString("0.00"));
        QCOMPARE(fixedNumber(-0.005000001, 2), QString("-0.01"));
        QCOMPARE(formatNumber(-0.0001, 3), QString("0"));
        QCOMPARE(plainNumber(-0.0), QString("0"));
        QCOMPARE(plainNumber(-1.5e-7), QString("-0.00000015"));
        QCOMPARE(plainNumber(1234567.0), QString("1234567"));
    }

    void powerRefusesVoltagesNotAboveZero() {
        for (const QString& unit : {QString("mV"), MicroVolt}) {
            for (double value : {0.0, -1.0, double(NAN)}) {
                double out = 42;
                QVERIFY(!powerToDbm(value, unit.toStdString(), out));
                QVERIFY(std::isnan(value) ? std::isnan(out) : out == value);
            }
        }
    }

    void parsing_data() {
        QTest::addColumn<double>("expected"); // NaN: no number
        QTest::addColumn<bool>("typeable");
        addRow(" 12.5\t", 12.5, false);
        addRow("1e3", 1000.0, false);
        addRow("1,5", qQNaN(), false);
        addRow("", qQNaN(), true);
        addRow(".", qQNaN(), true);
        addRow("1e999", qQNaN(), false);
        addRow("-7.50", -7.5, true);
        addRow("5.", 5.0, true);
    }

    void parsing() {
        QFETCH(double, expected);
        const QString text = QTest::currentDataTag();
        double out = -1;
        QCOMPARE(parseDouble(text, out), !std::isnan(expected));
        QCOMPARE(out, std::isnan(expected) ? 0 : expected);
        QTEST(kNumericRe.match(text).hasMatch(), "typeable");
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestUnits)
#include "tst_units.moc"
