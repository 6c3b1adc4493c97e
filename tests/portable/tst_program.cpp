#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"
#include "tests/support/tool_run.h"

#include <QCoreApplication>
#include <QProcess>

/// The program as the instrument starts it.
class TestProgram : public TestBase {
    Q_OBJECT

private slots:
    /// What is asked on the command line is answered, without a display; what nobody knows is refused.
    void commandLine() {
        qputenv("QT_QPA_PLATFORM", "none such");
        const ToolRun help = runTool("portable_gui", {"--help"});
        const ToolRun version = runTool("portable_gui", {"--version"});
        const ToolRun unknown = runTool("portable_gui", {"--platform", "offscreen", "--nonsense"});
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QVERIFY(help.code == 0 && help.output.contains("--version"));
        QCOMPARE(version.output, QString("portable_gui " VELDA_VERSION "\n"));
        QVERIFY(unknown.code == 2 && unknown.error.contains("nonsense"));
    }

    void saysThatThereIsNoModule() {
        const TestFolder folder;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("VELDA_REGION", QString("/velda_none_%1").arg(QCoreApplication::applicationPid()));
        environment.insert("VELDA_HOME", folder.path());
        environment.insert("VELDA_LOG_DIR", folder.at("log"));
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(PANEL_PROGRAM, QStringList());
        QVERIFY(program.waitForStarted());
        const char box[] = "box: No connection to internal veldaX module. Please restart.";
        QTRY_VERIFY_WITH_TIMEOUT(folder.contentOf("log/portable_gui.log").contains(box), 30000);
        QCOMPARE(program.state(), QProcess::Running);
        program.kill();
        QVERIFY(program.waitForFinished());
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestProgram)
#include "tst_program.moc"
