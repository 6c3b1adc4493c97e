#include "common/instrument/modulations.h"
#include "tests/support/testbase.h"

class TestModulations : public TestBase {
    Q_OBJECT

private slots:
    void combinations() {
        // The kind that is asked for (none: the whole mask is judged), the mask, and what is in the way.
        for (const auto& [requested, mask, result] : {std::tuple(0x02U, 0x00U, -1),
                                                      {0x01U, 0xFFU, 0xFE},
                                                      {0x04U, 0x06U, 0x02},
                                                      {0x40U, 0x60U, 0x20},
                                                      {0x80U, 0x8CU, 0x08},
                                                      {0x00U, 0x42U, 0},
                                                      {0x00U, 0x28U, 0x20},
                                                      {0x00U, 0xC2U, 0x80}})
            QCOMPARE(canModulate(static_cast<modEnableBitMask>(requested), mask), result);
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

VELDA_TEST_MAIN(QCoreApplication, TestModulations)
#include "tst_modulations.moc"
