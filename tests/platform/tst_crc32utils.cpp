#include "platform/crc32utils.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

class TestCrc32Utils : public TestBase {
    Q_OBJECT

private slots:
    void sameValueInAnyPieces() {
        const Crc32Utils* utils = Crc32Utils::getInstance();
        const QByteArray bytes("123456789");
        for (const int piece : {9, 4}) {
            std::uint32_t crc = utils->crc32_init();
            for (int at = 0; at < bytes.size(); at += piece)
                crc = utils->calculate_crc32(crc, bytes.constData() + at, std::min(piece, bytes.size() - at));
            QCOMPARE(utils->crc32_signoff(crc), 0xCBF43926U);
        }
    }

    void nothingToReadLeavesTheRegister() {
        const Crc32Utils* utils = Crc32Utils::getInstance();
        for (const int length : {0, -1, std::numeric_limits<int>::min()})
            QCOMPARE(utils->calculate_crc32(0x12345678U, "abc", length), 0x12345678U);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestCrc32Utils)
#include "tst_crc32utils.moc"
