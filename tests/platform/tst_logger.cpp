#include "platform/log_format.h"
#include "platform/logger.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <csignal>
#include <limits>
#include <sys/wait.h>
#include <unistd.h>

class TestLogger : public TestBase {
    Q_OBJECT

private slots:
    void format_data() {
        addColumns<QString, QString>("text", "expected");
        const auto row = [](const char* format, const QVector<QVariant>& values, const QString& expected) {
            addRow(format, Logger::fillFormat(format, values), expected);
        };
        row("%f %.2f %g", {1.5, 2.0 / 3, 1e10}, "1.500000 0.67 1e+10");
        row("[%5d|%-5d|%05d]", {42, 42, 42}, "[   42|42   |00042]");
        row("[%5s|%-5s|%.2s]", {"abc", "abc", "abc"}, "[  abc|abc  |ab]");
        // what a caller gets wrong
        row("%d %d", {1}, "1 (missing)");
        row("%d", {1, "two", 3}, "1 (surplus: two, 3)");
        row("%d", {std::numeric_limits<double>::infinity()}, "inf");
        // hostile: nothing is written through, read from, or blown up
        row("%n", {}, "%n");
        row("%s%s%s", {}, "(missing)(missing)(missing)");
        row("%*d", {5}, "%*d (surplus: 5)");
        row("%999999999999d", {1}, QString(199, ' ') + "1");
        row("%.999999999f", {0.0}, "0." + QString(60, '0'));
    }

    void format() {
        QFETCH(QString, text);
        QTEST(text, "expected");
    }

    void lineCarriesEverythingAndIsThereAtOnce() {
        expectMessage("^a\nb 7$");
        Logger::LogManager manager;
        QVERIFY(manager.init(m_folder->path(), "panel"));
        Logger::instance.log("/some/where/screen.cpp", "onTap", 12, "kavor.screen", QtCriticalMsg, "a\nb %d", 7);
        const QRegularExpression line("^\\d{4}-\\d\\d-\\d\\d [\\d:]{8}\\.\\d{3} \\[\\d+\\] critical "
                                      "kavor\\.screen screen\\.cpp:12 onTap \\| a\\\\nb 7\\n$");
        QVERIFY2(line.match(log()).hasMatch(), qPrintable(log()));
    }

    void fullFilesRotate() {
        {
            Logger::LogManager manager;
            manager.set_rotation(2000, 2);
            QVERIFY(manager.init(m_folder->path(), "panel"));
            for (int i = 0; i < 200; ++i)
                VELDA_LOG("t", QtDebugMsg, "line %d", i);
        }
        const QStringList files = QDir(m_folder->path()).entryList(QDir::Files, QDir::Name);
        QCOMPARE(files, QStringList({"panel.1.log", "panel.2.log", "panel.log"}));
        for (const QString& file : files)
            QVERIFY2(QFile(path(file)).size() <= 2000, qPrintable(file));
        QVERIFY(log().contains("line 199"));
    }

    void unwritableFolderFallsBack() {
        m_folder->put("file", {});
        for (const char* state : {"state", "file/state"}) { // the latter cannot be written either
            qputenv("XDG_STATE_HOME", path(state).toUtf8());
            expectMessage("^the log goes to ");
            Logger::LogManager manager;
            QVERIFY(!manager.init(path("file/log"), "panel"));
            QCOMPARE(manager.directory(), QByteArray(state) == "state" ? path("state/kavor/log") : QString());
        }
        qunsetenv("XDG_STATE_HOME");
        QVERIFY(QFile::exists(path("state/kavor/log/panel.log")));
    }

    void fatalStillAborts() {
        const pid_t child = fork();
        if (child == 0) {
            qInstallMessageHandler(nullptr);
            signal(SIGABRT, SIG_DFL);
            Logger::LogManager manager;
            manager.init(m_folder->path(), "panel");
            qFatal("beyond repair");
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
        QVERIFY(log().contains(" fatal default ") && log().contains("beyond repair"));
    }

private:
    QString path(const QString& name) const { return m_folder->at(name); }
    QString log() const { return m_folder->contentOf("panel.log"); }

    std::unique_ptr<TestFolder> m_folder;

protected:
    void setUp() override { m_folder = std::make_unique<TestFolder>(); }
};

VELDA_TEST_MAIN(QCoreApplication, TestLogger)
#include "tst_logger.moc"
