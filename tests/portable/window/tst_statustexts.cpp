#include "portable/window/statustexts.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

using namespace Kavor::HandheldGui;

class StatusTextsTest : public TestBase {
    Q_OBJECT

private slots:
    void frequency_data() {
        QTest::addColumn<double>("hertz");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QString>("text");
        addRow("GHz", 1.5e9, "GHz", "  Frequency: 1.500000000000 GHz");
        addRow("MHz", 1.5e9, "MHz", "  Frequency: 1500.000000000 MHz");
        addRow("KHz", 9000.001, "KHz", "  Frequency: 9.000001 KHz");
        addRow("Hz", 9000.001, "Hz", "  Frequency: 9000.001 Hz");
        addRow("lower-case k is no unit", 9000.0, "kHz", "  Frequency:  kHz");
    }
    void frequency() {
        QFETCH(double, hertz);
        QFETCH(QString, unit);
        QTEST(statusFrequencyText(hertz, unit), "text");
    }

    void mode_data() {
        QTest::addColumn<unsigned>("mask");
        QTest::addColumn<QString>("text");
        addRow("none", 0U, "Mode: CW");
        addRow("two", 0x21U, "Mode: AM, Pulse");
        addRow("all", 0xFFU, "Mode: AM, FM, PM, FRSW, PRSW, Pulse, List, Pattern");
        addRow("bits above 7 are ignored", 0x102U, "Mode: FM");
    }
    void mode() {
        QFETCH(unsigned, mask);
        QTEST(statusModeText(mask, QStringLiteral("CW")), "text");
    }

    void conflict_data() {
        QTest::addColumn<int>("requested");
        QTest::addColumn<int>("conflict");
        QTest::addColumn<QString>("text");
        addRow("nothing enabled", 0, -1, "no mudulation enabled");
        addRow("AM comes first", 0x02, 0x05, "cannot enable FM with AM on");
        addRow("lowest bit in the way", 0x08, 0xF0, "cannot enable FRSW with PRSW on");
        addRow("the whole set", 0, 0x20, "combination of modulation not supported");
        addRow("unknown bits only", 0x01, 0x100, "");
        addRow("unknown bits only, whole set", 0, 0x100, "");
    }
    void conflict() {
        QFETCH(int, requested);
        QFETCH(int, conflict);
        QTEST(conflictText(requested, conflict), "text");
    }
};

VELDA_TEST_MAIN(QCoreApplication, StatusTextsTest)
#include "tst_statustexts.moc"
