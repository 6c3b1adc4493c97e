#include "common/link/command_history.h"
#include "portable/screens/about/licences.h"
#include "tests/gui/paneltest.h"
#include "tests/support/test_folder.h"

#include <QApplication>
#include <QImage>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableWidget>
#include <algorithm>

using namespace Kavor::HandheldGui;

class AboutTest : public PanelTest {
    Q_OBJECT

private:
    const TestFolder m_folder;

    void setUp() override {
        qputenv("VELDA_MEDIA", QFile::encodeName(m_folder.path()));
        qputenv("VELDA_USER", "anna.example");
        qputenv("USER", "anna.example");
        qputenv("VELDA_LOG_DIR", QFile::encodeName(m_folder.at("log")));
        qputenv("VELDA_HOME", QFile::encodeName(m_folder.at("home")));
        PanelTest::setUp();
        QVERIFY(panel().press("funcAbout"));
    }

    QString saved() {
        if (!panel().press("aboutDiagnostics"))
            return "not pressed";
        auto* button = panel().widget<QPushButton>("aboutDiagnostics");
        const bool once = !button->isEnabled();
        return QTest::qWaitFor([&] { return button->isEnabled(); }, 20000) && once ? panel().toast() : QString();
    }

private slots:
    /// Every member of the archive, byte for byte where it has an original.
    void diagnostics() {
        QDir(m_folder.path()).mkpath("anna.example/STICK");
        m_folder.put("log/portable_gui.log", "a line\n");
        m_folder.put("log/portable_gui.1.log", "from /media/anna.example/STICK/a\nLocalhost name: anna-pc\n");
        m_folder.put("home/kavor/preset/preset/preset-7.json", "{}");
        for (int i = 0; i <= CommandHistory::Commands; ++i)
            QCOMPARE(panel().handler().set_phase(i % 2), 0);
        fail(Sim::Fault::Refuse, "POW");
        expectMessage("write failed");
        QCOMPARE(panel().handler().set_power(-3), -1);
        panel().window().tellUser("what was told");

        const QString told = saved();
        QVERIFY2(told.startsWith("Saved on the stick: velda-diagnostics-KV60-"), qPrintable(told));
        const QString archive = told.section(' ', -1);
        const QString path = m_folder.at("anna.example/STICK/" + archive);
        QProcess tar;
        tar.start("tar", {"-xzf", path, "-C", m_folder.path()});
        QVERIFY(tar.waitForFinished() && tar.exitCode() == 0);
        const QString name = QString(archive).remove(".tar.gz") + '/';
        const auto member = [&](const char* file) {
            return m_folder.contentOf(name + file);
        };
        QCOMPARE(QDir(m_folder.at(name)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name),
                 QStringList({"commands.txt", "configurations.txt", "environment.txt", "logs", "record-0.bin",
                              "screen.png", "versions.txt"}));
        const ChannelRecord record = panel().record();
        QCOMPARE(member("record-0.bin"), QByteArray(reinterpret_cast<const char*>(&record), sizeof record));
        QCOMPARE(member("logs/portable_gui.log"), QByteArray("a line\n"));
        QCOMPARE(member("logs/portable_gui.1.log"), QByteArray("from /media/USER/STICK/a\nLocalhost name: -\n"));
        QCOMPARE(member("configurations.txt"), QByteArray("preset-7.json\n"));
        QCOMPARE(QImage::fromData(member("screen.png")).size(), QSize(1280, 800));
        QVERIFY(member("versions.txt").contains("panel " VELDA_VERSION) && member("versions.txt").contains(qVersion()));
        QVERIFY(member("versions.txt").contains(record.serial));
        QVERIFY(member("environment.txt").contains("VELDA_LOG_DIR=" + QFile::encodeName(m_folder.at("log"))));
        const QList<QByteArray> lines = member("commands.txt").trimmed().split('\n');
        QCOMPARE(
            std::count_if(lines.begin(), lines.end(), [](const QByteArray& line) { return line.contains(" ms  "); }),
            long(CommandHistory::Commands));
        QVERIFY(lines.at(lines.size() - 3).contains(":PHAS 0.000  ->  +OK"));
        QVERIFY(lines.at(lines.size() - 2).contains(":POW -3.0000  ->  -ERR"));
        QVERIFY(lines.last().endsWith("told:     what was told"));
        for (const char* file : {"commands.txt", "configurations.txt", "versions.txt"})
            QVERIFY(!member(file).contains("anna"));
        QVERIFY(!member("environment.txt").replace(QFile::encodeName(m_folder.path()), "").contains("anna"));
    }

    void withoutAStick() {
        QDir(m_folder.at("anna.example")).removeRecursively();
        QCOMPARE(saved(), QString("Diagnostics not saved: no stick that can be written"));
    }

    /// Every library that the program is linked with has a line on the page, and the page can be left.
    void licencesOfAllThatIsLinked() {
        QVERIFY(panel().press("aboutLicences"));
        QVERIFY(!panel().widget<QWidget>("aboutPicture")->isVisible());
        QCOMPARE(panel().widget<QTableWidget>("licences")->rowCount(), int(licences().size()));
        QVERIFY(panel().press("licencesBack"));
        QVERIFY(panel().widget<QWidget>("aboutPicture")->isVisible());

        QProcess objdump;
        objdump.start("objdump", {"-p", QCoreApplication::applicationDirPath() + "/../bin/portable_gui"});
        QVERIFY(objdump.waitForFinished() && objdump.exitCode() == 0);
        QStringList named;
        for (const Licence& licence : licences())
            named << QString(licence.libraries).split(' ', Qt::SkipEmptyParts);
        const QStringList linked = QString(objdump.readAllStandardOutput()).split('\n').filter("NEEDED");
        QVERIFY(linked.size() > 5);
        for (const QString& line : linked) {
            const QString library = line.simplified().section(' ', -1);
            if (library.contains(QRegularExpression("^lib(a|t|ub)san"))) // of a build for the sanitizers only
                continue;
            QVERIFY2(std::any_of(named.begin(), named.end(), [&](const QString& n) { return library.startsWith(n); }),
                     qPrintable(library));
        }
    }
};

VELDA_TEST_MAIN(QApplication, AboutTest)
#include "tst_about.moc"
