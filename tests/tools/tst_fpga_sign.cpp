#include "common/update/fpga_image.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"
#include "tests/support/tool_run.h"

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
        QTest::addColumn<QString>("error");
        const auto row = [](const char* arguments, const char* error) {
            addRow(arguments, QString(arguments), QString(error));
        };
        row("--version=256.0 sign @image @out", "version is to be");
        row("--version 1.2 --date 2024-02-30 sign @image @out", "date is to be");
        row("--version 1.2 sign /dev/null @out", "is no file");
        row("--version 1.2 sign @signed @out", "is signed already");
    }

    void refusal() {
        QFETCH(QString, arguments);
        QFETCH(QString, error);
        const ToolRun run =
            runTool("fpga-sign", QString(arguments).replace('@', m_dir->path() + '/').split(' ', Qt::SkipEmptyParts));
        QCOMPARE(run.code, 1);
        QVERIFY2(run.error.startsWith("fpga-sign: ") && run.error.contains(error), qPrintable(run.error));
        QVERIFY(!QFile::exists(at("out")));
    }

protected:
    void setUp() override {
        m_dir = std::make_unique<TestFolder>();
        m_dir->put("image", "image");
        QCOMPARE(runTool("fpga-sign", {"--version", "1.2", "sign", at("image"), at("signed")}).code, 0);
    }

private:
    QString at(const QString& name) const { return m_dir->at(name); }

    std::unique_ptr<TestFolder> m_dir;
};

VELDA_TEST_MAIN(QCoreApplication, TestFpgaSign)
#include "tst_fpga_sign.moc"
