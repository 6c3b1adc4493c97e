#include "common/update/fpga_image.h"
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
        addRow("33 bytes that end well", signedFile("").right(33), tooSmall);
        addRow("34 bytes", signedFile(""), good);
        addRow("unsigned", QByteArray(100, 'a'), "FPGA image is not signed");
        addRow("identifier in lower case", signedFile("abc", "velda_top", "kvs1"), "FPGA image is not signed");
        addRow("CRC before name", wrongCrcAndName, "Image CRC failure: [0-9a-f]+ vs [0-9a-f]+");
        addRow("another design", signedFile("abc", "other"), "Wrong project: other");
        addRow("one character more", signedFile("abc", "velda_top2"), "Wrong project: velda_top2");
        addRow("garbage after the NUL", signedFile("abc", QByteArray("velda_top\0zzz", 13)), good);
        addRow("no NUL at all", signedFile("abc", "velda_top_velda_top_"), "Wrong project: velda_top_velda_top_");
        addRow("no printable name", signedFile("abc", "a\n\xff\x1b"), "Wrong project: a\\?\\?\\?");
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

    void load_data() {
        // clang-format off
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("warning");
        const QString cannot("Cannot open FPGA image:\n%1");
        const QString tooEarly("cannot be read to its end");
        addRow("good", "good", "", "");
        addRow("a device", "/dev/zero", cannot, "");
        // As a stick that is pulled: it opens, and fails when it is read, or ends before its size.
        addRow("unreadable", "/proc/self/mem", cannot, tooEarly);
        addRow("ends too early", "/sys/class/net/lo/mtu", cannot, tooEarly);
        addRow("bad", "bad", "FPGA image authentication failed.\n\nThe image may be corrupted, unsigned,\nor not intended for this device.", "");
        addRow("too large", "large", "FPGA update failed (timeout/communication error).", "more blocks");
        // clang-format on
    }

    void load() {
        QFETCH(QString, what);
        QFETCH(QString, error);
        QFETCH(QString, warning);
        const QString path = m_dir.filePath(QTest::currentDataTag());
        if (what.startsWith('/')) {
            QVERIFY(QFile::link(what, path));
        } else {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(what == "bad" ? signedFile("abc", "other") : signedFile("abc"));
            QVERIFY(what != "large" || file.resize(65534LL * 1024 + 35)); // sparse
        }
        if (!warning.isEmpty())
            expectMessage(warning);
        QByteArray image("untouched");
        QString got;
        QCOMPARE(loadFpgaImage(path, image, got), error.isEmpty());
        QCOMPARE(got, error.contains("%1") ? error.arg(path) : error);
        QCOMPARE(image, error.isEmpty() ? QByteArray("abc") : QByteArray("untouched"));
    }

private:
    QTemporaryDir m_dir;
};

VELDA_TEST_MAIN(QCoreApplication, TestFpgaImage)
#include "tst_fpga_image.moc"
