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

using Builder = TarFile (*)(const QByteArray& folder);

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

Q_DECLARE_METATYPE(Builder)

/// tar, sh and the commands really run; sudo is a script that records.
class TestPackageInstaller : public TestBase {
    Q_OBJECT

private slots:
    void components_data();
    void components();
    void refusedNames_data();
    void refusedNames();
    void linksInTheArchive_data();
    void linksInTheArchive();
    void hostileArchive_data();
    void hostileArchive();
    void cutArchive_data();
    void cutArchive();
    void packageThatIsNoFile_data();
    void packageThatIsNoFile();
    void scratchFolder_data();
    void scratchFolder();
    void noManifest();
    void nullComponent();
    void rebootTakesThePatchFolderFirst();
    void failingReboot();
    void failingCleanUpDoesNotReboot();
    void command_data();
    void command();
    void daemonDoesNotHoldTheInstaller();
    void resultCrossesThreads();

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

    void put(const QString& name, const QByteArray& bytes) {
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

void TestPackageInstaller::components_data() {
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
    row("failing copies go on", {"file|copy|none|%D/target", "dir|copy|none|%D/target", after}, 0,
        {"cp %D/scratch/patch/none %D/target", "cp -r %D/scratch/patch/none %D/target", ranAfter},
        {"failed file copy command: sudo cp .*/scratch/patch/none .*/target$",
         "failed dir copy command: sudo cp -r .*/none .*/target$"});
    row("failing delete goes on", {"file|delete|none", after}, 0, {"rm %D/scratch/patch/none", ranAfter},
        {"failed file delete command: sudo rm .*/patch/none$"});
    row("failing folder action goes on", {"dir|action|exit 3", after}, 0, {ranAfter},
        {"failed dir action command: exit 3$"});
    row("failing file action stops", {"file|action|exit 3", after}, -5, {}, {"failed action command: exit 3$"});
    row("killed file action stops", {"file|action|kill -9 $$", after}, -5, {},
        {"failed action command: kill -9 \\$\\$$"});
    row("unknown file action stops", {"file|Copy|a|%D/target", after}, -5, {}, {"unknown file action: Copy$"});
    row("unknown folder action goes on", {"dir|move|d|%D/target", after}, 0, {ranAfter}, {"unknown dir action: move$"});
    row("unknown type goes on", {"File|copy|a|%D/target", "||", after}, 0, {ranAfter},
        {"unknown component type: File$", "unknown component type: $"});
    row("no reboot by another spelling", {"file|action|sudo  reboot", "dir|action|sudo reboot", after}, 0,
        {"reboot", "reboot", ranAfter});
}

void TestPackageInstaller::components() {
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

void TestPackageInstaller::refusedNames_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<bool>("runs");
    QTest::newRow("every character that may be") << "aZ09._-+@%,:=/x"
                                                 << "/aZ09._-+@%,:=/../x" << true;
    QTest::newRow("dots that are no way out") << "..a/b../..."
                                              << "../d" << true;
    QTest::newRow("empty name") << ""
                                << "/d" << false;
    QTest::newRow("empty destination") << "a"
                                       << "" << false;
    QTest::newRow("option as name") << "-rf"
                                    << "/d" << false;
    QTest::newRow("option as destination") << "a"
                                           << "-t/etc" << false;
    QTest::newRow("way out") << "../canary"
                             << "/d" << false;
    QTest::newRow("way out behind") << "d/../../../canary"
                                    << "/d" << false;
    QTest::newRow("nothing but the way out") << ".."
                                             << "/d" << false;
    QTest::newRow("leads back in") << "d/../a"
                                   << "/d" << false;
    for (const char* bad : {" ", "\t", "\n", ";", "&", "|", "$", "`", "'", "\"", "\\", "*",        "?",    "[",
                            "]", "{",  "}",  "(", ")", "<", ">", "~", "#", "!",  "^",  "\xC3\xA4", "\x01", "\x7F"}) {
        const QString character = QString::fromUtf8(bad);
        QTest::addRow("name with U+%04x", character.at(0).unicode()) << "a" + character + "b"
                                                                     << "/d" << false;
        QTest::addRow("destination with U+%04x", character.at(0).unicode()) << "a"
                                                                            << "/d" + character << false;
    }
}

void TestPackageInstaller::refusedNames() {
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

void TestPackageInstaller::linksInTheArchive_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("runs");
    QTest::newRow("to a file inside") << "inside" << true;
    QTest::newRow("to a folder inside") << "insideFolder/b" << true;
    QTest::newRow("to a file outside") << "out" << false;
    QTest::newRow("through a folder outside") << "outFolder/canary" << false;
    QTest::newRow("to a folder outside, with a slash") << "outFolder/" << false;
    QTest::newRow("up and out") << "up/canary" << false;
    QTest::newRow("nowhere") << "nowhere" << false;
    QTest::newRow("round and round") << "loop/x" << false;
    QTest::newRow("by way of another link") << "second" << false;
}

void TestPackageInstaller::linksInTheArchive() {
    QFETCH(QString, name);
    QFETCH(bool, runs);
    const QByteArray here = QFile::encodeName(m_dir->path());
    usePackage(TarFile()
                   .add("patch/a", "A")
                   .add("patch/d/b", "B")
                   .add("patch/inside", {}, TarFile::SymLink, "a")
                   .add("patch/insideFolder", {}, TarFile::SymLink, "d")
                   .add("patch/out", {}, TarFile::SymLink, here + "/canary")
                   .add("patch/outFolder", {}, TarFile::SymLink, here)
                   .add("patch/up", {}, TarFile::SymLink, "../..")
                   .add("patch/nowhere", {}, TarFile::SymLink, here + "/none")
                   .add("patch/loop", {}, TarFile::SymLink, "loop")
                   .add("patch/second", {}, TarFile::SymLink, "out")
                   .gzip());
    useComponents({"file|copy|" + name + "|%D/target/x", "file|delete|" + name, "dir|delete|" + name});
    if (!runs) {
        expectMessage("failed file copy command");
        expectMessage("failed file delete command");
        expectMessage("failed dir delete command");
    }
    QCOMPARE(install(), 0);
    QCOMPARE(sudoed().size(), runs ? 3 : 0);
    QCOMPARE(QFile::exists(at("target/x")), runs);
    QCOMPARE(contentOf(at("canary")), QByteArray("alive"));
}

void TestPackageInstaller::hostileArchive_data() {
    QTest::addColumn<Builder>("build");
    const auto row = [](const char* name, Builder build) {
        QTest::newRow(name) << build;
    };
    using Bytes = const QByteArray&;
    row("way out", [](Bytes) { return TarFile().add("../canary", "evil"); });
    row("way out behind", [](Bytes) { return TarFile().add("patch/../../canary", "evil"); });
    row("absolute", [](Bytes here) { return TarFile().add(here + "/canary", "evil"); });
    row("absolute, new", [](Bytes here) { return TarFile().add(here + "/new", "evil"); });
    row("through a link",
        [](Bytes here) { return TarFile().add("l", {}, TarFile::SymLink, here).add("l/canary", "evil"); });
    row("through a link up",
        [](Bytes) { return TarFile().add("l", {}, TarFile::SymLink, "..").add("l/canary", "evil"); });
    row("through two links", [](Bytes) {
        return TarFile()
            .add("a", {}, TarFile::SymLink, "..")
            .add("b", {}, TarFile::SymLink, "a")
            .add("b/canary", "evil");
    });
    row("onto a link",
        [](Bytes here) { return TarFile().add("l", {}, TarFile::SymLink, here + "/canary").add("l", "evil"); });
    row("onto a hard link",
        [](Bytes here) { return TarFile().add("h", {}, TarFile::HardLink, here + "/canary").add("h", "evil"); });
    row("onto a hard link up",
        [](Bytes) { return TarFile().add("h", {}, TarFile::HardLink, "../canary").add("h", "evil"); });
    row("hard link through a link", [](Bytes) {
        return TarFile()
            .add("l", {}, TarFile::SymLink, "..")
            .add("h", {}, TarFile::HardLink, "l/canary")
            .add("h", "evil");
    });
    row("folder over a link", [](Bytes) {
        return TarFile().add("l", {}, TarFile::SymLink, "..").add("l/", {}, TarFile::Folder).add("l/canary", "evil");
    });
}

// tar may refuse such an archive or take what is harmless of it; nothing outside the scratch folder may change.
void TestPackageInstaller::hostileArchive() {
    QFETCH(Builder, build);
    allowMessages("failed extracting package");
    usePackage(build(QFile::encodeName(m_dir->path())).gzip());
    const QStringList before = outside();
    const int code = install();
    QVERIFY(code == 0 || code == -4);
    QCOMPARE(outside(), before);
}

void TestPackageInstaller::cutArchive_data() {
    QTest::addColumn<int>("permille");
    for (const int permille : {0, 1, 10, 500, 990, 999})
        QTest::addRow("%d of 1000", permille) << permille;
}

// What a stick that is pulled leaves of the package.
void TestPackageInstaller::cutArchive() {
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

void TestPackageInstaller::packageThatIsNoFile_data() {
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"missing", "folder", "pipe", "device", "unreadable", "no archive"})
        QTest::newRow(kind) << kind;
}

void TestPackageInstaller::packageThatIsNoFile() {
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

void TestPackageInstaller::scratchFolder_data() {
    QTest::addColumn<QString>("before");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("failure");
    QTest::newRow("not there") << "" << 0 << "";
    QTest::newRow("old files in it") << "old" << 0 << "";
    QTest::newRow("a file") << "file" << 0 << "";
    QTest::newRow("a link to what is not ours") << "link" << 0 << "";
    QTest::newRow("cannot be deleted") << "busy" << -2 << "failed deleting ";
    QTest::newRow("cannot be created") << "below a file" << -3 << "failed creating ";
    QTest::newRow("a name the shell would split") << "blank" << -3 << "failed creating ";
    QTest::newRow("relative") << "relative" << -3 << "failed creating ";
}

void TestPackageInstaller::scratchFolder() {
    QFETCH(QString, before);
    QFETCH(int, code);
    QFETCH(QString, failure);
    if (before == "old")
        put("scratch/patch/old", "x");
    if (before == "file")
        put("scratch", "x");
    if (before == "link")
        QVERIFY(QFile::link(at("target"), at("scratch")));
    if (before == "busy")
        m_settings.scratchFolder = "/proc/self"; // removing anything there fails for every user
    if (before == "below a file")
        m_settings.scratchFolder = at("canary/scratch");
    if (before == "blank")
        m_settings.scratchFolder = at("scr atch");
    if (before == "relative")
        m_settings.scratchFolder = "scratch";
    put("target/mine", "x");
    if (code != 0)
        expectMessage("^fwThread::fwUpgrade " + failure + m_settings.scratchFolder + '$');
    QCOMPARE(install(), code);
    QCOMPARE(QFile::exists(at("scratch/patch/a")), code == 0);
    QVERIFY(!QFile::exists(at("scratch/patch/old")));
    QVERIFY(QFile::exists(at("target/mine")));
}

void TestPackageInstaller::noManifest() {
    m_manifest.reset();
    expectMessage("^fwThread::fwUpgrade: manifest is null$");
    QCOMPARE(install(), -1);
    QVERIFY(!QFile::exists(at("scratch")));
}

void TestPackageInstaller::nullComponent() {
    useComponents({"file|copy|a|%D/target/x"});
    m_manifest->components.push_back(nullptr);
    useComponents({"file|copy|a|%D/target/y"});
    expectMessage("^fwThread::fwUpgrade: null manifest component$");
    QCOMPARE(install(), -1);
    QVERIFY(QFile::exists(at("target/x")) && !QFile::exists(at("target/y")));
}

void TestPackageInstaller::rebootTakesThePatchFolderFirst() {
    useComponents({"file|copy|a|%D/target/x", "file|action|sudo reboot"});
    QCOMPARE(install(), 0);
    QCOMPARE(sudoed().last(), QString("reboot"));
    QVERIFY(QFile::exists(at("scratch")) && !QFile::exists(at("scratch/patch")));
}

void TestPackageInstaller::failingReboot() {
    qputenv("REBOOT_CODE", "1");
    useComponents({"file|action|sudo reboot", "file|copy|a|%D/target/x"});
    expectMessage("^fwThread::fwUpgrade failed action command: sudo reboot$");
    QCOMPARE(install(), -5);
    QVERIFY(!QFile::exists(at("target/x")));
}

void TestPackageInstaller::failingCleanUpDoesNotReboot() {
    put("bin/rm", "#!/bin/sh\nexit 1\n");
    QVERIFY(QFile::setPermissions(at("bin/rm"), QFile::ReadOwner | QFile::ExeOwner));
    useComponents({"file|action|sudo reboot"});
    expectMessage("^fwThread::fwUpgrade failed cleanup before reboot: rm -rf .*/scratch/patch$");
    QCOMPARE(install(), -5);
    QCOMPARE(sudoed(), QStringList());
}

void TestPackageInstaller::command_data() {
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("ok");
    QTest::newRow("good") << "true" << QStringList() << true;
    QTest::newRow("exit code") << "false" << QStringList() << false;
    QTest::newRow("not there") << "/none/such" << QStringList() << false;
    QTest::newRow("killed") << "sh" << QStringList{"-c", "kill -TERM $$"} << false;
    QTest::newRow("arguments stay apart") << "test" << QStringList{"a b;c", "=", "a b;c"} << true;
    QTest::newRow("reads nothing") << "cat" << QStringList() << true;
    QTest::newRow("talks a lot") << "head" << QStringList{"-c", "20000000", "/dev/zero"} << true;
}

void TestPackageInstaller::command() {
    QFETCH(QString, program);
    QFETCH(QStringList, arguments);
    fwThread installer(nullptr, m_settings);
    QTEST(installer.RunSytemLinuxCommand(program, arguments), "ok");
}

void TestPackageInstaller::daemonDoesNotHoldTheInstaller() {
    fwThread installer(nullptr, m_settings);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(installer.RunSystemShellCommand("sleep 30 & echo $! > " + at("pid")));
    QVERIFY(timer.elapsed() < 10000);
    QVERIFY(installer.RunSystemShellCommand("kill $(cat " + at("pid") + ')'));
}

void TestPackageInstaller::resultCrossesThreads() {
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

VELDA_TEST_MAIN(QCoreApplication, TestPackageInstaller)
#include "tst_package_installer.moc"
