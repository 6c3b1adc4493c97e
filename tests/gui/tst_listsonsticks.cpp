#include "lists/table/list_files.h"
#include "lists/table/list_table.h"
#include "portable/widgets/ToastOverlay.h"
#include "tests/gui/paneltest.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileInfo>

using namespace Kavor::HandheldGui;

namespace {
const QByteArray Five = "frequency,power,dwell\n1 GHz,-10,1 ms\n2 GHz,-10,1 ms\n3 GHz,-10,1 ms\n4 GHz,-10,1 ms\n"
                        "5 GHz,-10,1 ms\n";
}

/// Lists that come from a stick and go to one, and the touches that a list takes.
class ListsOnSticksTest : public PanelTest {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_media;
    int m_touches = 0;

    void setUp() override {
        m_media = std::make_unique<QTemporaryDir>();
        qputenv("VELDA_MEDIA", QFile::encodeName(m_media->path()));
        qputenv("VELDA_USER", "velda");
        m_touches = 0;
        PanelTest::setUp();
    }

    QString stick() { return m_media->path() + "/velda/FIELD KIT"; }
    ListFiles* browser() { return panel().widget<ListFiles>("listFiles"); }
    ListTable* table() { return panel().widget<ListTable>("listTable"); }

    void plugIn(const QString& file, const QByteArray& content) {
        QVERIFY(QDir().mkpath(stick()));
        QFile out(stick() + '/' + file);
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write(content) == content.size());
    }

    void touch(const QString& name) {
        ++m_touches;
        QVERIFY2(panel().press(name), qPrintable(name));
    }

    void touchCell(QTableView* view, int row, int column) {
        ++m_touches;
        const QModelIndex index = view->model()->index(row, column);
        view->scrollTo(index);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, view->visualRect(index).center());
    }

    void touchFile(const QString& file) {
        QTRY_COMPARE(browser()->findItems(file, Qt::MatchExactly).size(), 1);
        touchCell(browser(), browser()->findItems(file, Qt::MatchExactly).first()->row(), 1);
    }

    void expectKeys(const QString& title, const QStringList& keys) {
        m_touches += keys.size();
        panel().dialogs().expectKeys(title, keys);
    }

    void edit(int row, int column, const QStringList& keys) {
        expectKeys(QString(), keys);
        touchCell(table(), row, column);
    }

    void openStick(const char* button) {
        touch(button);
        QTRY_VERIFY(panel().widget<QWidget>("listPlace1") && panel().widget<QWidget>("listPlace1")->isVisible());
        touch("listPlace1");
    }

private slots:
    /// By hand, from the first screen until it runs: five frequencies at one power and one dwell.
    void fiveStepsByHand() {
        touch("funcList");
        edit(0, 1, {"key1", "keyUnit0"});
        edit(0, 2, {"keySign", "key5", "keyUnit0"});
        edit(0, 3, {"key5", "key0", "key0", "keyUnit1"});
        for (int row = 1; row < 5; ++row) {
            touch("listRepeat");
            edit(row, 1, {"key" + QString::number(row + 1), "keyDot", "key4", "keyUnit0"});
        }
        ++m_touches; // OK
        panel().dialogs().expectButton(DialogKind::Information, "Succeeded!", QMessageBox::Ok);
        touch("listUpload");
        touch("listEnable");
        touch("rfOn");
        touch("modOn");
        QCOMPARE(panel().text("statusModulation"), QString("Mode: List"));
        QCOMPARE(table()->model()->index(4, 1).data().toString(), QString("5.4 GHz"));
        QCOMPARE(table()->model()->index(4, 3).data().toString(), QString("500 \u00B5s"));
        QVERIFY2(m_touches <= 45, qPrintable(QString::number(m_touches)));
        std::printf("five steps by hand, running: %d touches\n", m_touches);
    }

    void fiveStepsFromAStick() {
        plugIn("five.csv", Five);
        touch("funcList");
        openStick("listLoad");
        touchFile("five.csv");
        QTRY_VERIFY(table()->isVisible());
        QCOMPARE(table()->rowCount(), 5);
        QCOMPARE(panel().text("listName"), QString("five.csv"));
        QCOMPARE(m_touches, 4);
    }

    void savesAndLoads() {
        plugIn("five.csv", Five);
        plugIn("bad.csv", Five + "x,0,1\n");
        touch("funcList");
        openStick("listLoad");
        touchFile("bad.csv");
        QTRY_COMPARE(panel().toast(), QString("Line 7, column 1: \"x\" is no frequency"));
        QVERIFY(browser()->isVisible());
        QCOMPARE(table()->rowCount(), 1);
        panel().window().toast()->hideImmediate();
        touchFile("five.csv");
        QTRY_VERIFY(table()->isVisible());
        for (const char* kind : {"csv", "json"}) {
            openStick("listSave");
            expectKeys("List filename", {"keyA", "keyEnter"});
            touchFile(QString("new .%1 file").arg(kind));
            QTRY_VERIFY(table()->isVisible());
            QCOMPARE(panel().toast(), QString("Saved a.%1 to FIELD KIT").arg(kind));
            QVERIFY(QFileInfo::exists(stick() + "/a." + kind));
            QVERIFY(!panel().widget<QWidget>("listUnsaved")->isVisible());
            panel().window().toast()->hideImmediate();
        }
        openStick("listSave");
        panel().dialogs().expectButton(DialogKind::Question, "Overwrite five.csv", QMessageBox::No);
        touchFile("five.csv");
        touch("listPlace0"); // the device
        QCOMPARE(browser()->rowCount(), 1);
        QCOMPARE(browser()->item(0, 1)->text(), QString("new file"));
        touch("listCancel");
        touch("listDelete"); // of the device only
        QVERIFY(!panel().widget<QWidget>("listPlace0")->isVisible());
        touch("listCancel");
        openStick("listLoad");
        touchFile("a.json");
        QTRY_VERIFY(table()->isVisible());
        QCOMPARE(table()->rowCount(), 5);
    }

    void pulled() {
        plugIn("five.csv", Five);
        touch("funcList");
        openStick("listSave");
        QTRY_COMPARE(browser()->rowCount(), 3);
        QVERIFY(QDir(stick()).removeRecursively());
        QTRY_COMPARE(panel().toast(), QString("FIELD KIT was removed"));
        QVERIFY(!panel().widget<QWidget>("listPlace0")->isVisible()); // the page is as without sticks
        QCOMPARE(browser()->rowCount(), 1);
        QVERIFY(!QFileInfo::exists(stick()));
    }
};

VELDA_TEST_MAIN(QApplication, ListsOnSticksTest)
#include "tst_listsonsticks.moc"
