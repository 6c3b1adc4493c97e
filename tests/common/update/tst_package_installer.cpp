#include "common/update/package_installer.h"
#include "tests/common/update/tar_file.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

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

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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
            QTest::newRow(name) << components << code << commands << failures;
        };
        const QString after("file|copy|a|%D/target/after");
        const QString ranAfter("cp %D/scratch/patch/a %D/target/after");
        row("none", {}, 0);
        row("copy a file", {"file|copy|a|%D/target/x"}, 0, {"cp %D/scratch/patch/a %D/target/x"});
        row("copy a folder", {"dir|copy|d|%D/target"}, 0, {"cp -r %D/scratch/patch/d %D/target"});
        row("delete a file", {"file|delete|d/b"}, 0, {"rm %D/scratch/patch/d/b"});
        row("delete a folder", {"dir|delete|d"}, 0, {"rm -rf %D/scratch/patch/d"});
        row("in order", {"dir|delete|d", after}, 0, {"rm -rf %D/scratch/patch/d", ranAfter});
        row("actions", {"file|action|sudo echo one", "dir|action|sudo echo two; true"}, 0, {"echo one", "echo two"});
        row("failing copy goes on", {"file|copy|none|%D/target", after}, 0, {"cp %D/scratch/patch/none %D/target", ranAfter},
            {"failed file copy command: sudo cp .*/scratch/patch/none .*/target$"});
        row("failing folder copy goes on", {"dir|copy|none|%D/x", after}, 0, {"cp -r %D/scratch/patch/none %D/x", ranAfter},
            {"failed dir copy command: sudo cp -r .*/none .*/x$"});
        row("failing delete goes on", {"file|delete|none", after}, 0, {"rm %D/scratch/patch/none", ranAfter},
            {"failed file delete command: sudo rm .*/patch/none$"});
        row("failing folder action goes on", {"dir|action|exit 3", after}, 0, {ranAfter}, {"failed dir action command: exit 3$"});
        row("failing file action stops", {"file|action|exit 3", after}, -5, {}, {"failed action command: exit 3$"});
        row("killed file action stops", {"file|action|kill -9 $$", after}, -5, {}, {"failed action command: kill -9 \\$\\$$"});
        row("unknown file action stops", {"file|Copy|a|%D/target", after}, -5, {}, {"unknown file action: Copy$"});
        row("unknown folder action goes on", {"dir|move|d|%D/target", after}, 0, {ranAfter}, {"unknown dir action: move$"});
        row("unknown type goes on", {"File|copy|a|%D/target", "||", after}, 0, {ranAfter}, {"unknown component type: File$", "unknown component type: $"});
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
        if (!components.isEmpty() && components.first().startsWith("file|copy|a|%D/target/x"))
            QCOMPARE(contentOf(at("target/x")), QByteArray("A"));
    }

    void refusedNames_data() {
        // clang-format off
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("destination");
        QTest::addColumn<bool>("runs");
        const auto row = [](const char* what, const QString& name, const QString& destination, bool runs = false) {
            QTest::newRow(what) << name << destination << runs;
        };
        row("every character that may be", "aZ09._-+@%,:=/x", "/aZ09._-+@%,:=/../x", true);
        row("dots that are no way out", "..a/b../...", "../d", true);
        row("empty name", "", "/d");
        row("empty destination", "a", "");
        row("option as name", "-rf", "/d");
        row("option as destination", "a", "-t/etc");
        row("way out", "../canary", "/d");
        row("way out behind", "d/../../../canary", "/d");
        row("nothing but the way out", "..", "/d");
        row("leads back in", "d/../a", "/d");
        for (const QChar bad : QString::fromUtf8(" \t\n;&|$`'\"\\*?[]{}()<>~#!^\xC3\xA4\x01\x7F")) {
            row(qPrintable(QString("name with U+%1").arg(bad.unicode(), 4, 16)), QString("a") + bad + 'b', "/d");
            row(qPrintable(QString("destination with U+%1").arg(bad.unicode(), 4, 16)), "a", QString("/d") + bad);
        }
        // clang-format on
    }

    void refusedNames() {
        QFETCH(QString, name);
        QFETCH(QString, destination);
        QFETCH(bool, runs);
        for (const char* type : {"file", "dir"}) {
            const MANIFEST_DATA_COMPONENT copy{type, name, "copy", destination};
            const ComponentPlan plan = planComponent(copy, at("scratch"));
            QCOMPARE(plan.refusal.isEmpty(), runs);
            QVERIFY(!plan.stops);
        }
        if (runs)
            return;
        m_manifest->components.push_back(
            std::make_unique<MANIFEST_DATA_COMPONENT>(MANIFEST_DATA_COMPONENT{"file", name, "copy", destination}));
        expectMessage("^fwThread::fwUpgrade failed file copy command: sudo cp ");
        const QStringList before = outside();
        QCOMPARE(install(), 0);
        QCOMPARE(outside(), before);
    }

    void linksInTheArchive_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"inside", "insideFolder/b", "out", "outFolder/canary", "outFolder/", "up/canary",
                                 "nowhere", "loop/x", "second"})
            QTest::newRow(name) << name;
    }

    void linksInTheArchive() {
        QFETCH(QString, name);
        const bool runs = name.startsWith("inside");
        const QByteArray here = QFile::encodeName(m_dir->path());
        // clang-format off
        usePackage(TarFile().add("patch/a", "A").add("patch/d/b", "B")
                       .link("patch/inside", "a")
                       .link("patch/insideFolder", "d")
                       .link("patch/out", here + "/canary")
                       .link("patch/outFolder", here)
                       .link("patch/up", "../..")
                       .link("patch/nowhere", here + "/none")
                       .link("patch/loop", "loop")
                       .link("patch/second", "out")
                       .gzip());
        // clang-format on
        useComponents({"file|copy|" + name + "|%D/target/x", "file|delete|" + name, "dir|delete|" + name});
        for (const char* what : {"file copy", "file delete", "dir delete"}) {
            if (!runs)
                expectMessage(QString("failed %1 command").arg(what));
        }
        QCOMPARE(install(), 0);
        QCOMPARE(sudoed().size(), runs ? 3 : 0);
        QCOMPARE(QFile::exists(at("target/x")), runs);
        QCOMPARE(contentOf(at("canary")), QByteArray("alive"));
    }

    void hostileArchive_data() {
        // clang-format off
        QTest::addColumn<QByteArrayList>("members");
        QTest::newRow("way out")                << QByteArrayList{"../canary|evil"};
        QTest::newRow("way out behind")         << QByteArrayList{"patch/../../canary|evil"};
        QTest::newRow("absolute")               << QByteArrayList{"%D/canary|evil"};
        QTest::newRow("absolute, new")          << QByteArrayList{"%D/new|evil"};
        QTest::newRow("through a link")         << QByteArrayList{"l|2|%D", "l/canary|evil"};
        QTest::newRow("through a link up")      << QByteArrayList{"l|2|..", "l/canary|evil"};
        QTest::newRow("through two links")      << QByteArrayList{"a|2|..", "b|2|a", "b/canary|evil"};
        QTest::newRow("onto a link")            << QByteArrayList{"l|2|%D/canary", "l|evil"};
        QTest::newRow("onto a hard link")       << QByteArrayList{"h|1|%D/canary", "h|evil"};
        QTest::newRow("onto a hard link up")    << QByteArrayList{"h|1|../canary", "h|evil"};
        QTest::newRow("hard link through a link") << QByteArrayList{"l|2|..", "h|1|l/canary", "h|evil"};
        QTest::newRow("folder over a link")     << QByteArrayList{"l|2|..", "l/|5|", "l/canary|evil"};
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

    void cutArchive_data() {
        QTest::addColumn<int>("permille");
        for (const int permille : {0, 1, 10, 500, 990, 999})
            QTest::addRow("%d of 1000", permille) << permille;
    }

    // What a stick that is pulled leaves of the package.
    void cutArchive() {
        QFETCH(int, permille);
        QByteArray noise(200000, '\0');
        for (int i = 0; i < noise.size(); ++i)
            noise[i] = static_cast<char>((i * 7919) >> 5 ^ i);
        const QByteArray whole = TarFile().add("patch/a", noise).gzip();
        usePackage(whole.left(whole.size() * permille / 1000));
        useComponents({"file|copy|a|%D/target/x"});
        expectMessage("^fwThread::fwUpgrade failed extracting package " + m_manifest->package_path + '$');
        QCOMPARE(install(), -4);
        QCOMPARE(sudoed(), QStringList());
        QVERIFY(!QFile::exists(at("scratch"))); // half a package stays nowhere
    }

    void packageThatIsNoFile_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"missing", "folder", "pipe", "device", "unreadable", "no archive"})
            QTest::newRow(kind) << kind;
    }

    void packageThatIsNoFile() {
        QFETCH(QString, kind);
        QVERIFY(QFile::remove(at("package")));
        if (kind == "folder")
            QVERIFY(QDir().mkpath(at("package")));
        if (kind == "pipe")
            QCOMPARE(mkfifo(QFile::encodeName(at("package")).constData(), 0600), 0);
        if (kind == "device")
            QVERIFY(QFile::link("/dev/zero", at("package")));
        if (kind == "unreadable")
            QVERIFY(QFile::link("/proc/self/mem", at("package")));
        if (kind == "no archive")
            put("package", "text");
        expectMessage("failed extracting package");
        QCOMPARE(install(), -4);
    }

    void scratchFolder_data() {
        // clang-format off
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("before");
        QTest::addColumn<int>("code");
        QTest::newRow("not there")                    << "%D/scratch"        << ""                 << 0;
        QTest::newRow("old files in it")              << "%D/scratch"        << "scratch/patch/old" << 0;
        QTest::newRow("a file")                       << "%D/scratch"        << "scratch"          << 0;
        QTest::newRow("a link to what is not ours")   << "%D/scratch"        << "link"             << 0;
        QTest::newRow("cannot be deleted, by anyone") << "/proc/self"        << ""                 << -2;
        QTest::newRow("cannot be created")            << "%D/canary/scratch" << ""                 << -3;
        QTest::newRow("a name the shell would split") << "%D/scr atch"       << ""                 << -3;
        QTest::newRow("relative")                     << "scratch"           << ""                 << -3;
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
            put(before, "x");
        put("target/mine", "x");
        if (code != 0)
            expectMessage(
                QString("^fwThread::fwUpgrade failed %1 %2$").arg(code == -2 ? "deleting" : "creating", folder));
        QCOMPARE(install(), code);
        QCOMPARE(QFile::exists(at("scratch/patch/a")), code == 0);
        QVERIFY(!QFile::exists(at("scratch/patch/old")));
        QVERIFY(QFile::exists(at("target/mine")));
    }

    void noManifest() {
        m_manifest.reset();
        expectMessage("^fwThread::fwUpgrade: manifest is null$");
        QCOMPARE(install(), -1);
        QVERIFY(!QFile::exists(at("scratch")));
    }

    void nullComponent() {
        useComponents({"file|copy|a|%D/target/x"});
        m_manifest->components.push_back(nullptr);
        useComponents({"file|copy|a|%D/target/y"});
        expectMessage("^fwThread::fwUpgrade: null manifest component$");
        QCOMPARE(install(), -1);
        QVERIFY(QFile::exists(at("target/x")) && !QFile::exists(at("target/y")));
    }

    void rebootTakesThePatchFolderFirst() {
        useComponents({"file|copy|a|%D/target/x", "file|action|sudo reboot"});
        QCOMPARE(install(), 0);
        QCOMPARE(sudoed().last(), QString("reboot"));
        QVERIFY(QFile::exists(at("scratch")) && !QFile::exists(at("scratch/patch")));
    }

    void failingReboot() {
        qputenv("REBOOT_CODE", "1");
        useComponents({"file|action|sudo reboot", "file|copy|a|%D/target/x"});
        expectMessage("^fwThread::fwUpgrade failed action command: sudo reboot$");
        QCOMPARE(install(), -5);
        QVERIFY(!QFile::exists(at("target/x")));
    }

    void failingCleanUpDoesNotReboot() {
        put("bin/rm", "#!/bin/sh\nexit 1\n");
        QVERIFY(QFile::setPermissions(at("bin/rm"), QFile::ReadOwner | QFile::ExeOwner));
        useComponents({"file|action|sudo reboot"});
        expectMessage("^fwThread::fwUpgrade failed cleanup before reboot: rm -rf .*/scratch/patch$");
        QCOMPARE(install(), -5);
        QCOMPARE(sudoed(), QStringList());
    }

    void command_data() {
        // clang-format off
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("exit code")            << false << "false"      << QStringList();
        QTest::newRow("not there")            << false << "/none/such" << QStringList();
        QTest::newRow("killed")               << false << "sh"         << QStringList{"-c", "kill -TERM $$"};
        QTest::newRow("arguments stay apart") << true  << "test"       << QStringList{"a b;c", "=", "a b;c"};
        QTest::newRow("reads nothing")        << true  << "cat"        << QStringList();
        QTest::newRow("talks a lot")          << true  << "head"       << QStringList{"-c", "20000000", "/dev/zero"};
        // clang-format on
    }

    void command() {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        fwThread installer(nullptr, m_settings);
        QTEST(installer.RunSytemLinuxCommand(program, arguments), "ok");
    }

    void daemonDoesNotHoldTheInstaller() {
        fwThread installer(nullptr, m_settings);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(installer.RunSystemShellCommand("sleep 30 & echo $! > " + at("pid")));
        QVERIFY(timer.elapsed() < 10000);
        QVERIFY(installer.RunSystemShellCommand("kill $(cat " + at("pid") + ')'));
    }

    void resultCrossesThreads() {
        useComponents({"file|copy|a|%D/target/x"});
        fwThread installer(m_manifest.get(), m_settings);
        int code = -99;
        QThread* thread = nullptr;
        connect(&installer, &fwThread::fwUpgraded, this, [&](int result) {
            code = result;
            thread = QThread::currentThread();
        });
        installer.start();
        QTRY_COMPARE(code, 0);
        QCOMPARE(thread, QThread::currentThread());
        QVERIFY(installer.wait(5000));
        QVERIFY(QFile::exists(at("target/x")));
    }

protected:
    void setUp() override {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        put("bin/sudo", kSudo);
        QVERIFY(QFile::setPermissions(at("bin/sudo"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        m_path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(at("bin")) + ':' + m_path);
        qputenv("SUDO_LOG", QFile::encodeName(at("sudo.log")));
        qunsetenv("REBOOT_CODE");
        put("canary", "alive");
        QVERIFY(QDir().mkpath(at("target")));
        m_settings.scratchFolder = at("scratch");
        m_settings.startTimeoutMs = 10000;
        m_manifest = std::make_unique<MANIFEST_DATA>();
        usePackage(TarFile().add("patch/a", "A").add("patch/d/", {}, TarFile::Folder).add("patch/d/b", "B").gzip());
    }

    void tearDown() override { qputenv("PATH", m_path); }

private:
    QString at(const QString& name) const { return m_dir->filePath(name); }

    void put(const QString& name, const QByteArray& bytes) const {
        QDir().mkpath(QFileInfo(at(name)).absolutePath());
        QFile file(at(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qWarning("cannot write %s", qPrintable(name));
    }

    void usePackage(const QByteArray& bytes) {
        put("package", bytes);
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
        return QString(contentOf(at("sudo.log"))).replace(m_dir->path(), "%D").split('\n', Qt::SkipEmptyParts);
    }

    /// Everything below the test's folder but the scratch folder, with contents.
    QStringList outside() const {
        QStringList found;
        QDirIterator files(m_dir->path(), QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            if (!path.startsWith(at("scratch")))
                found << path + '=' + (files.fileInfo().isFile() ? contentOf(path) : QByteArray());
        }
        found.sort();
        return found;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<MANIFEST_DATA> m_manifest;
    InstallSettings m_settings;
    QByteArray m_path;
};

VELDA_TEST_MAIN(QCoreApplication, TestPackageInstaller)
#include "tst_package_installer.moc"
