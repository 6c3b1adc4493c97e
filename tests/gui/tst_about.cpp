#include "rig/panelfixture.h"
#include "tests/support/testbase.h"
#include "tests/support/tool_run.h"

#include <QApplication>
#include <QLabel>
#include <QPixmap>

using namespace Kavor::HandheldGui;

/// The about page.
class AboutTest : public TestBase {
    Q_OBJECT

    std::unique_ptr<PanelFixture> m_panel;

protected:
    void setUp() override { m_panel = std::make_unique<PanelFixture>(); }
    void tearDown() override {
        const QStringList problems = m_panel->dialogs().problems();
        m_panel.reset();
        QCOMPARE(problems, QStringList());
    }

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

    void versions() {
        m_panel->module().modify(
            0, [](ChannelRecord& r) { qstrncpy(r.firmwareVersion, "9.8.7/6.54", sizeof r.firmwareVersion); });
        QVERIFY(m_panel->press("funcAbout"));
        QTRY_COMPARE(m_panel->text("aboutModule"), QString("9.8.7/6.54"));
        QCOMPARE(m_panel->text("aboutModel"), QString("KV-6000"));
        QCOMPARE(m_panel->text("aboutPanel"), QString(VELDA_VERSION));
        QCOMPARE(m_panel->text("aboutQt"), QString(qVersion()));
        QVERIFY(QRegularExpression("\\d{4}, \\w+$").match(m_panel->text("aboutBuild")).hasMatch());
        const QPixmap picture = m_panel->widget<QLabel>("aboutPicture")->pixmap(Qt::ReturnByValue);
        QVERIFY(picture.width() > 400);
    }
};

VELDA_TEST_MAIN(QApplication, AboutTest)
#include "tst_about.moc"
