#include "platform/crc32utils.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

class TestCrc32Utils : public TestBase {
    Q_OBJECT

private slots:
    void sameValueInAnyPieces_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("piece");
        QTest::addColumn<quint32>("crc");
        addRow("check value at once", QByteArray("123456789"), 9, quint32{0xCBF43926});
        addRow("check value, uneven pieces", QByteArray("123456789"), 4, quint32{0xCBF43926});
        addRow("no bytes", QByteArray(), 1, quint32{0});
        addRow("four 0xFF", QByteArray(4, '\xFF'), 3, quint32{0xFFFFFFFF});
    }

    void sameValueInAnyPieces() {
        QFETCH(QByteArray, bytes);
        QFETCH(int, piece);
        const Crc32Utils* utils = Crc32Utils::getInstance();
        std::uint32_t crc = utils->crc32_init();
        for (int at = 0; at < bytes.size(); at += piece)
            crc = utils->calculate_crc32(crc, bytes.constData() + at, std::min(piece, bytes.size() - at));
        QTEST(utils->crc32_signoff(crc), "crc");
    }

    void nothingToReadLeavesTheRegister() {
        const Crc32Utils* utils = Crc32Utils::getInstance();
        for (const int length : {0, -1, std::numeric_limits<int>::min()})
            QCOMPARE(utils->calculate_crc32(0x12345678U, "abc", length), 0x12345678U);
        QCOMPARE(utils->calculate_crc32(0x12345678U, nullptr, 5), 0x12345678U);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestCrc32Utils)
#include "tst_crc32utils.moc"
