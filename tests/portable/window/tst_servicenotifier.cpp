#include "portable/window/servicenotifier.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QWidget>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Kavor::HandheldGui;

/// What reaches the service manager's socket.
class ServiceNotifierTest : public TestBase {
    Q_OBJECT

private:
    /// All so far.
    QStringList heard() {
        char buffer[256];
        for (ssize_t size = 0; (size = ::recv(m_socket, buffer, sizeof buffer, MSG_DONTWAIT)) > 0;)
            m_heard << QString::fromUtf8(buffer, static_cast<int>(size));
        return m_heard;
    }

    int timesFed() { return heard().count("WATCHDOG=1"); }

    void setUp() override {
        m_heard.clear();
        const QByteArray path = QFile::encodeName(m_folder.at("notify"));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
        m_socket = ::socket(AF_UNIX, SOCK_DGRAM, 0);
        ::unlink(path.constData());
        QCOMPARE(::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        qputenv("NOTIFY_SOCKET", path);
        qputenv("WATCHDOG_USEC", "60000");
    }

    void tearDown() override { ::close(m_socket); }

    const TestFolder m_folder;
    int m_socket = -1;
    QStringList m_heard;

private slots:
    void readyAfterTheFirstPaintAndOnce() {
        QWidget window;
        const ServiceNotifier notifier;
        QCoreApplication::processEvents();
        QCOMPARE(heard(), QStringList());
        window.show();
        QTRY_COMPARE(heard(), QStringList{"READY=1"});
        window.repaint();
        QCoreApplication::processEvents();
        QCOMPARE(heard(), QStringList{"READY=1"});
    }

    /// The event loop alone is not enough: what does not paint is not fed, and is again when it paints again, also
    /// below what covers the whole window.
    void fedByPaintsAlone() {
        QWidget window;
        ServiceNotifier notifier;
        window.show();
        notifier.watch(window);
        QTRY_VERIFY(timesFed() >= 3);
        QWidget cover(&window);
        cover.setAutoFillBackground(true);
        cover.resize(window.size());
        cover.show();
        int fed = timesFed();
        QTRY_VERIFY(timesFed() >= fed + 3);
        window.setUpdatesEnabled(false);
        QCoreApplication::processEvents();
        fed = timesFed();
        QTimer later;
        later.setSingleShot(true);
        later.start(200); // ten periods
        QTRY_VERIFY(!later.isActive());
        QCOMPARE(timesFed(), fed);
        window.setUpdatesEnabled(true);
        QTRY_VERIFY(timesFed() > fed);
    }

    void nobodyListens() {
        qunsetenv("NOTIFY_SOCKET");
        qunsetenv("WATCHDOG_USEC");
        QWidget window;
        ServiceNotifier notifier;
        window.show();
        notifier.watch(window);
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(window.findChildren<QWidget*>().isEmpty());
    }
};

VELDA_TEST_MAIN(QApplication, ServiceNotifierTest)
#include "tst_servicenotifier.moc"
