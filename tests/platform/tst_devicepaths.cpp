#include "platform/devicepaths.h"
#include "platform/veldapath.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

namespace {

using Place = QString (*)();

QString boards() {
    return DevicePaths::fpgaAddresses().join(' ');
}

QString listFolder() {
    return CVeldaPath("/kavor/list/").get_path();
}

QString user() {
    return CVeldaPath().get_user_name();
}

} // namespace

class TestDevicePaths : public TestBase {
    Q_OBJECT

private slots:
    void place_data() {
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, Place place, const char* variable, const char* value,
                            const QString& expected) {
            qputenv(variable, value);
            addRow(name, place(), expected);
            qunsetenv(variable);
        };
        row("folder in the data root", listFolder, "VELDA_HOME", "", "/home/velda/kavor/list/");
        row("data root moved", listFolder, "VELDA_HOME", "/tmp/v/", "/tmp/v/kavor/list/");
        row("log follows the data root", DevicePaths::logFolder, "VELDA_HOME", "/tmp/v", "/tmp/v/kavor/log");
        row("drop folder moved", DevicePaths::moduleDropFolder, "VELDA_MODULE_DROP", "/tmp/d", "/tmp/d/");
        row("media moved", DevicePaths::mediaRoot, "VELDA_MEDIA", "/tmp/m/", "/tmp/m");
        row("net class moved", DevicePaths::netClassFolder, "VELDA_NET_CLASS", "/tmp/n", "/tmp/n");
        row("account", user, "USER", "anna", "anna");
        row("account moved", user, "VELDA_USER", "bert", "bert");
        row("boards", boards, "VELDA_FPGA_ADDRESSES", "", "192.168.7.1 192.168.8.1 192.168.9.1 192.168.10.1");
        row("boards moved", boards, "VELDA_FPGA_ADDRESSES", " 127.0.0.2, 127.0.0.3 ,,", "127.0.0.2 127.0.0.3");
    }

    void place() {
        QFETCH(QString, place);
        QTEST(place, "expected");
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestDevicePaths)
#include "tst_devicepaths.moc"
