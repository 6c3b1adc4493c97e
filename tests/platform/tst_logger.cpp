#include "platform/log_format.h"
#include "platform/logger.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <limits>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

using Values = QVector<QVariant>;

} // namespace

class TestLogger : public TestBase {
    Q_OBJECT

private slots:
    void format_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<Values>("values");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* format, const Values& values, const QString& expected) {
            QTest::addRow("%s (%d values) -> %s", format, values.size(), qPrintable(expected)) << QByteArray(format) << values << expected;
        };
        row("%s and %d", {"a", 5}, "a and 5");
        row("%i %u %lu %lld", {-3, 7u, 18446744073709551615ull, -5ll}, "-3 7 18446744073709551615 -5");
        row("%x %X %#x", {255, 255u, 255}, "ff FF 0xff");
        row("%u", {-1}, "-1");
        row("%f %.2f %g", {1.5, 2.0 / 3, 1e10}, "1.500000 0.67 1e+10");
        row("100%% %d", {1}, "100% 1");
        row("[%5d|%-5d|%05d]", {42, 42, 42}, "[   42|42   |00042]");
        row("[%5s|%-5s|%.2s]", {"abc", "abc", "abc"}, "[  abc|abc  |ab]");
        row("%s", {QString::fromUtf8("50 \xC2\xB5s")}, QString::fromUtf8("50 \xC2\xB5s"));
        row("%s %d", {true, true}, "true 1");
        // what a caller gets wrong
        row("%d %d", {1}, "1 (missing)");
        row("%d", {1, "two", 3}, "1 (surplus: two, 3)");
        row("none", {1}, "none (surplus: 1)");
        row("%d", {"text"}, "text");
        row("%d", {1.9}, "1");
        row("%d", {std::numeric_limits<double>::infinity()}, "inf");
        row("%d", {1e300}, "1.0000000000000001e+300");
        // hostile: nothing is written through, read from, or blown up
        row("%n", {}, "%n");
        row("%s%s%s%s%s%s%s%s", {}, "(missing)(missing)(missing)(missing)(missing)(missing)(missing)(missing)");
        row("%y %", {}, "%y %");
        row("%*d", {5}, "%*d (surplus: 5)");
        row("%999999999999d", {1}, QString(199, ' ') + "1");
        row("%.999999999f", {0.0}, "0." + QString(60, '0'));
        row("%5.", {}, "%5.");
        addRow("no format", QByteArray(), Values(), QString());
        // clang-format on
    }

    void format() {
        QFETCH(QByteArray, format);
        QFETCH(Values, values);
        QTEST(Logger::fillFormat(format.constData(), values), "expected");
    }

    void withoutManagerTheHandlerGetsTheText() {
        expectMessage("^no file cw\\.json \\(3\\)$");
        VELDA_LOG("files", QtWarningMsg, "no file %s (%d)", "cw.json", 3);
        expectMessage("^\\(no format\\)$");
        Logger::instance.log(nullptr, nullptr, 0, nullptr, QtCriticalMsg, nullptr);
    }

    void lineCarriesEverything() {
        allowMessages("^a\nb 7$");
        const QMap<QtMsgType, QString> levels{
            {QtDebugMsg, "debug"}, {QtInfoMsg, "info"}, {QtWarningMsg, "warning"}, {QtCriticalMsg, "critical"}};
        for (const QtMsgType type : levels.keys()) {
            QFile::remove(path("panel.log"));
            {
                Logger::LogManager manager;
                QVERIFY(manager.init(m_folder->path(), "panel"));
                QCOMPARE(manager.directory(), m_folder->path());
                Logger::instance.log("/some/where/screen.cpp", "onTap", 12, "kavor.screen", type, "a\nb %d", 7);
                if (type == QtWarningMsg || type == QtCriticalMsg)
                    QVERIFY(contents(path("panel.log")).contains("onTap")); // flushed without waiting for the end
            }
            const QRegularExpression line("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} \\[\\d+\\] " +
                                          levels[type] + " kavor\\.screen screen\\.cpp:12 onTap \\| a\\\\nb 7\\n$");
            const QString text = contents(path("panel.log"));
            QVERIFY2(line.match(text).hasMatch(), qPrintable(text));
        }
    }

    void linesOfManyThreadsStayWhole() {
        {
            Logger::LogManager manager;
            QVERIFY(manager.init(m_folder->path(), "panel"));
            std::vector<std::thread> threads;
            threads.reserve(4);
            for (int thread = 0; thread < 4; ++thread) {
                threads.emplace_back([thread] {
                    for (int i = 0; i < 200; ++i)
                        VELDA_LOG("t", QtDebugMsg, "thread %d line %d end", thread, i);
                });
            }
            for (std::thread& thread : threads)
                thread.join();
            qDebug("thread 9 line 9 end");
        }
        const QList<QByteArray> lines = contents(path("panel.log")).split('\n');
        QCOMPARE(lines.size(), 4 * 200 + 1 + 1);
        const QRegularExpression whole("\\| thread \\d line \\d+ end$");
        for (int i = 0; i < lines.size() - 1; ++i)
            QVERIFY2(whole.match(lines.at(i)).hasMatch(), lines.at(i).constData());
    }

    void oneFilePerType() {
        expectMessage("^careful$");
        {
            Logger::LogManager manager;
            manager.set_log_QtMsgType_file(true);
            QVERIFY(manager.init(m_folder->path(), "panel"));
            qWarning("careful");
            qInfo("started");
        }
        QVERIFY(contents(path("panel-warning.log")).contains("careful"));
        QVERIFY(!contents(path("panel-warning.log")).contains("started"));
        QVERIFY(contents(path("panel-info.log")).contains("started"));
        QCOMPARE(contents(path("panel.log")).count('\n'), 2);
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
        QVERIFY(contents(path("panel.log")).contains("line 199"));
    }

    void unwritableFolderFallsBack_data() {
        QTest::addColumn<bool>("stateFolderToo");
        addRow("to the state folder", false);
        addRow("to standard error alone", true);
    }

    void unwritableFolderFallsBack() {
        QFETCH(bool, stateFolderToo);
        QFile blocker(path("file"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        const QString state = stateFolderToo ? path("file/state") : path("state");
        const QByteArray before = qgetenv("XDG_STATE_HOME");
        qputenv("XDG_STATE_HOME", state.toUtf8());
        expectMessage("^the log goes to ");
        {
            Logger::LogManager manager;
            QVERIFY(!manager.init(path("file/log"), "panel"));
            qInfo("still here");
            QCOMPARE(manager.directory(), stateFolderToo ? QString() : state + "/kavor/log");
        }
        QCOMPARE(contents(state + "/kavor/log/panel.log").contains("still here"), !stateFolderToo);
        if (before.isNull())
            qunsetenv("XDG_STATE_HOME");
        else
            qputenv("XDG_STATE_HOME", before);
    }

    void formerHandlerComesBack() {
        expectMessage("^seen by both$");
        {
            Logger::LogManager manager;
            QVERIFY(manager.init(m_folder->path(), "panel"));
            qWarning("seen by both");
        }
        expectMessage("^seen by the former$");
        qWarning("seen by the former");
        QVERIFY(contents(path("panel.log")).contains("seen by both"));
        QVERIFY(!contents(path("panel.log")).contains("seen by the former"));
    }

    void secondManagerIsRefused() {
        Logger::LogManager first;
        QVERIFY(first.init(m_folder->path(), "first"));
        {
            Logger::LogManager second;
            QVERIFY(!second.init(m_folder->path(), "second"));
        }
        expectMessage("^after the second$");
        qWarning("after the second");
        QVERIFY(contents(path("first.log")).contains("after the second"));
        QVERIFY(!QFile::exists(path("second.log")));
    }

    void fatalStillAborts() {
        const QByteArray folder = m_folder->path().toUtf8();
        const pid_t child = fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            qInstallMessageHandler(nullptr);
            signal(SIGABRT, SIG_DFL);
            Logger::LogManager manager;
            manager.init(QString::fromUtf8(folder), "panel");
            qFatal("beyond repair");
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
        QVERIFY(contents(path("panel.log")).contains(" fatal default "));
        QVERIFY(contents(path("panel.log")).contains("beyond repair"));
    }

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;

protected:
    void setUp() override { m_folder = std::make_unique<QTemporaryDir>(); }
};

VELDA_TEST_MAIN(QCoreApplication, TestLogger)
#include "tst_logger.moc"
