#include "common/update/package_drop.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>

using namespace Kavor::HandheldGui;

/// A package on its way from the stick to where the module's service looks for it.
class TestPackageDrop : public TestBase {
    Q_OBJECT

private slots:
    /// An attribute of the system says that it holds a page, and ends after a few bytes without an error: so does a
    /// file whose stick is pulled.
    void aFileThatEndsTooEarlyReplacesNothing() {
        const TestFolder folder;
        const QString early = "/sys/class/net/lo/mtu";
        QVERIFY(QFileInfo(early).size() > 1000);
        const QString target = folder.put("drop/package", "before");
        QVERIFY(dropPackage(early, folder.at("drop"), target) == DropResult::NotCopied);
        QCOMPARE(folder.contentOf("drop/package"), QByteArray("before"));
        const QByteArray whole(600 * 1024, 'w'); // more than one piece
        QVERIFY(dropPackage(folder.put("stick", whole), folder.at("drop"), target) == DropResult::Copied);
        QCOMPARE(folder.contentOf("drop/package"), whole);
        QCOMPARE(QDir(folder.at("drop")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestPackageDrop)
#include "tst_package_drop.moc"
