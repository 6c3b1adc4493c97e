#include "common/update/fpga_image.h"
#include "tests/common/update/test_folder.h"
#include "tests/support/testbase.h"
#include "tests/tools/tool_run.h"

class TestFpgaSign : public TestBase {
    Q_OBJECT

private slots:
    void signedImageIsTakenByTheInstrument() {
        const ToolRun run =
            runTool("fpga-sign", {"--version", "255.0", "--date", "2024-02-29", "sign", at("image"), at("out")});
        QCOMPARE(run.code, 0);
        QCOMPARE(m_dir->contentOf("out").left(30 + 5),
                 "imageKVS1" + QByteArray::fromHex("ff00e807021d") + "velda_top" + QByteArray(11, '\0'));
        QByteArray image;
        QString error;
        QVERIFY2(loadFpgaImage(at("out"), image, error), qPrintable(error));
        QCOMPARE(image, QByteArray("image"));
    }

    void refusal_data() {
        QTest::addColumn<QString>("arguments"); // file names below the test's folder are marked with @
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* arguments, int code, const char* error) {
            addRow(arguments, QString(arguments), code, QString(error));
        };
        row("", 2, "say sign or check");
        row("paint @image", 2, "say sign or check");
        row("--colour sign @image @out", 2, "Unknown option");
        row("--version 1.2 sign @image", 2, "takes an image and the file");
        row("check", 2, "takes signed files");
        row("--version 1.2 check @signed", 2, "no options");
        for (const char* version : {"", "1", "1.2.3", "256.0", "0.256", "-1.0", "1.x"})
            row(qPrintable(QString("--version=%1 sign @image @out").arg(version)), 1, "version is to be");
        for (const char* date : {"2024-02-30", "21.11.2024"})
            row(qPrintable(QString("--version 1.2 --date %1 sign @image @out").arg(date)), 1, "date is to be");
        for (const char* design : {"", "twenty_characters_abc", "t\xC3\xB6p"})
            row(qPrintable(QString("--version 1.2 --design=%1 sign @image @out").arg(design)), 1,
                "design name is to be");
        row("--version 1.2 sign @none @out", 1, "is no file");
        row("--version 1.2 sign /dev/null @out", 1, "is no file");
        row("--version 1.2 sign @large @out", 1, "holds more than 67106816 bytes");
        row("--version 1.2 sign @signed @out", 1, "is signed already");
        row("--version 1.2 sign @image @none/out", 1, "cannot be written");
        row("check @none", 1, "is no file");
        row("check @image", 1, "too small for signature");
    }

    void refusal() {
        QFETCH(QString, arguments);
        QFETCH(QString, error);
        const ToolRun run =
            runTool("fpga-sign", QString(arguments).replace('@', m_dir->path() + '/').split(' ', Qt::SkipEmptyParts));
        QTEST(run.code, "code");
        QVERIFY2(run.error.startsWith("fpga-sign: ") && run.error.contains(error), qPrintable(run.error));
        QVERIFY(!QFile::exists(at("out")));
    }

    void checkNamesEachBadFile() {
        QByteArray flipped = m_dir->contentOf("signed");
        flipped[2] = static_cast<char>(flipped[2] ^ 1);
        m_dir->put("flipped", flipped);
        QCOMPARE(runTool("fpga-sign", {"--version", "1.2", "--design", "other", "sign", at("image"), at("other")}).code,
                 0);
        const ToolRun run = runTool("fpga-sign", {"check", at("flipped"), at("signed"), at("other")});
        QCOMPARE(run.code, 1);
        QVERIFY2(run.error.contains("flipped: Image CRC failure: ") &&
                     run.error.contains("other: Wrong project: other"),
                 qPrintable(run.error));
        QVERIFY2(run.output.startsWith(at("signed: Loading velda_top FPGA 1 . 2 ")) &&
                     run.output.endsWith("5 bytes in 1 blocks\n"),
                 qPrintable(run.output));
    }

protected:
    void setUp() override {
        m_dir = std::make_unique<TestFolder>();
        m_dir->put("image", "image");
        QVERIFY(QFile::resize(m_dir->put("large", ""), 65534LL * 1024 + 1)); // sparse
        QCOMPARE(runTool("fpga-sign", {"--version", "1.2", "sign", at("image"), at("signed")}).code, 0);
    }

private:
    QString at(const QString& name) const { return m_dir->at(name); }

    std::unique_ptr<TestFolder> m_dir;
};

VELDA_TEST_MAIN(QCoreApplication, TestFpgaSign)
#include "tst_fpga_sign.moc"
