#include "common/update/fpga_image.h"
#include "common/update/fpga_trailer.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

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

QString lastDebugLine;

void catchDebug(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtDebugMsg)
        lastDebugLine = text;
}

} // namespace

class TestFpgaImage : public TestBase {
    Q_OBJECT

private slots:
    void verdict_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("line"); // a pattern
        const QString tooSmall("FPGA image too small for signature");
        const QString good("Loading velda_top FPGA 2 \\. 7 Date: 21 - 11 - 2024");
        QByteArray wrongCrcAndName = signedFile("abc", "other");
        wrongCrcAndName[0] = 'x';
        QTest::newRow("empty") << QByteArray() << tooSmall;
        QTest::newRow("33 bytes that end well") << signedFile("").right(33) << tooSmall;
        QTest::newRow("34 bytes") << signedFile("") << good;
        QTest::newRow("35 bytes") << signedFile("a") << good;
        QTest::newRow("a block and one") << signedFile(QByteArray(1025, 'a')) << good;
        QTest::newRow("unsigned") << QByteArray(100, 'a') << "FPGA image is not signed";
        QTest::newRow("identifier in lower case") << signedFile("abc", "velda_top", "kvs1") << "FPGA image is not signed";
        QTest::newRow("identifier elsewhere") << ("KVS1" + QByteArray(100, 'a')) << "FPGA image is not signed";
        QTest::newRow("something behind it") << (signedFile("abc") + "\n") << "FPGA image is not signed";
        QTest::newRow("CRC before name") << wrongCrcAndName << "Image CRC failure: [0-9a-f]+ vs [0-9a-f]+";
        QTest::newRow("another design") << signedFile("abc", "other") << "Wrong project: other";
        QTest::newRow("design in capitals") << signedFile("abc", "VELDA_TOP") << "Wrong project: VELDA_TOP";
        QTest::newRow("one character more") << signedFile("abc", "velda_top2") << "Wrong project: velda_top2";
        QTest::newRow("one character less") << signedFile("abc", "velda_to") << "Wrong project: velda_to";
        QTest::newRow("no design") << signedFile("abc", "") << "Wrong project: ";
        QTest::newRow("garbage after the NUL") << signedFile("abc", QByteArray("velda_top\0zzz", 13)) << good;
        QTest::newRow("no NUL at all") << signedFile("abc", "velda_top_velda_top_") << "Wrong project: velda_top_velda_top_";
        QTest::newRow("no printable name") << signedFile("abc", "a\n\xff\x1b") << "Wrong project: a\\?\\?\\?";
        // clang-format on
    }

    void verdict() {
        QFETCH(QByteArray, file);
        QFETCH(QString, line);
        const QByteArray before(file.constData(), file.size());
        const QtMessageHandler former = qInstallMessageHandler(catchDebug);
        lastDebugLine.clear();
        const bool ok = authenticateFpgaImage(file);
        qInstallMessageHandler(former);
        QCOMPARE(ok, line.startsWith("Loading"));
        QVERIFY2(QRegularExpression('^' + line + '$').match(lastDebugLine).hasMatch(), qPrintable(lastDebugLine));
        QCOMPARE(file, before);
        if (ok)
            QCOMPARE(removeSignature(file), before.left(before.size() - 34));
    }

    void everyFlippedBitIsFound() {
        const QByteArray good = signedFile("some image");
        for (int bit = 0; bit < good.size() * 8; ++bit) {
            QByteArray bad = good;
            bad[bit / 8] = static_cast<char>(bad[bit / 8] ^ (1 << bit % 8));
            QVERIFY2(!checkFpgaImage(bad).ok, qPrintable(QString("bit %1").arg(bit)));
        }
    }

    void everyCutIsFound() {
        const QByteArray good = signedFile(QByteArray(50, 'i'));
        for (int size = 0; size < good.size(); ++size) {
            QVERIFY(!checkFpgaImage(good.left(size)).ok);
            if (size > 0)
                QVERIFY(!checkFpgaImage(good.right(size)).ok || size >= 34); // cut in front, the CRC has to notice
        }
    }

    void trailerIsWrittenAsItIsRead() {
        FpgaTrailer trailer;
        trailer.versionMajor = 2;
        trailer.versionMinor = 7;
        trailer.year = 2024;
        trailer.month = 11;
        trailer.day = 21;
        trailer.design = "velda_top";
        QCOMPARE(withFpgaTrailer("an image", trailer), signedFile("an image"));
        trailer.design = "a name of more than nineteen characters";
        QCOMPARE(withFpgaTrailer("", trailer), signedFile("", "a name of more than"));
    }

    void load_data() {
        // clang-format off
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("warning");
        const QString cannot("Cannot open FPGA image:\n%1");
        QTest::newRow("good") << "good" << "" << "";
        QTest::newRow("missing") << "missing" << cannot << "";
        QTest::newRow("a folder") << "folder" << cannot << "";
        QTest::newRow("a device") << "device" << cannot << "";
        QTest::newRow("unreadable") << "unreadable" << cannot << "cannot be read to its end";
        QTest::newRow("bad") << "bad"
                             << "FPGA image authentication failed.\n\nThe image may be corrupted, unsigned,\nor not "
                                "intended for this device."
                             << "";
        QTest::newRow("too large") << "large" << "FPGA update failed (timeout/communication error)." << "more blocks";
        // clang-format on
    }

    void load() {
        QFETCH(QString, what);
        QFETCH(QString, error);
        QFETCH(QString, warning);
        const QString path = m_dir.filePath(what);
        QFile file(path);
        if (what == "folder") {
            QVERIFY(QDir().mkpath(path));
        } else if (what == "device") {
            QVERIFY(QFile::link("/dev/zero", path));
        } else if (what == "unreadable") {
            QVERIFY(QFile::link("/proc/self/mem", path)); // opens, and fails when it is read, as a pulled stick does
        } else if (what != "missing") {
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(what == "bad" ? signedFile("abc", "other") : signedFile("abc"));
            if (what == "large")
                QVERIFY(file.resize(65534LL * 1024 + 35)); // sparse
            file.close();
        }
        if (!warning.isEmpty())
            expectMessage(warning);
        QByteArray image("untouched");
        QString got;
        QCOMPARE(loadFpgaImage(path, image, got), error.isEmpty());
        QCOMPARE(got, error.contains("%1") ? error.arg(path) : error);
        QCOMPARE(image, error.isEmpty() ? QByteArray("abc") : QByteArray("untouched"));
    }

protected:
    void setUp() override { QVERIFY(m_dir.isValid()); }

private:
    QTemporaryDir m_dir;
};

VELDA_TEST_MAIN(QCoreApplication, TestFpgaImage)
#include "tst_fpga_image.moc"
