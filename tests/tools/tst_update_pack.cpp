#include "common/update/package_installer.h"
#include "common/update/package_scan.h"
#include "tests/common/update/tar_file.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"
#include "tests/support/tool_run.h"

#include <QSignalSpy>

class TestUpdatePack : public TestBase {
    Q_OBJECT

private slots:
    // From the source folder through the tool and the installer to the place on the instrument.
    void builtSoftwareInstalls() {
        const ToolRun built = run(
            "--version 2.1 --run touch_@ran --install app=@opt/d/app --install app=@new/ "
            "--install data=@opt/d --install data=@ --delete app --delete data --try false software @source @stick/FW");
        QVERIFY2(built.code == 0, qPrintable(built.error));
        QVERIFY(run("list @stick/FW").output.contains("10. sudo cp -r "));
        m_dir->putProgram("bin/sudo", "#!/bin/sh\nexec \"$@\"\n");
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(at("bin")) + ':' + path);
        const auto packages = readPackages(findManifests(at("stick")));
        const MANIFEST_DATA& manifest = *packages->manifests().front();
        QCOMPARE(packageType(manifest.name), PackageType::Software);
        InstallSettings settings;
        settings.scratchFolder = at("scratch");
        settings.markerFile = at("marker");
        QStringList entries;
        for (int time = 1; time <= 2; ++time) { // the second one finds everything there
            fwThread installer(&manifest, settings);
            QSignalSpy upgraded(&installer, &fwThread::fwUpgraded);
            expectMessage("failed dir action command: false");
            installer.fwUpgrade();
            QCOMPARE(upgraded.first().first().toInt(), 0);
            QCOMPARE(m_dir->contentOf("opt/d/app") + m_dir->contentOf("new/app"),
                     QByteArray("the application").repeated(2));
            for (const char* folder : {"opt/d", "data", "new"})
                entries += QDir(at(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
            QCOMPARE(entries, QStringList({"app", "one", "one", "app"}));
            entries.clear();
            QVERIFY(QFile::remove(at("ran")));
            QVERIFY(QDir(at("scratch/patch")).isEmpty()); // what was copied was deleted then
        }
        qputenv("PATH", path);
    }

    // Signed while it is built, or afterwards; whatever is changed then is noticed.
    void signedPackages() {
        QCOMPARE(run("keygen @key").code, 0);
        QCOMPARE(run("keygen @other").code, 0);
        QVERIFY(QFileInfo(at("key")).permissions() ==
                (QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser));
        QCOMPARE(run("keygen @key").code, 1); // a key is not overwritten
        QVERIFY(run("--version 5 --key @key --release 7 module @module @out").error.contains("no \"model\""));
        QVERIFY(QDir(at("out")).isEmpty());
        QCOMPARE(run("--version 5 module @module @out").code, 0);
        const QString check = "--public @key.pub check @out";
        QVERIFY(run(check).error.contains("it is not signed"));
        QCOMPARE(run("--key @key --release 7 --model KV-6000 sign @out").code, 0);
        const ToolRun good = run(check);
        QVERIFY2(good.code == 0 && good.output.contains("release 7 for KV-6000"), qPrintable(good.error));
        QVERIFY(good.output.contains("module: 14 bytes, SHA-256 0fdf6997"));
        QCOMPARE(run("--public @other.pub check @out").code, 1);
        const QByteArray manifest = m_dir->contentOf("out/Manifest");
        m_dir->put("out/Manifest", manifest + ' ');
        QVERIFY(run(check).error.contains("not signed with this key"));
        m_dir->put("out/Manifest", manifest);
        m_dir->put("out/module", "module packagf");
        QVERIFY(run(check).error.contains("is not the hash of"));
    }

    void buildRefusal_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* line, const char* error) {
            addRow(line, QString(line), QString(error));
        };
        row("--version 1/2 software @source @out", "version is to be");
        row("--version 1 module @module @used", "holds a manifest already");
        row("--version 1 --install app=/x;y software @source @out", "may not stand in a command");
        row("--version 1 --install ../image=/x software @source @out", "leads out of the package");
        row("--version 1 --reboot --run x --run y software @source @out", "component 3: stands behind the reboot");
    }

    void buildRefusal() {
        QFETCH(QString, line);
        QFETCH(QString, error);
        const ToolRun built = run(line);
        QCOMPARE(built.code, 1);
        QVERIFY2(built.error.startsWith("update-pack: ") && built.error.contains(error), qPrintable(built.error));
        QVERIFY(QDir(at("out")).isEmpty()); // nothing half done stays
        QCOMPARE(m_dir->contentOf("used/Manifest"), QByteArray("{}"));
    }

    void checkRefusal_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("manifest");
        QTest::addColumn<QByteArray>("package");
        QTest::addColumn<QString>("error");
        const QByteArray tar = TarFile().add("patch/a", "A").gzip();
        const auto row = [&tar](const char* name, const QByteArray& manifest, const char* error, QByteArray package = {}) {
            addRow(name, manifest, (package.isEmpty() ? tar : package), QString(error));
        };
        const auto software = [](const QByteArray& component) {
            return QByteArray(R"({"name":"FW","version":"1","package":"p","components":[)") + component + "]}";
        };
        row("package elsewhere", R"({"name":"FW","version":"1","package":"../p"})", "file beside the manifest");
        row("cut archive", software(""), "cannot be unpacked", tar.left(tar.size() - 9));
        row("folder that becomes or goes into", software(R"({"type":"dir","name":"d","action":"copy","destination":"/d"})"), "end the name or the destination", TarFile().add("patch/d/x", "x").gzip());
        row("pipe", software(R"({"type":"file","name":"f","action":"copy","destination":"/f"})"), "pipe, a socket or a device", TarFile().add("patch/f", {}, TarFile::Pipe).gzip());
        row("pipe further down", software(R"({"type":"dir","name":"d/.","action":"copy","destination":"/d"})"), "pipe, a socket or a device", TarFile().add("patch/d/e/f", {}, TarFile::Pipe).gzip());
        row("control characters", software("{\"type\":\"file\",\"action\":\"a\\u001b\\n\\u00a0\\\\\"}"), "unknown file action: \"a\\u{1b}\\u{a}\\u{a0}\\\\\"");
        row("unsigned image", R"({"name":"FPGA","version":"1","package":"p"})", "not signed", QByteArray(100, 'x'));
        // clang-format on
    }

    void checkRefusal() {
        QFETCH(QByteArray, manifest);
        QFETCH(QByteArray, package);
        QFETCH(QString, error);
        m_dir->put("stick/Manifest", manifest);
        m_dir->put("stick/p", package);
        const ToolRun check = run("check @stick");
        QCOMPARE(check.code, 1);
        QVERIFY2(check.error.contains(error), qPrintable(check.error));
        QCOMPARE(run("list @stick").code, 1);
    }

protected:
    void setUp() override {
        m_dir = std::make_unique<TestFolder>();
        const QVector<QPair<QString, QByteArray>> files{{"source/app", "the application"},
                                                        {"source/data/one", "1"},
                                                        {"image", "unsigned"},
                                                        {"module", "module package"},
                                                        {"used/Manifest", "{}"}};
        for (const auto& file : files)
            m_dir->put(file.first, file.second);
    }

private:
    QString at(const QString& name) const { return m_dir->at(name); }

    /// Words are split at blanks, @ stands for the test's folder, _ in a word for a blank.
    ToolRun run(const QString& line) const {
        QStringList words = line.split(' ', Qt::SkipEmptyParts);
        words.replaceInStrings("_", " ").replaceInStrings("@", m_dir->path() + '/');
        return runTool("update-pack", words);
    }

    std::unique_ptr<TestFolder> m_dir;
};

VELDA_TEST_MAIN(QCoreApplication, TestUpdatePack)
#include "tst_update_pack.moc"
