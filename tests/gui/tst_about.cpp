#include "portable/window/focustrace.h"
#include "rig/panelfixture.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QLabel>
#include <QPixmap>

using namespace Kavor::HandheldGui;

namespace {

QStringList lines;

void takeLine(QtMsgType, const QMessageLogContext&, const QString& text) {
    if (text.startsWith("[FOCUS]"))
        lines << text;
}

/// Collects the lines of the trace while it lives.
class Lines {
public:
    Lines() : m_before(qInstallMessageHandler(takeLine)) { lines.clear(); }
    ~Lines() { qInstallMessageHandler(m_before); }

private:
    QtMessageHandler m_before;
};

} // namespace

/// The about page, and the trace of focus and input.
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

    void traceTellsWhatAWidgetSees() {
        const Lines collected;
        qunsetenv("VELDA_FOCUS_TRACE");
        FocusTrace::startIfAsked(qApp);
        QVERIFY(m_panel->press("funcAbout"));
        QCOMPARE(lines, QStringList());
        qputenv("VELDA_FOCUS_TRACE", "1");
        FocusTrace::startIfAsked(qApp);
        qunsetenv("VELDA_FOCUS_TRACE");
        QTest::keyClick(&m_panel->window(), Qt::Key_F5);
        QVERIFY(m_panel->press("funcSystem"));
        auto* button = m_panel->widget<QWidget>("sysStore");
        button->setFocus(Qt::OtherFocusReason);
        QTRY_VERIFY(button->hasFocus());
        QVERIFY(m_panel->touch("funcAbout"));
        QVERIFY(m_panel->press("funcCw"));
        m_panel->dialogs().expectKeys("CW Power", {"keyEsc"});
        QVERIFY(m_panel->touch("cwPower"));
        delete qApp->findChild<FocusTrace*>();
        const int traced = lines.size();
        QVERIFY(m_panel->press("funcAbout"));
        QCOMPARE(lines.size(), traced);

        const QString all = lines.join('\n');
        const QString about = "Kavor::HandheldGui::IntfButton \"funcAbout\" at 72,29";
        for (const QString& expected : {QString("[FOCUS] TouchBegin Kavor::HandheldGui::vkPowerEdit \"cwPower\" at "),
                                        "[FOCUS] MouseButtonPress " + about + " from touch",
                                        "[FOCUS] MouseButtonRelease " + about + " from touch",
                                        QString("[FOCUS] FocusIn QPushButton \"sysStore\" reason OtherFocusReason"),
                                        QString("key %1").arg(Qt::Key_F5)})
            QVERIFY2(all.contains(expected), qPrintable(expected + "\nnot in\n" + all));
    }
};

VELDA_TEST_MAIN(QApplication, AboutTest)
#include "tst_about.moc"
