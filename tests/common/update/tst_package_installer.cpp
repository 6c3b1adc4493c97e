#include "common/update/package_installer.h"
#include "tests/common/update/tar_file.h"
#include "tests/common/update/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QSignalSpy>

#include <sys/stat.h>

namespace {

/// type|action|name|destination, one string a component.
using Components = QStringList;

// Writes its arguments down and runs them, unless they are on the list of what must not really happen.
constexpr char kSudo[] = R"(#!/bin/sh
echo "$*" >> "$SUDO_LOG"
case "$1" in
    reboot) exit "${REBOOT_CODE:-0}" ;;
    *) exec "$@" ;;
esac
)";

} // namespace

/// tar, sh and the commands really run; sudo is a script that records.
class TestPackageInstaller : public TestBase {
    Q_OBJECT

private slots:
    void components_data() {
        // clang-format off
        QTest::addColumn<Components>("components");
        QTest::addColumn<int>("code");
        QTest::addColumn<QStringList>("commands");
        QTest::addColumn<QStringList>("failures");
        const auto row = [](const char* name, const Components& components, int code, const QStringList& commands = {},
                            const QStringList& failures = {}) {
            addRow(name, components, code, commands, failures);
        };
        const QString after("file|copy|a|%D/target/after");
        const QString ranAfter("cp %D/scratch/patch/a %D/target/after");
        row("none", {}, 0);
        row("copy and delete, in order", {"file|copy|a|%D/target/x", "dir|copy|d|%D/target", "file|delete|d/b", "dir|delete|d"}, 0,
            {"cp %D/scratch/patch/a %D/target/x", "cp -r %D/scratch/patch/d %D/target", "rm %D/scratch/patch/d/b", "rm -rf %D/scratch/patch/d"});
        row("actions", {"file|action|sudo echo one", "dir|action|sudo echo two; true"}, 0, {"echo one", "echo two"});
        row("failing copies and deletes go on", {"file|copy|none|%D/x", "dir|copy|none|%D/x", "file|delete|none", after}, 0,
            {"cp %D/scratch/patch/none %D/x", "cp -r %D/scratch/patch/none %D/x", "rm %D/scratch/patch/none", ranAfter},
            {"failed file copy command: sudo cp .*/none .*/x$", "failed dir copy command: sudo cp -r .*/none .*/x$", "failed file delete command: sudo rm .*/patch/none$"});
        row("failing folder action goes on", {"dir|action|exit 3", after}, 0, {ranAfter}, {"failed dir action command: exit 3$"});
        row("failing file action stops", {"file|action|exit 3", after}, -5, {}, {"failed action command: exit 3$"});
        row("unknown file action stops", {"file|Copy|a|%D/target", after}, -5, {}, {"unknown file action: Copy$"});
        row("unknown folder action goes on", {"dir|move|d|%D/target", after}, 0, {ranAfter}, {"unknown dir action: move$"});
        row("unknown type goes on", {"File|copy|a|%D/target", "||", after}, 0, {ranAfter}, {"unknown component type: File$", "unknown component type: $"});
        row("refused copy goes on", {"file|copy|a;b|%D/x", after}, 0, {ranAfter}, {"failed file copy command: sudo cp .*/a;b .*/x$"});
        row("no reboot by another spelling", {"file|action|sudo  reboot", "dir|action|sudo reboot", after}, 0, {"reboot", "reboot", ranAfter});
        // clang-format on
    }

    void components() {
        QFETCH(Components, components);
        QFETCH(QStringList, failures);
        useComponents(components);
        for (const QString& failure : qAsConst(failures))
            expectMessage("^fwThread::fwUpgrade " + failure);
        QTEST(install(), "code");
        QTEST(sudoed(), "commands");
    }

    void refusedNames_data() {
        // clang-format off
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("destination");
        QTest::addColumn<bool>("runs");
        const auto row = [](const char* what, const QString& name, const QString& destination, bool runs = false) {
            addRow(what, name, destination, runs);
        };
        row("every character that may be", "aZ09._-+@%,:=/x", "/aZ09._-+@%,:=/../x", true);
        row("dots that are no way out", "..a/b../...", "../d", true);
        row("empty name", "", "/d");
        row("empty destination", "a", "");
        row("option as name", "-rf", "/d");
        row("option as destination", "a", "-t/etc");
        row("way out", "../canary", "/d");
        row("way out behind", "d/../../../canary", "/d");
        for (const QChar bad : QString::fromUtf8(" \t\n;&|$`'\"\\*?[]{}()<>~#!^\xC3\xA4\x01\x7F")) {
            row(qPrintable(QString("name with U+%1").arg(bad.unicode(), 4, 16)), QString("a") + bad + 'b', "/d");
            row(qPrintable(QString("destination with U+%1").arg(bad.unicode(), 4, 16)), "a", QString("/d") + bad);
        }
        // clang-format on
    }

    void refusedNames() {
        QFETCH(QString, name);
        QFETCH(QString, destination);
        for (const char* type : {"file", "dir"})
            QTEST(planComponent({type, name, "copy", destination}, at("scratch")).refusal.isEmpty(), "runs");
        if (destination == "/d") // what is deleted has a name only
            QTEST(planComponent({"file", name, "delete", {}}, at("scratch")).refusal.isEmpty(), "runs");
    }

    void linksInTheArchive() {
        const QByteArray here = QFile::encodeName(m_dir->path());
        TarFile archive;
        archive.add("patch/a", "A").add("patch/d/b", "B").link("patch/inside", "a").link("patch/insideFolder", "d");
        archive.link("patch/out", here + "/canary").link("patch/outFolder", here).link("patch/up", "../..");
        archive.link("patch/nowhere", here + "/none").link("patch/loop", "loop").link("patch/second", "out");
        usePackage(archive.gzip());
        for (const char* out : {"out", "outFolder/canary", "up/canary", "nowhere", "loop/x", "second"}) {
            const QString name(out);
            useComponents({"file|copy|" + name + "|%D/target/x", "file|delete|" + name, "dir|delete|" + name});
            for (const char* what : {"file copy", "file delete", "dir delete"})
                expectMessage(QString("failed %1 command: sudo .*/%2").arg(what, name));
        }
        useComponents({"file|copy|inside|%D/target/in", "file|copy|insideFolder/b|%D/target/b"});
        const QByteArray canary = m_dir->contentOf("canary");
        QCOMPARE(install(), 0);
        QCOMPARE(sudoed().size(), 2);
        QCOMPARE(m_dir->contentOf("target/in") + m_dir->contentOf("target/b"), QByteArray("AB"));
        QVERIFY(!QFile::exists(at("target/x")));
        QCOMPARE(m_dir->contentOf("canary"), canary);
    }

    void hostileArchive_data() {
        // clang-format off
        QTest::addColumn<QByteArrayList>("members");
        addRow("way out", QByteArrayList{"../canary|evil"});
        addRow("absolute", QByteArrayList{"%D/canary|evil"});
        addRow("through a link", QByteArrayList{"l|2|%D", "l/canary|evil"});
        addRow("through two links", QByteArrayList{"a|2|..", "b|2|a", "b/canary|evil"});
        addRow("onto a link", QByteArrayList{"l|2|%D/canary", "l|evil"});
        addRow("onto a hard link", QByteArrayList{"h|1|%D/canary", "h|evil"});
        addRow("hard link through a link", QByteArrayList{"l|2|..", "h|1|l/canary", "h|evil"});
        addRow("folder over a link", QByteArrayList{"l|2|..", "l/|5|", "l/canary|evil"});
        // clang-format on
    }

    // Members are name|content or name|kind of member|target. tar may refuse such an archive or take what is harmless
    // of it; nothing outside the scratch folder may change.
    void hostileArchive() {
        QFETCH(QByteArrayList, members);
        allowMessages("failed extracting package");
        TarFile archive;
        for (QByteArray& member : members) {
            const auto parts = member.replace("%D", QFile::encodeName(m_dir->path())).split('|');
            if (parts.size() == 2)
                archive.add(parts[0], parts[1]);
            else
                archive.add(parts[0], {}, static_cast<TarFile::Kind>(parts[1][0]), parts[2]);
        }
        usePackage(archive.gzip());
        const QStringList before = outside();
        const int code = install();
        QVERIFY(code == 0 || code == -4);
        QCOMPARE(outside(), before);
    }

    void spoiltPackage_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind :
             {"cut at 500", "cut at 999", "missing", "folder", "pipe", "device", "unreadable", "no archive"})
            addRow(kind, kind);
    }

    // The first are what a stick that is pulled leaves of a package.
    void spoiltPackage() {
        QFETCH(QString, kind);
        QByteArray noise(200000, '\0');
        for (int i = 0; i < noise.size(); ++i)
            noise[i] = static_cast<char>((i * 7919) >> 5 ^ i);
        const QByteArray whole = TarFile().add("patch/a", noise).gzip();
        const QString path = at("package");
        QVERIFY(QFile::remove(path));
        if (kind.startsWith("cut"))
            m_dir->put("package", whole.left(whole.size() * kind.mid(7).toInt() / 1000));
        else if (kind == "folder")
            QVERIFY(QDir().mkpath(path));
        else if (kind == "pipe")
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (kind == "device" || kind == "unreadable")
            QVERIFY(QFile::link(kind == "device" ? "/dev/zero" : "/proc/self/mem", path));
        else if (kind == "no archive")
            m_dir->put("package", "text");
        useComponents({"file|copy|a|%D/target/x"});
        expectMessage("^fwThread::fwUpgrade failed extracting package " + path + '$');
        QCOMPARE(install(), -4);
        QCOMPARE(sudoed(), QStringList());
        QVERIFY(!QFile::exists(at("scratch"))); // half a package stays nowhere
    }

    void scratchFolder_data() {
        // clang-format off
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("before");
        QTest::addColumn<int>("code");
        addRow("old files in it", "%D/scratch", "scratch/patch/old", 0);
        addRow("a file", "%D/scratch", "scratch", 0);
        addRow("a link to what is not ours", "%D/scratch", "link", 0);
        addRow("cannot be deleted, by anyone", "/proc/self", "", -2);
        addRow("cannot be created", "%D/canary/scratch", "", -3);
        addRow("a name the shell would split", "%D/scr atch", "", -3);
        addRow("relative", "scratch", "", -3);
        // clang-format on
    }

    void scratchFolder() {
        QFETCH(QString, folder);
        QFETCH(QString, before);
        QFETCH(int, code);
        m_settings.scratchFolder = folder.replace("%D", m_dir->path());
        if (before == "link")
            QVERIFY(QFile::link(at("target"), at("scratch")));
        else if (!before.isEmpty())
            m_dir->put(before, "x");
        m_dir->put("target/mine", "x");
        if (code != 0)
            expectMessage(
                QString("^fwThread::fwUpgrade failed %1 %2$").arg(code == -2 ? "deleting" : "creating", folder));
        QCOMPARE(install(), code);
        QCOMPARE(QFile::exists(at("scratch/patch/a")), code == 0);
        QVERIFY(!QFile::exists(at("scratch/patch/old")));
        QVERIFY(QFile::exists(at("target/mine")));
    }

    void nothingToInstall() {
        useComponents({"file|copy|a|%D/target/x"});
        m_manifest->components.push_back(nullptr);
        useComponents({"file|copy|a|%D/target/y"});
        expectMessage("^fwThread::fwUpgrade: null manifest component$");
        QCOMPARE(install(), -1);
        QVERIFY(QFile::exists(at("target/x")) && !QFile::exists(at("target/y")));
        m_manifest.reset();
        expectMessage("^fwThread::fwUpgrade: manifest is null$");
        QCOMPARE(install(), -1);
        QVERIFY(QFile::exists(at("scratch"))); // as it was
    }

    void reboot_data() {
        QTest::addColumn<QByteArray>("rebootCode");
        QTest::addColumn<bool>("removes");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("failure");
        addRow("takes the patch folder first", QByteArray("0"), true, 0, "");
        addRow("fails", QByteArray("1"), true, -5, "failed action command: sudo reboot$");
        addRow("is left out when the folder stays", QByteArray("0"), false, -5,
               "failed cleanup before reboot: rm -rf .*/scratch/patch$");
    }

    void reboot() {
        QFETCH(QByteArray, rebootCode);
        QFETCH(bool, removes);
        QFETCH(QString, failure);
        qputenv("REBOOT_CODE", rebootCode);
        if (!removes)
            m_dir->putProgram("bin/rm", "#!/bin/sh\nexit 1\n");
        useComponents({"file|copy|a|%D/target/x", "file|action|sudo reboot", "file|action|touch %D/target/y"});
        if (!failure.isEmpty())
            expectMessage("^fwThread::fwUpgrade " + failure);
        QTEST(install(), "code");
        QCOMPARE(sudoed().contains("reboot"), removes);
        QCOMPARE(QFile::exists(at("scratch/patch")), !removes);
        QVERIFY(QFile::exists(at("target/x")));
        QCOMPARE(QFile::exists(at("target/y")), failure.isEmpty());
    }

    void commands() {
        const struct {
            bool ok;
            const char* program;
            QStringList arguments;
        } table[] = {{false, "/none/such", {}},
                     {false, "sh", {"-c", "kill -TERM $$"}},
                     {true, "test", {"a b;c", "=", "a b;c"}}, // arguments stay apart
                     {true, "cat", {}},                       // has nothing to read
                     {true, "head", {"-c", "20000000", "/dev/zero"}}};
        fwThread installer(nullptr, m_settings);
        for (const auto& row : table)
            QVERIFY2(installer.RunSytemLinuxCommand(row.program, row.arguments) == row.ok, row.program);
    }

    void daemonDoesNotHoldTheInstaller() {
        fwThread installer(nullptr, m_settings);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(installer.RunSystemShellCommand("sleep 30 & echo $! > " + at("pid")));
        QVERIFY(timer.elapsed() < 10000);
        QVERIFY(installer.RunSystemShellCommand("kill $(cat " + at("pid") + ')'));
    }

protected:
    void setUp() override {
        m_dir = std::make_unique<TestFolder>();
        m_dir->putProgram("bin/sudo", kSudo);
        m_path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(at("bin")) + ':' + m_path);
        qputenv("SUDO_LOG", QFile::encodeName(at("sudo.log")));
        qunsetenv("REBOOT_CODE");
        m_dir->put("canary", "alive");
        QVERIFY(QDir().mkpath(at("target")));
        m_settings.scratchFolder = at("scratch");
        m_settings.startTimeoutMs = 10000;
        m_manifest = std::make_unique<MANIFEST_DATA>();
        usePackage(TarFile().add("patch/a", "A").add("patch/d/", {}, TarFile::Folder).add("patch/d/b", "B").gzip());
    }

    void tearDown() override { qputenv("PATH", m_path); }

private:
    QString at(const QString& name) const { return m_dir->at(name); }

    void usePackage(const QByteArray& bytes) {
        m_dir->put("package", bytes);
        m_manifest->package_path = at("package");
    }

    void useComponents(const Components& components) {
        for (const QString& line : components) {
            const QStringList parts = QString(line).replace("%D", m_dir->path()).split('|');
            m_manifest->components.push_back(std::make_unique<MANIFEST_DATA_COMPONENT>(
                MANIFEST_DATA_COMPONENT{parts.value(0), parts.value(2), parts.value(1), parts.value(3)}));
        }
    }

    int install() {
        fwThread installer(m_manifest.get(), m_settings);
        QSignalSpy spy(&installer, &fwThread::fwUpgraded);
        installer.fwUpgrade();
        return spy.size() == 1 ? spy.first().first().toInt() : -99;
    }

    /// What sudo was asked for, with the test's folder as %D.
    QStringList sudoed() const {
        return QString(m_dir->contentOf("sudo.log")).replace(m_dir->path(), "%D").split('\n', Qt::SkipEmptyParts);
    }

    /// Everything below the test's folder but the scratch folder, with contents.
    QStringList outside() const {
        QStringList found;
        QDirIterator files(m_dir->path(), QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            if (!path.startsWith(at("scratch")))
                found << path + '=' + (files.fileInfo().isFile() ? m_dir->contentOf(path) : QByteArray());
        }
        found.sort();
        return found;
    }

    std::unique_ptr<TestFolder> m_dir;
    std::unique_ptr<MANIFEST_DATA> m_manifest;
    InstallSettings m_settings;
    QByteArray m_path;
};

VELDA_TEST_MAIN(QCoreApplication, TestPackageInstaller)
#include "tst_package_installer.moc"
