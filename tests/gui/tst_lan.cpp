#include "portable/screens/lan/wdgethernet.h"
#include "portable/widgets/styles/styles.h"
#include "tests/gui/paneltest.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QHostInfo>
#include <QMutex>
#include <QSemaphore>
#include <QTcpServer>
#include <QTemporaryDir>

using namespace Kavor::HandheldGui;

namespace {

const QStringList Rows{"lanAddress", "lanMask", "lanGateway", "lanPort"};

/// A device network that tests change while the panel reads it from its worker thread.
class FakeNetwork {
public:
    NetworkFacts read() {
        m_gate.acquire();
        m_gate.release();
        QMutexLocker lock(&m_mutex);
        return m_facts;
    }

    void set(const NetworkFacts& facts) {
        QMutexLocker lock(&m_mutex);
        m_facts = facts;
    }

    /// While shut, a look takes as long as it likes.
    void shut() { m_gate.acquire(); }
    void open() { m_gate.release(); }

private:
    QMutex m_mutex;
    QSemaphore m_gate{1};
    NetworkFacts m_facts;
};

NetworkFacts oneInterface(const QString& address) {
    return {"bench-3",
            {{true, "", {{"127.0.0.1", "255.0.0.0"}}, "lo", true},
             {false, "00:1B:44:11:3A:B7", {{address, "255.255.255.0"}}, "eth0", true}}};
}

} // namespace

/// The LAN page on a simulated module, with a network and a cable of the test's own.
class LanTest : public PanelTest {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_netClass;
    std::unique_ptr<FakeNetwork> m_network;

    QStringList rows() {
        QStringList texts;
        for (const QString& row : Rows)
            texts << panel().text(row);
        return texts;
    }
    QString port() { return QString::fromStdString(panel().handler().getPort()); }
    bool enabled(const QString& name) { return panel().widget<QWidget>(name)->isEnabled(); }
    void carrier(const QString& interface, const QByteArray& state) {
        QVERIFY(QDir(m_netClass->path()).mkpath(interface));
        QFile file(m_netClass->filePath(interface + "/carrier"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(state) == state.size());
    }

    void openPage() {
        QVERIFY(panel().press("funcSystem"));
        QVERIFY(panel().press("sysLan"));
        QTRY_COMPARE(panel().text("lanHostName"), QString("bench-3"));
    }

protected:
    void setUp() override {
        m_netClass = std::make_unique<QTemporaryDir>();
        qputenv("VELDA_NET_CLASS", QFile::encodeName(m_netClass->path()));
        carrier("eth0", "1\n");
        m_network = std::make_unique<FakeNetwork>();
        m_network->set(oneInterface("192.168.1.10"));
        PanelFixture::Setup setup;
        setup.readNetwork = [this] {
            return m_network->read();
        };
        start(setup);
    }

    void tearDown() override {
        m_network->open(); // the panel waits for a look under way
        PanelTest::tearDown();
    }

private slots:
    void addresses_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        addRow("highest", "255.255.255.255", true);
        addRow("an empty part counts as 0", "1..2.", true);
        addRow("part above 255", "192.168.1.256", false);
        addRow("part of many digits", "192.168.1.99999999999999999999", false);
        addRow("five parts", "1.2.3.4.5", false);
        addRow("sign", "192.168.1.-1", false);
        addRow("digits of another script", QString("192.168.1.\u0661"), false);
    }
    void addresses() {
        QFETCH(QString, text);
        QTEST(ethScreen::isIPAddress(text), "valid");
        QCOMPARE(ethScreen::plainAddress("010..000.7"), QString("10.0.0.7"));
    }

    void subnets_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("gateway");
        QTest::addColumn<bool>("within");
        addRow("within", "192.168.1.10", "255.255.255.0", "192.168.1.1", true);
        addRow("next net", "192.168.1.10", "255.255.255.0", "192.168.2.1", false);
        addRow("first bit", "128.0.0.1", "128.0.0.0", "0.0.0.1", false);
        addRow("last bit", "10.0.0.2", "255.255.255.255", "10.0.0.3", false);
    }
    void subnets() {
        QFETCH(QString, address);
        QFETCH(QString, mask);
        QFETCH(QString, gateway);
        QTEST(ethScreen::IsIpInTheSubnetMask(address, mask, gateway), "within");
    }

    void cable_data() {
        QTest::addColumn<QStringList>("interfaces"); // name=carrier
        QTest::addColumn<bool>("connected");
        addRow("no interface", QStringList(), false);
        addRow("the second one", QStringList{"eth0=0\n", "eth1= 1 \n"}, true);
        addRow("others do not count", QStringList{"wlan0=1\n", "lo=1\n"}, false);
        addRow("not the very text", QStringList{"eth0=11\n"}, false);
        addRow("down: nothing to read", QStringList{"eth0="}, false);
    }
    void cable() {
        QFETCH(QStringList, interfaces);
        QDir(m_netClass->filePath("eth0")).removeRecursively();
        for (const QString& interface : interfaces)
            carrier(interface.section('=', 0, 0), interface.section('=', 1).toLatin1());
        QTEST(ethScreen::checkLANConnectivity(), "connected");
    }

    /// The system's own network can be read, and the signals come in order on the asking thread.
    void aLookAtTheSystem() {
        dhcpThread thread(nullptr);
        QStringList order;
        NetworkFacts facts;
        int status = 7;
        connect(&thread, &dhcpThread::factsRead, this, [&](const NetworkFacts& read) {
            order << "facts";
            facts = read;
        });
        connect(&thread, &dhcpThread::ipSet, this, [&](int result) {
            order << "set";
            status = result;
        });
        thread.lookUp();
        QTRY_COMPARE(order, (QStringList{"facts", "set"}));
        QCOMPARE(facts.hostName, QHostInfo::localHostName());
        QVERIFY(!facts.interfaces.empty() && facts.interfaces[0].loopback);
        QCOMPARE(facts.interfaces[0].name, QString("lo"));
        QCOMPARE(status, dhcpThread::ownPart(facts, QString()).address ? 0 : -1);
    }

    void ownPart_data() {
        QTest::addColumn<QStringList>(
            "interfaces");                // name[-]=addresses; "-": no cable; the hardware address is the name
        QTest::addColumn<QString>("own"); // name=address
        const QString board = "eth0=192.168.7.100";
        addRow("published one, whatever its name", QStringList{"eth1=10.0.0.1", "wan0-=10.0.0.2,192.168.1.50"},
               "wan0=192.168.1.50");
        addRow("first with a cable", QStringList{"eth1-=10.0.0.1", "en0=10.0.0.2", "eth2=10.0.0.3", "eth3=10.0.0.4"},
               "eth2=10.0.0.3");
        addRow("boards first", QStringList{board, "eth1=192.168.10.2", "eth2=192.168.11.1"}, "eth2=192.168.11.1");
        addRow("nothing but boards", QStringList{board, "lo=192.168.1.50"}, "=");
        addRow("no address yet", QStringList{board, "eth1="}, "eth1=");
    }
    void ownPart() {
        QFETCH(QStringList, interfaces);
        NetworkFacts facts;
        for (const QString& text : interfaces) {
            NetworkFacts::Interface interface;
            interface.name = text.section('=', 0, 0).remove('-');
            interface.loopback = interface.name == "lo";
            interface.carrier = !text.contains("-=");
            for (const QString& address : text.section('=', 1).split(',', Qt::SkipEmptyParts))
                interface.addresses.push_back({address, "255.255.255.0"});
            facts.interfaces.push_back(interface);
        }
        const dhcpThread::Own own = dhcpThread::ownPart(facts, "192.168.1.50");
        QTEST((own.interface ? own.interface->name : QString()) + '=' + (own.address ? own.address->ipv4 : QString()),
              "own");
    }

    void configurations_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("gateway");
        QTest::addColumn<QString>("toast"); // or what is sent as the address
        const QString mask = "255.255.255.0";
        const QString noDevice = " cannot be the address of a device";
        addRow("leading zeros", "010.1.0.007", "255.255.000.0", "10.1.0.1", "10.1.0.7");
        addRow("this net", "0.1.2.3", mask, "0.1.2.1", "0.1.2.3" + noDevice);
        addRow("loopback", "127.0.0.5", mask, "127.0.0.1", "127.0.0.5" + noDevice);
        addRow("multicast", "224.0.0.5", mask, "224.0.0.1", "224.0.0.5" + noDevice);
        addRow("highest", "223.255.254.254", "255.255.254.0", "223.255.254.1", "223.255.254.254");
        addRow("network", "10.1.2.0", mask, "10.1.2.1", "10.1.2.0 is the network address of the subnet");
        addRow("broadcast", "10.1.3.255", "255.255.252.0", "10.1.2.1",
               "10.1.3.255 is the broadcast address of the subnet");
        addRow("gateway is the network", "10.1.2.5", mask, "10.1.2.0", "10.1.2.0 is the network address of the subnet");
        addRow("holes", "10.1.2.3", "255.0.255.0", "10.9.2.1", "The subnet mask 255.0.255.0 has holes");
        addRow("gateway is the address", "10.1.2.3", mask, "10.1.2.3", "The gateway 10.1.2.3 is the address itself");
        addRow("net of two", "10.1.2.2", "255.255.255.254", "10.1.2.3", "10.1.2.2");
        addRow("any gateway", "10.1.2.3", "0.0.0.0", "250.0.0.0", "10.1.2.3");
    }
    /// Refused in words with nothing sent, or sent as plain numbers.
    void configurations() {
        openPage();
        for (const char* row : {"address", "mask", "gateway"}) {
            const QString text = *static_cast<QString*>(QTest::qData(row, QMetaType::QString));
            QString name = QString("lan%1").arg(row);
            name[3] = name[3].toUpper();
            QVERIFY(panel().enter(name, text));
        }
        QVERIFY(panel().press("lanApply"));
        QFETCH(QString, toast);
        const bool refused = toast.contains(' ');
        QCOMPARE(panel().toast(), refused ? toast : QString("LAN settings applied"));
        const QStringList sent = panel().sent();
        QCOMPARE(sent.value(0), refused ? QString() : ":SYST:COMM:LAN:IPAD \"" + toast + '"');
        QVERIFY(sent.filter(QRegularExpression("[^0-9]0[0-9]")).isEmpty());
    }

    /// While there are edits the rows stay as they were when the first was made.
    void interfaceGoesMeanwhile() {
        NetworkFacts wide = oneInterface("10.0.0.10");
        wide.interfaces[1].addresses[0].mask = "255.0.0.0";
        m_network->set(wide);
        openPage();
        QTRY_COMPARE(panel().text("lanMask"), QString("255.0.0.0"));
        QVERIFY(panel().enter("lanAddress", "10.0.0.11") && panel().enter("lanGateway", "10.0.0.1"));
        m_network->set({"gone", {}});
        QTRY_COMPARE(panel().text("lanHostName"), QString("gone"));
        QCOMPARE(panel().text("lanMask"), QString("255.0.0.0"));
        QVERIFY(panel().press("lanApply"));
        QVERIFY(panel().sent().contains(":SYST:COMM:LAN:MASK \"255.0.0.0\""));
    }

    void pageShowsTheNetwork() {
        openPage();
        QCOMPARE(rows(), (QStringList{"192.168.1.10", "255.255.255.0", "192.168.1.1", port()}));
        QCOMPARE(panel().text("lanHardwareAddress"), QString("00:1B:44:11:3A:B7"));
        QVERIFY(panel().hasStyle("lanStatic", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(!enabled("lanApply") && !enabled("lanCancel"));
        QCOMPARE(panel().sent(), QStringList());

        // An address that comes later, and the module's own changes, show by themselves.
        m_network->set(oneInterface("192.168.1.77"));
        QTRY_COMPARE(panel().text("lanAddress"), QString("192.168.1.77"));
        panel().module().modify(0, [](ChannelRecord& r) {
            r.dhcp = 1;
            qstrncpy(r.gateway, "192.168.1.254", sizeof r.gateway);
        });
        QTRY_COMPARE(panel().text("lanGateway"), QString("192.168.1.254"));
        QVERIFY(panel().hasStyle("lanDynamic", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(panel().press("lanBack"));
        QVERIFY(panel().widget<QWidget>("pageSystem")->isVisible());
        QVERIFY(!panel().widget<QWidget>("pageLan")->isVisible());
    }

    /// A look that takes its time holds up nothing.
    void aSlowLook() {
        m_network->shut();
        QVERIFY(panel().press("funcSystem"));
        QVERIFY(panel().press("sysLan"));
        QVERIFY(panel().enter("lanPort", "5025"));
        QVERIFY(panel().press("lanDynamic"));
        QCOMPARE(panel().text("lanHostName"), QString());
        m_network->open();
        QTRY_COMPARE(panel().text("lanHostName"), QString("bench-3"));
        QCOMPARE(panel().text("lanPort"), QString("5025")); // what was edited meanwhile stays
        QVERIFY(panel().hasStyle("lanDynamic", PRESSED_WIDGET_BTN_STYLE));
    }

    /// What the network does meanwhile shows everywhere but in the row whose keyboard is open.
    void rowUnderEdit() {
        openPage();
        panel().dialogs().expect(DialogKind::Keyboard, QString(), [this](QDialog& dialog) {
            NetworkFacts facts = oneInterface("192.168.1.77");
            facts.hostName = "bench-4";
            m_network->set(facts);
            QTRY_COMPARE(panel().text("lanHostName"), QString("bench-4"));
            QCOMPARE(panel().text("lanAddress"), QString("192.168.1.10"));
            dialog.reject();
        });
        QVERIFY(panel().press("lanAddress"));
        QCOMPARE(panel().text("lanAddress"), QString("192.168.1.77"));
        QVERIFY(!enabled("lanApply"));
    }

    void edits_data() {
        QTest::addColumn<QString>("row");
        QTest::addColumn<QString>("prompt");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("toast");
        const char* const port = "Enter TCP SCPI port for device";
        addRow("highest port", "lanPort", port, "65535", "65535", "");
        addRow("port too high", "lanPort", port, "65536", QString(), "Range 1 to 65535");
        addRow("port 0", "lanPort", port, "0", QString(), "Range 1 to 65535");
    }
    void edits() {
        openPage();
        const QStringList before = rows();
        QFETCH(QString, row);
        QFETCH(QString, prompt);
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        panel().dialogs().expectNumber(prompt, typed, "keyEnter");
        QVERIFY(panel().press(row));
        QTEST(panel().toast(), "toast");
        QCOMPARE(panel().text(row), shown.isNull() ? before[Rows.indexOf(row)] : shown);
        QCOMPARE(enabled("lanApply"), !shown.isNull());
        QCOMPARE(enabled("lanCancel"), !shown.isNull());
        QCOMPARE(panel().sent(), QStringList()); // only Apply sends
        panel().press("lanCancel");
        QCOMPARE(rows(), before);
        QVERIFY(!enabled("lanApply") && !enabled("lanCancel"));
    }

    void leavingDropsTheEdits() {
        openPage();
        const QStringList before = rows();
        QVERIFY(panel().enter("lanAddress", "10.0.0.5"));
        QVERIFY(panel().press("funcCw"));
        m_network->set({"bench-3", {}});
        openPage();
        QCOMPARE(rows(), before);
        // Without an interface of its own the page shows what the module publishes.
        QTRY_COMPARE(rows().mid(0, 3), (QStringList{"192.168.1.50", "255.255.255.0", "192.168.1.1"}));
    }

    void noCable() {
        carrier("eth0", "0\n");
        openPage();
        QVERIFY(panel().enter("lanAddress", "192.168.1.20"));
        panel().dialogs().expectButton(DialogKind::Critical, "LAN cable not connected. You need to connect cable first",
                                       QMessageBox::Ok);
        QVERIFY(panel().press("lanApply"));
        QCOMPARE(panel().sent(), QStringList());
        QCOMPARE(panel().text("lanAddress"), QString("192.168.1.20"));
        QVERIFY(enabled("lanApply"));
    }

    void applyStatic() {
        openPage();
        QVERIFY(panel().enter("lanAddress", "10.0.0.5"));
        QVERIFY(panel().enter("lanMask", "255.0.0.0"));
        QVERIFY(panel().press("lanApply"));
        QCOMPARE(panel().toast(), QString("The DG and IP is not in the range of the subnet mask"));
        QCOMPARE(panel().sent(), QStringList());
        QVERIFY(panel().enter("lanGateway", "10.0.0.1"));
        QVERIFY(panel().press("lanApply"));
        QCOMPARE(panel().sent(), (QStringList{":SYST:COMM:LAN:IPAD \"10.0.0.5\"", ":SYST:COMM:LAN:MASK \"255.0.0.0\"",
                                              ":SYST:COMM:LAN:GAT \"10.0.0.1\"", ":SYST:COMM:LAN:DHCP OFF"}));
        QVERIFY(!enabled("lanApply") && !enabled("lanCancel"));
        QCOMPARE(recordText(panel().record().ipAddress), std::string("10.0.0.5"));
        // What was applied stays on show until the interface has followed.
        QCOMPARE(rows().mid(0, 3), (QStringList{"10.0.0.5", "255.0.0.0", "10.0.0.1"}));
        QVERIFY(panel().press("funcCw"));
        openPage(); // shows it as it is
        QTRY_COMPARE(panel().text("lanAddress"), QString("192.168.1.10"));
        m_network->set(oneInterface("10.0.0.6"));
        QTRY_COMPARE(panel().text("lanAddress"), QString("10.0.0.6"));
    }

    void applyDynamic() {
        openPage();
        QVERIFY(panel().press("lanDynamic"));
        QVERIFY(panel().press("lanApply"));
        QCOMPARE(panel().sent(), QStringList{":SYST:COMM:LAN:DHCP ON"});
        QCOMPARE(panel().record().dhcp, 1U);
        QVERIFY(!enabled("lanApply"));
        // An address means a static configuration again.
        QVERIFY(panel().enter("lanAddress", "192.168.1.20"));
        QVERIFY(panel().hasStyle("lanStatic", PRESSED_WIDGET_BTN_STYLE));
        QVERIFY(panel().press("lanApply"));
        QCOMPARE(panel().sent().last(), QString(":SYST:COMM:LAN:DHCP OFF"));
        QCOMPARE(panel().record().dhcp, 0U);
    }

    /// The port is last in both modes; the panel follows the service there.
    void applyPort_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<int>("commandsBefore");
        addRow("alone", "lanStatic", 0);
        addRow("static", "lanAddress", 4);
        addRow("dynamic", "lanDynamic", 1);
    }
    void applyPort() {
        QFETCH(QString, mode);
        QFETCH(int, commandsBefore);
        allowMessages("\\[SCPI\\]");
        QTcpServer probe; // a port that is free
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        const QString wanted = QString::number(probe.serverPort());
        probe.close();
        openPage();
        QVERIFY(mode == "lanAddress" ? panel().enter(mode, "192.168.1.20") : panel().press(mode));
        QVERIFY(panel().enter("lanPort", wanted));
        QVERIFY(panel().press("lanApply"));
        const QStringList sent = panel().sent();
        QCOMPARE(sent.size(), commandsBefore + 1);
        QCOMPARE(sent.last(), ":SYST:COMM:LAN:PORT " + wanted);
        QCOMPARE(panel().toast(), QString("LAN settings applied"));
        QTRY_COMPARE(panel().text("lanPort"), wanted);
        QVERIFY(!enabled("lanApply"));
        QVERIFY(panel().press("funcCw"));
        QVERIFY(panel().enter("cwPower", "3"));
        QCOMPARE(panel().record().power.value, 3.0);
    }

    void failures_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<int>("fault");
        QTest::addColumn<QString>("header");
        QTest::addColumn<QString>("logged"); // empty: no line
        QTest::addColumn<QString>("toast");
        QTest::addColumn<int>("taken"); // the static steps that the module took
        const int refuse = Sim::Fault::Refuse;
        const char* const noDynamic = "Failed to set dynamic configuration";
        const char* const noStatic = "Failed to set static configuration";
        addRow("dynamic", "lanDynamic", refuse, ":SYST:COMM:LAN:DHCP", noDynamic, noDynamic, 0);
        addRow("address", "lanStatic", refuse, ":SYST:COMM:LAN:IPAD", "Failed to set ip address 10.0.0.5",
               "Failed to set static ip 10.0.0.5", 0);
        addRow("gateway", "lanStatic", refuse, ":SYST:COMM:LAN:GAT", "Failed to set gateway 10.0.0.1",
               "Failed to set static gateway 10.0.0.1", 2);
        addRow("static", "lanStatic", int(Sim::Fault::Keep), ":SYST:COMM:LAN:DHCP", noStatic, noStatic, 3);
        addRow("port", "lanStatic", refuse, ":SYST:COMM:LAN:PORT", QString(), "command send failure", 4);
    }
    /// Each step fails in turn: its own text, nothing after it is sent, what was applied stays.
    void failures() {
        QFETCH(QString, mode);
        QFETCH(int, fault);
        QFETCH(QString, header);
        QFETCH(QString, logged);
        QFETCH(QString, toast);
        QFETCH(int, taken);
        panel().module().modify(0, [&](ChannelRecord& r) { r.dhcp = mode == "lanStatic"; });
        openPage();
        QVERIFY(panel().enter("lanAddress", "10.0.0.5"));
        QVERIFY(panel().enter("lanMask", "255.0.0.0"));
        QVERIFY(panel().enter("lanGateway", "10.0.0.1"));
        QVERIFY(panel().enter("lanPort", "5025"));
        QVERIFY(panel().press(mode));
        fail(static_cast<Sim::Fault::Kind>(fault), header.toLatin1());
        allowMessages("\\[SCPI\\] write failed");
        if (!logged.isNull())
            expectMessage('^' + QRegularExpression::escape(logged) + '$');
        QVERIFY(panel().press("lanApply"));
        QCOMPARE(panel().toast(), toast);
        const QStringList sent = panel().sent();
        QCOMPARE(sent.size(), taken + 1);
        QVERIFY2(sent.last().startsWith(header), qPrintable(sent.last()));
        const ChannelRecord record = panel().record();
        QCOMPARE(recordText(record.ipAddress), std::string(taken > 0 ? "10.0.0.5" : "192.168.1.50"));
        QCOMPARE(recordText(record.networkMask), std::string(taken > 1 ? "255.0.0.0" : "255.255.255.0"));
        QCOMPARE(recordText(record.gateway), std::string(taken > 2 ? "10.0.0.1" : "192.168.1.1"));
        QCOMPARE(record.dhcp, taken < 4 && mode == "lanStatic" ? 1U : 0U);
        // The edits that are left can be applied again once the module is well.
        QVERIFY(enabled("lanApply"));
        QCOMPARE(panel().text("lanPort"), QString("5025"));
        QCOMPARE(panel().text("lanAddress"), QString("10.0.0.5"));
    }
};

VELDA_TEST_MAIN(QApplication, LanTest)
#include "tst_lan.moc"
