#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QProcess>

/// The program as the instrument starts it.
class TestProgram : public TestBase {
    Q_OBJECT

private slots:
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
