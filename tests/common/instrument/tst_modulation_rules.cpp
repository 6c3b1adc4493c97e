#include "common/instrument/modulation_rules.h"
#include "common/instrument/scpi_words.h"
#include "tests/support/testbase.h"

class TestModulationRules : public TestBase {
    Q_OBJECT

private slots:
    void combinations_data() {
        QTest::addColumn<unsigned>("requested");
        QTest::addColumn<unsigned>("mask");
        QTest::addColumn<int>("result");

        addRow("a kind, empty mask", 0x02U, 0x00U, -1);
        addRow("AM beside FM", 0x01U, 0x03U, 0x02);
        addRow("AM beside all", 0x01U, 0xFFU, 0xFE);
        addRow("PM beside FM", 0x04U, 0x06U, 0x02);
        addRow("sweep beside power sweep", 0x08U, 0x18U, 0x10);
        addRow("power sweep beside list and FM", 0x10U, 0x52U, 0x40);
        addRow("pulse beside pattern", 0x20U, 0xA0U, 0x80);
        addRow("list beside pulse", 0x40U, 0x60U, 0x20);
        addRow("pattern beside sweep and PM", 0x80U, 0x8CU, 0x08);
        addRow("kind that is not in the mask", 0x08U, 0x31U, 0);
        addRow("of two kinds the lowest rules", 0x22U, 0x62U, 0);
        addRow("bits that are no kind", 0x100U, 0x103U, 0);
        addRow("whole mask: FM with list", 0x00U, 0x42U, 0);
        addRow("whole mask: sweep and pulse", 0x00U, 0x28U, 0x20);
        addRow("whole mask: AM first", 0x00U, 0x07U, 0x06);
        addRow("whole mask: later rows", 0x00U, 0xC2U, 0x80);
    }

    void combinations() {
        QFETCH(unsigned, requested);
        QFETCH(unsigned, mask);
        QTEST(canModulate(static_cast<modEnableBitMask>(requested), mask), "result");
    }

    // One wrong bit in the table would let a pair run when it is enabled in one order only.
    void exclusionIsMutual() {
        for (std::size_t a = 0; a < modRestrictTable.size(); ++a) {
            QCOMPARE(modRestrictTable[a].first, 1U << a);
            for (std::size_t b = 0; b < modRestrictTable.size(); ++b) {
                const bool forward = (modRestrictTable[a].second & modRestrictTable[b].first) != 0;
                const bool backward = (modRestrictTable[b].second & modRestrictTable[a].first) != 0;
                QVERIFY2(forward == backward, qPrintable(QString("%1 %2").arg(ModulationNames[a], ModulationNames[b])));
            }
        }
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestModulationRules)
#include "tst_modulation_rules.moc"
