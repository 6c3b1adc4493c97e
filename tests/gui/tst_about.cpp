#include "rig/panelfixture.h"
#include "tests/support/testbase.h"

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
