#include "platform/devicepaths.h"
#include "platform/veldapath.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

namespace {

const char* const kVariables[] = {"VELDA_HOME",           "VELDA_LOG_DIR",   "VELDA_MODULE_DROP", "VELDA_MEDIA",
                                  "VELDA_FPGA_ADDRESSES", "VELDA_NET_CLASS", "VELDA_USER"};

using Place = QString (*)();
QString boards() {
    return DevicePaths::fpgaAddresses().join(' ');
}

} // namespace

Q_DECLARE_METATYPE(Place)

class TestDevicePaths : public TestBase {
    Q_OBJECT

private slots:
    void place_data() {
        QTest::addColumn<Place>("function");
        QTest::addColumn<QByteArray>("variable");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, Place place, const char* variable, const char* value,
                            const char* expected) {
            addRow(name, place, QByteArray(variable), QByteArray(value), QString(expected));
        };
        row("data root", DevicePaths::dataRoot, "VELDA_HOME", "", "/home/velda");
        row("data root moved", DevicePaths::dataRoot, "VELDA_HOME", "/tmp/v/", "/tmp/v");
        row("log", DevicePaths::logFolder, "VELDA_LOG_DIR", "", "/home/velda/kavor/log");
        row("log moved", DevicePaths::logFolder, "VELDA_LOG_DIR", "/tmp/l", "/tmp/l");
        row("log follows the data root", DevicePaths::logFolder, "VELDA_HOME", "/tmp/v", "/tmp/v/kavor/log");
        row("drop folder", DevicePaths::moduleDropFolder, "VELDA_MODULE_DROP", "", "/home/velda/kavor/upgrade/veldax/");
        row("drop folder moved", DevicePaths::moduleDropFolder, "VELDA_MODULE_DROP", "/tmp/d", "/tmp/d/");
        row("media", DevicePaths::mediaRoot, "VELDA_MEDIA", "", "/media");
        row("media moved", DevicePaths::mediaRoot, "VELDA_MEDIA", "/tmp/m/", "/tmp/m");
        row("net class", DevicePaths::netClassFolder, "VELDA_NET_CLASS", "", "/sys/class/net");
        row("net class moved", DevicePaths::netClassFolder, "VELDA_NET_CLASS", "/tmp/n", "/tmp/n");
        row("boards", boards, "VELDA_FPGA_ADDRESSES", "", "192.168.7.1 192.168.8.1 192.168.9.1 192.168.10.1");
        row("boards moved", boards, "VELDA_FPGA_ADDRESSES", " 127.0.0.2, 127.0.0.3 ,,", "127.0.0.2 127.0.0.3");
    }

    void place() {
        QFETCH(Place, function);
        QFETCH(QByteArray, variable);
        QFETCH(QByteArray, value);
        qputenv(variable.constData(), value);
        QTEST(function(), "expected");
    }

    void dataPath_data() {
        // clang-format off
        QTest::addColumn<QString>("relative");
        QTest::addColumn<QString>("expected");
        addRow("folder keeps its slash", "/kavor/list/", "/data/kavor/list/");
        addRow("file", "/tmpfw", "/data/tmpfw");
        addRow("empty", "", "/data");
        // clang-format on
    }

    void dataPath() {
        QFETCH(QString, relative);
        qputenv("VELDA_HOME", "/data");
        QTEST(CVeldaPath(relative).get_path(), "expected");
    }

    void userNameIsTheAccountUnlessMoved() {
        const QByteArray before = qgetenv("USER");
        qputenv("USER", "anna");
        QCOMPARE(CVeldaPath().get_user_name(), QString("anna"));
        qputenv("VELDA_USER", "bert");
        QCOMPARE(CVeldaPath().get_user_name(), QString("bert"));
        qunsetenv("VELDA_USER");
        qunsetenv("USER");
        QVERIFY(!CVeldaPath().get_user_name().isEmpty());
        if (!before.isNull())
            qputenv("USER", before);
    }

protected:
    void setUp() override {
        for (const char* variable : kVariables)
            qunsetenv(variable);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestDevicePaths)
#include "tst_devicepaths.moc"
