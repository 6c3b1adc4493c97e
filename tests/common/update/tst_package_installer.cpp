#include "common/update/package_installer.h"
#include "tests/common/update/tar_file.h"
#include "tests/support/killed_process.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QSignalSpy>

namespace {

// Writes its arguments down and runs them, unless that is to reboot.
constexpr char Sudo[] = R"(#!/bin/sh
echo "$*" >> "$SUDO_LOG"
[ "$1" = reboot ] || exec "$@"
)";

} // namespace

/// tar, sh and the commands really run; sudo is a script that records.
class TestPackageInstaller : public TestBase {
    Q_OBJECT

private slots:
    void components_data() {
        QTest::addColumn<QStringList>("components");
        QTest::addColumn<int>("code");
        QTest::addColumn<QStringList>("commands");
        QTest::addColumn<QStringList>("failures");
        using L = QStringList;
        const QString after("file|copy|a|%D/target/after");
        const QString ranAfter("cp %D/scratch/patch/a %D/target/after");
        addRow("in order", L{"file|copy|a|%D/target/x", "dir|copy|d|%D/target", "file|delete|d/b", "dir|delete|d"}, 0,
               L{"cp %D/scratch/patch/a %D/target/x", "cp -r %D/scratch/patch/d %D/target", "rm %D/scratch/patch/d/b",
                 "rm -rf %D/scratch/patch/d"},
               L());
        addRow(
            "failing copies and deletes go on", L{"file|copy|none|%D/x", "file|delete|none", after}, 0,
            L{"cp %D/scratch/patch/none %D/x", "rm %D/scratch/patch/none", ranAfter},
            L{"failed file copy command: sudo cp .*/none .*/x$", "failed file delete command: sudo rm .*/patch/none$"});
        addRow("failing file action stops", L{"file|action|exit 3", after}, -5, L(),
               L{"failed action command: exit 3$"});
        addRow("unknown action stops", L{"file|Copy|a|%D", after}, -5, L(), L{"unknown file action: Copy$"});
        addRow("refused copy goes on", L{"file|copy|a;b|%D/x", after}, 0, L{ranAfter},
               L{"failed file copy command: sudo cp .*/a;b .*/x$"});
    }

    void components() {
        QFETCH(QStringList, components); // type|action|name|destination
        QFETCH(QStringList, failures);
        useComponents(components);
        for (const QString& failure : qAsConst(failures))
            expectMessage("^fwThread::fwUpgrade " + failure);
        QTEST(install(), "code");
        QTEST(sudoed(), "commands");
        QCOMPARE(InstallationMarker(m_settings.markerFile).what(), QString());
    }

    // An installation that is cut off leaves its mark; a pipe in the archive does not make it wait for ever.
    void markedWhileItRuns() {
        usePackage(TarFile().add("patch/a", "A").add("patch/pipe", {}, TarFile::Pipe).gzip());
        m_manifest->name = "FW";
        m_manifest->version = "2\n1";
        useComponents({"file|action|cp %D/kavor/marker %D/seen", "file|copy|pipe|%D/target/x",
                       "file|copy|a|%D/target/x", "file|action|test ! -e %D/kavor/marker # reboot",
                       "file|action|test -e %D/kavor/marker", "file|action|sudo reboot"});
        expectMessage("failed file copy command: sudo cp .*/pipe");
        fwThread installer(m_manifest.get(), m_settings);
        installer.fwUpgrade();
        QCOMPARE(m_dir->contentOf("seen"), QByteArray("FW 2 1"));
        QVERIFY(installer.end().code == 0 && installer.end().failedSteps == 1);
        QVERIFY(!QFile::exists(m_settings.markerFile));
        QVERIFY(installer.end().firstFailure.contains("/pipe"));
        m_dir->put("kavor/marker", "FW 2\n" + QByteArray(5000, 'x'));
        const QString what = InstallationMarker(m_settings.markerFile).what();
        QVERIFY(what.startsWith("FW 2 xxx") && what.size() < 300);
    }

    /// The mark is there or not, never half, and a reboot that fails puts it back.
    void markAtEverySystemCall() {
        const InstallationMarker marker(m_settings.markerFile);
        for (const bool sets : {true, false}) {
            auto end = KilledProcess::End::Killed;
            QMap<QString, int> found;
            for (int stop = 1; end == KilledProcess::End::Killed; ++stop) {
                QVERIFY(marker.set("FW 2.1") && (!sets || marker.clear()));
                end = KilledProcess::runAndKill([&] { return sets ? marker.set("FW 2.1") : marker.clear(); }, stop);
                if (end == KilledProcess::End::NotTraced)
                    QSKIP("Processes may not be traced here.");
                ++found[marker.what()];
            }
            QCOMPARE(found.keys(), (QStringList{"", "FW 2.1"}));
            QVERIFY(end == KilledProcess::End::Done && marker.clear());
        }
        QCOMPARE(QDir(at("kavor")).entryList(QDir::Files | QDir::Hidden), QStringList());
        m_dir->putProgram("bin/sudo", "#!/bin/sh\nexit 3\n");
        QStringList ends;
        m_settings.ending = [&](const InstallEnd& end) {
            ends << end.failure + (marker.what().isEmpty() ? "" : "|marked");
        };
        useComponents({"file|action|sudo reboot"});
        expectMessage("failed action command: sudo reboot$");
        QCOMPARE(install(), -5);
        QCOMPARE(ends, (QStringList{"|marked", "Step 1 of 1: sudo reboot|marked"}));
        QVERIFY(marker.what().isEmpty());
    }

    void refusedNames() {
        const auto runs = [this](const QString& name, const QString& destination) {
            return planComponent({"file", name, "copy", destination}, at("scratch")).refusal.isEmpty();
        };
        QVERIFY(runs("aZ09._-+@%,:=/x", "/aZ09._-+@%,:=/../x") && runs("..a/b../...", "../d"));
        QVERIFY(!runs("", "/d") && !runs("a", "") && !runs("-rf", "/d") && !runs("a", "-t/etc"));
        QVERIFY(!runs("../canary", "/d") && !runs("d/../../canary", "/d"));
        for (const QChar bad : QString::fromUtf8(" \t\n;&|$`'\"\\*?[]{}()<>~#!^\xC3\xA4\x01\x7F")) {
            const QString name = QString("a") + bad + 'b';
            QVERIFY2(!runs(name, "/d") && !runs("a", '/' + name), qPrintable(name));
            QVERIFY(!planComponent({"dir", name, "delete", {}}, at("scratch")).refusal.isEmpty());
        }
    }

    void linksInTheArchive() {
        const QByteArray here = QFile::encodeName(m_dir->path());
        TarFile archive;
        archive.add("patch/d/b", "B").link("patch/insideFolder", "d").link("patch/out", here + "/canary");
        archive.link("patch/up", "../..").link("patch/nowhere", here + "/none").link("patch/second", "out");
        archive.add("patchwork/x", "X").link("patch/beside", "../patchwork/x");
        usePackage(archive.gzip());
        for (const QString& name : QStringList{"out", "up/canary", "nowhere", "second", "beside"}) {
            useComponents({"file|copy|" + name + "|%D/target/x", "file|delete|" + name, "dir|delete|" + name});
            for (const char* what : {"file copy", "file delete", "dir delete"})
                expectMessage(QString("failed %1 command: sudo .*/%2").arg(what, name));
        }
        useComponents({"file|copy|insideFolder/b|%D/target/b"});
        QCOMPARE(install(), 0);
        QCOMPARE(sudoed().size(), 1);
        QCOMPARE(m_dir->contentOf("target/b"), QByteArray("B"));
        QCOMPARE(m_dir->contentOf("canary"), QByteArray("alive"));
    }

    // tar may refuse such archives or take what is harmless of them; nothing outside the scratch folder may change.
    void hostileArchive() {
        const QByteArray here = QFile::encodeName(m_dir->path());
        allowMessages("failed extracting package");
        const TarFile archives[] = {TarFile().add("../canary", "evil"), TarFile().add(here + "/canary", "evil"),
                                    TarFile().link("l", here).add("l/canary", "evil"),
                                    TarFile().add("h", {}, TarFile::HardLink, here + "/canary").add("h", "evil"),
                                    TarFile().link("l", "..").add("l/", {}, TarFile::Folder).add("l/canary", "evil")};
        for (const TarFile& archive : archives) {
            usePackage(archive.gzip());
            install();
            QCOMPARE(m_dir->contentOf("canary"), QByteArray("alive"));
        }
    }

    // Of a package on a stick that is pulled, and of what is none.
    void spoiltPackage() {
        useComponents({"file|copy|a|%D/target/x"});
        const QByteArray whole = m_dir->contentOf("package");
        const auto isRefused = [this](const QString& path) {
            m_manifest->package_path = path;
            expectMessage("^fwThread::fwUpgrade failed extracting package " + path + '$');
            return install() == -4 && sudoed().isEmpty() && !QFile::exists(at("scratch"));
        };
        QVERIFY(isRefused(m_dir->put("half", whole.left(whole.size() / 2))));
        QVERIFY(isRefused(m_dir->put("short", whole.left(whole.size() - 1))));
        for (const char* path : {"/none", "/proc/self/mem", "/dev/zero"})
            QVERIFY2(isRefused(path), path);
    }

    void scratchFolder() {
        QVERIFY(QFile::link(at("target"), at("scratch"))); // a link to what is not ours
        QCOMPARE(install(), 0);
        QVERIFY(QFile::exists(at("target/mine")));
        const QPair<QString, int> refused[] = {{"/proc/self", -2}, {at("canary/scratch"), -3}, {at("scr atch"), -3}};
        for (const auto& [folder, code] : refused) {
            m_settings.scratchFolder = folder;
            expectMessage(QString("failed %1 %2$").arg(code == -2 ? "deleting" : "creating", folder));
            QCOMPARE(install(), code);
        }
    }

    void rebootTakesThePatchFolderFirst() {
        useComponents({"file|action|sudo reboot"});
        QCOMPARE(install(), 0);
        QCOMPARE(sudoed(), QStringList("reboot"));
        QVERIFY(!QFile::exists(at("scratch/patch")));
        m_dir->putProgram("bin/rm", "#!/bin/sh\nexit 1\n");
        expectMessage("failed cleanup before reboot: rm -rf .*/scratch/patch$");
        QCOMPARE(install(), -5);
        QCOMPARE(sudoed(), QStringList("reboot")); // not a second time
        m_manifest.reset();
        expectMessage("^fwThread::fwUpgrade: manifest is null$");
        QCOMPARE(install(), -1);
    }

protected:
    void setUp() override {
        m_dir = std::make_unique<TestFolder>();
        m_dir->putProgram("bin/sudo", Sudo);
        static const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(at("bin")) + ':' + path);
        qputenv("SUDO_LOG", QFile::encodeName(at("sudo.log")));
        m_dir->put("canary", "alive");
        m_dir->put("target/mine", "x");
        m_settings = InstallSettings();
        m_settings.scratchFolder = at("scratch");
        m_settings.markerFile = at("kavor/marker");
        m_manifest = std::make_unique<MANIFEST_DATA>();
        usePackage(TarFile().add("patch/a", "A").add("patch/d/", {}, TarFile::Folder).add("patch/d/b", "B").gzip());
    }

private:
    QString at(const QString& name) const { return m_dir->at(name); }

    void usePackage(const QByteArray& bytes) {
        m_dir->put("package", bytes);
        m_manifest->package_path = at("package");
    }

    void useComponents(const QStringList& components) {
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

    std::unique_ptr<TestFolder> m_dir;
    std::unique_ptr<MANIFEST_DATA> m_manifest;
    InstallSettings m_settings;
};

VELDA_TEST_MAIN(QCoreApplication, TestPackageInstaller)
#include "tst_package_installer.moc"
