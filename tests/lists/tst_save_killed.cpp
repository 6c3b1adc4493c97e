#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QTemporaryDir>
#include <csignal>

#include "lists/lists_ops.h"
#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

namespace {

enum class End { Killed, Saved, Failed, NotTraced };

// Saves in a process of its own, and kills that at the given stop; stops count from 1, two a system call.
End saveAndKill(const ListsOps& ops, const IListConfig& list, int stop) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(2);
        raise(SIGSTOP);
        QString error;
        _exit(ops.save("x", 0, list, error) ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    for (int i = 0; WIFSTOPPED(status); ++i) {
        if (i == stop) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return End::Killed;
        }
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1)
        return End::NotTraced;
    return WEXITSTATUS(status) == 0 ? End::Saved : End::Failed;
}

} // namespace

/// A panel that is killed while it saves. What is on the disk changes with system calls alone, so it is killed at the
/// entry to and at the exit from each one that a save makes.
class TestSaveKilled : public TestBase {
    Q_OBJECT

private slots:
    void atEverySystemCall_data() {
        QTest::addColumn<bool>("overOld");
        QTest::newRow("over an old file") << true;
        QTest::newRow("a first file") << false;
    }

    void atEverySystemCall() {
        QFETCH(bool, overOld);
        QTemporaryDir folder;
        const ListsOps ops(folder.filePath("list"));
        FrequencySteps oldList(3);
        FrequencySteps newList(40);
        QString error;
        int oldFound = 0;
        int newFound = 0;
        for (int stop = 1;; ++stop) {
            QVERIFY(QDir(ops.baseDirectory()).removeRecursively());
            if (overOld)
                QVERIFY(ops.save("x", 0, oldList.config, error));
            const End end = saveAndKill(ops, newList.config, stop);
            if (end == End::NotTraced)
                QSKIP("Processes may not be traced here.");
            QVERIFY(end != End::Failed);

            FrequencySteps found;
            if (ops.exists("x", 0)) {
                QVERIFY2(ops.load("x", 0, found.config, error), qPrintable(error));
                const bool isNew = found.text() == newList.text();
                QVERIFY(isNew || (overOld && found.text() == oldList.text()));
                ++(isNew ? newFound : oldFound);
            } else {
                QVERIFY(!overOld);
                ++oldFound;
            }
            QStringList names;
            QVERIFY(ops.enumerate(0, names, error));
            QVERIFY(names == QStringList("x.json") || (!overOld && names.isEmpty()));

            QVERIFY(ops.save("x", 0, newList.config, error));
            QCOMPARE(QDir(ops.channelDirectory(0)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                     QStringList("x.json"));
            if (end == End::Saved)
                break;
        }
        // Both sides of the moment of replacement were met.
        QVERIFY2(oldFound > 10 && newFound > 2, qPrintable(QString("%1 old, %2 new").arg(oldFound).arg(newFound)));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestSaveKilled)

#include "tst_save_killed.moc"
