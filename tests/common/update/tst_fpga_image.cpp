#include "common/update/fpga_image.h"
#include "common/update/update_texts.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <zlib.h>

namespace {

// A trailer put together by hand: the layout is the contract with the boards' build and must not follow the reader.
QByteArray signedFile(const QByteArray& image, const QByteArray& design = "velda_top",
                      const QByteArray& mark = "KVS1") {
    QByteArray file =
        image + mark + QByteArray::fromHex("0207e8070b15") + design + QByteArray(20 - design.size(), '\0');
    const auto crc = static_cast<quint32>(
        crc32(0, reinterpret_cast<const Bytef*>(file.constData()), static_cast<uInt>(file.size())));
    for (int shift = 0; shift < 32; shift += 8)
        file += static_cast<char>(crc >> shift & 0xFF);
    return file;
}

} // namespace

class TestFpgaImage : public TestBase {
    Q_OBJECT

private slots:
    void verdict_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("line"); // its beginning
        const QString good("Loading velda_top FPGA 2 . 7 Date: 21 - 11 - 2024");
        QByteArray wrongCrcAndName = signedFile("abc", "other");
        wrongCrcAndName[0] = 'x';
        addRow("33 bytes that end well", signedFile("").right(33), "FPGA image too small for signature");
        addRow("34 bytes", signedFile(""), good);
        addRow("CRC before name", wrongCrcAndName, "Image CRC failure: ");
        addRow("garbage after the NUL", signedFile("abc", QByteArray("velda_top\0zzz", 13)), good);
        addRow("no printable name", signedFile("abc", "a\n\xff\x1b"), "Wrong project: a???");
    }

    void verdict() {
        QFETCH(QByteArray, file);
        QFETCH(QString, line);
        const FpgaImageCheck check = checkFpgaImage(file);
        QCOMPARE(check.ok, line.startsWith("Loading"));
        QVERIFY2(check.line.startsWith(line), qPrintable(check.line));
    }

    // As a stick that is pulled: a file opens, and fails when it is read, or ends before its size.
    void unreadable() {
        const TestFolder folder;
        QByteArray image("untouched");
        QString error;
        for (const QString& file : QStringList{"/sys/class/net/lo/speed", "/sys/class/net/lo/mtu", "/dev/zero"}) {
            if (file != "/dev/zero")
                expectMessage("cannot be read to its end");
            QVERIFY(!loadFpgaImage(file, image, error));
            QCOMPARE(error, "Cannot open FPGA image:\n" + file);
        }
        // One byte more than can be sent: what is none is refused as such.
        const QString large = folder.put("large", signedFile(QByteArray(65534 * 1024 + 1, '\0')));
        expectMessage("more blocks");
        QVERIFY(!loadFpgaImage(large, image, error));
        QCOMPARE(error, UpdateTexts::fpgaFailed());
        for (const qint64 size : {65534LL * 1024 + 36, 70LL * 1024 * 1024}) { // sparse
            QVERIFY(QFile::resize(large, size));
            QVERIFY(!loadFpgaImage(large, image, error));
            QCOMPARE(error, UpdateTexts::imageRefused());
        }
        QCOMPARE(image, QByteArray("untouched"));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestFpgaImage)
#include "tst_fpga_image.moc"
