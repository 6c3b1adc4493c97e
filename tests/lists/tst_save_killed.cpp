#include "lists/lists_ops.h"
#include "tests/lists/steplist.h"
#include "tests/support/killed_process.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QTemporaryDir>

using KilledProcess::End;

/// A panel that is killed while it saves, at each system call that a save makes.
class TestSaveKilled : public TestBase {
    Q_OBJECT

    const FrequencySteps m_old{3};
    const FrequencySteps m_new{40};
    int m_oldFound = 0;
    int m_newFound = 0;

    static QStringList everything(const ListsOps& ops) {
        return QDir(ops.channelDirectory(0)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    // Whichever list is there is whole, and nothing else is after the next save.
    void check(const ListsOps& ops, bool mustBeThere) {
        FrequencySteps found;
        QString error;
        const bool isThere = ops.exists("x", 0);
        QVERIFY(isThere || !mustBeThere);
        if (isThere)
            QVERIFY2(ops.load("x", 0, found.config, error), qPrintable(error));
        const bool isNew = found.text() == m_new.text();
        QVERIFY(isNew || !isThere || (mustBeThere && found.text() == m_old.text()));
        ++(isNew ? m_newFound : m_oldFound);
        QStringList names;
        QVERIFY(ops.enumerate(0, names, error));
        QCOMPARE(names, isThere ? QStringList("x.json") : QStringList());
        QVERIFY(ops.save("x", 0, m_old.config, error));
        QCOMPARE(everything(ops), QStringList("x.json"));
    }

    // Before and after the moment of replacement.
    void bothSidesWereMet(int oldFound, int newFound) const {
        QVERIFY2(m_oldFound > oldFound && m_newFound > newFound,
                 qPrintable(QString("%1 old, %2 new").arg(m_oldFound).arg(m_newFound)));
    }

protected:
    void setUp() override { m_oldFound = m_newFound = 0; }

private slots:
    void atEverySystemCall_data() {
        QTest::addColumn<bool>("overOld");
        addRow("over an old file", true);
        addRow("a first file", false);
    }

    void atEverySystemCall() {
        QFETCH(bool, overOld);
        QTemporaryDir folder;
        const ListsOps ops(folder.filePath("list"));
        QString error;
        End end = End::Killed;
        for (int stop = 1; end == End::Killed; ++stop) {
            QVERIFY(QDir(ops.baseDirectory()).removeRecursively());
            if (overOld)
                QVERIFY(ops.save("x", 0, m_old.config, error));
            end = KilledProcess::runAndKill([&] { return ops.save("x", 0, m_new.config, error); }, stop);
            if (end == End::NotTraced)
                QSKIP("Processes may not be traced here.");
            check(ops, overOld);
            if (QTest::currentTestFailed())
                return;
        }
        QCOMPARE(end, End::Done);
        bothSidesWereMet(10, 2);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestSaveKilled)

#include "tst_save_killed.moc"
