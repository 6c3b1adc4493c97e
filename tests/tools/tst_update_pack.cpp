#include "common/update/package_installer.h"
#include "common/update/package_scan.h"
#include "tests/common/update/tar_file.h"
#include "tests/common/update/test_folder.h"
#include "tests/support/testbase.h"
#include "tests/tools/tool_run.h"

#include <QSignalSpy>

class TestUpdatePack : public TestBase {
    Q_OBJECT

private slots:
    // From the source folder through the tool and the installer to the place on the instrument.
    void builtSoftwareInstalls() {
        const ToolRun built = run("--version 2.1 --run touch_@ran --install app=@installed --install data=@ --run true "
                                  "software @source @stick/FW");
        QVERIFY2(built.code == 0, qPrintable(built.error));
        QCOMPARE(run("check @stick/FW").code, 0);
        m_dir->putProgram("bin/sudo", "#!/bin/sh\nexec \"$@\"\n");
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(at("bin")) + ':' + path);
        const auto packages = readPackages(findManifests(at("stick")));
        const MANIFEST_DATA& manifest = *packages->manifests().front();
        QCOMPARE(packageType(manifest.name), PackageType::Software);
        QCOMPARE(manifest.version, QString("2.1"));
        InstallSettings settings;
        settings.scratchFolder = at("scratch");
        fwThread installer(&manifest, settings);
        QSignalSpy upgraded(&installer, &fwThread::fwUpgraded);
        installer.fwUpgrade();
        qputenv("PATH", path);
        QCOMPARE(upgraded.first().first().toInt(), 0);
        QCOMPARE(m_dir->contentOf("installed"), QByteArray("the application"));
        QCOMPARE(m_dir->contentOf("data/one"), QByteArray("1"));
        QVERIFY(QFile::exists(at("ran")));
    }

    void listShowsWhatAnInstallationDoes() {
        qputenv("VELDA_HOME", "/instrument");
        QCOMPARE(run("--version 3 --install data=/opt --run echo_x --reboot software @source @out").code, 0);
        const ToolRun list = run("list @out/Manifest");
        qunsetenv("VELDA_HOME");
        QCOMPARE(list.code, 0);
        QCOMPARE(list.output, QString("1. remove /instrument/tmpfw and make it anew\n"
                                      "2. unpack FW-3.tar.gz into it\n"
                                      "3. sudo cp -r /instrument/tmpfw/patch/data /opt\n"
                                      "4. echo x   (a failure stops the installation)\n"
                                      "5. rm -rf /instrument/tmpfw/patch, then sudo reboot\n"));
        QVERIFY(!QFile::exists("/instrument"));
    }

    void builtImageAndModule() {
        QCOMPARE(runTool("fpga-sign", {"--version", "1.2", "sign", at("image"), at("signed")}).code, 0);
        QCOMPARE(run("--version 1.2 fpga @signed @out/f").code, 0);
        QCOMPARE(run("--version 5 --name NMX-4 module @module @out/m").code, 0);
        const auto packages = readPackages(findManifests(at("out")));
        QCOMPARE(packageType(packages->manifests()[0]->name), PackageType::Fpga);
        QCOMPARE(packages->manifests()[0]->package_path, at("out/f/signed"));
        QCOMPARE(packageType(packages->manifests()[1]->name), PackageType::Module);
        QCOMPARE(m_dir->contentOf("out/m/module"), QByteArray("module package"));
        QVERIFY(run("list @out/f").output.contains("check the trailer of signed"));
        QVERIFY(run("list @out/m").output.contains("copy module to /home/velda/kavor/upgrade/veldax/"));
    }

    void buildRefusal_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("error");
        QTest::addColumn<int>("code");
        const auto row = [](const char* line, const char* error, int code = 1) {
            addRow(line, QString(line), QString(error), code);
        };
        row("", "say software, fpga", 2);
        row("paint", "say software, fpga", 2);
        row("check", "name one manifest", 2);
        row("check @a @b", "name one manifest", 2);
        row("--version 1 list @used", "no options", 2);
        row("--colour check @used", "Unknown option", 2);
        row("software @source", "of a source into a folder", 2);
        row("--install app --version 1 software @source @out", "takes NAME=DESTINATION", 2);
        row("--reboot --version 1 fpga @image @out", "only a software package", 2);
        row("check @none", "is no file");
        row("software @source @out", "version is to be");
        row("--version 1/2 software @source @out", "version is to be");
        row("--version 1 --name FW/x software @source @out", "name is to be");
        row("--version 1 --name NMX software @source @out", "would not take");
        row("--version 1 software @none @out", "is no folder");
        row("--version 1 fpga @image @out", "too small for signature");
        row("--version 1 module @empty @out", "is no file, or empty");
        row("--version 1 software @source @source/out", "lies in the folder");
        row("--version 1 module @module @used", "holds a manifest already");
        row("--version 1 --install none=/x software @source @out", "component 1: the package holds no file \"none\"");
        row("--version 1 --install app=x software @source @out", "no absolute path");
        row("--version 1 --install app=/x;y software @source @out", "may not stand in a command");
        row("--version 1 --install ../image=/x software @source @out", "leads out of the package");
        row("--version 1 --install app= software @source @out", "destination is empty");
        row("--version 1 --reboot --run x --run y software @source @out", "component 3: stands behind the reboot");
        row("--version 1 --run= software @source @out", "its command is empty");
    }

    void buildRefusal() {
        QFETCH(QString, line);
        QFETCH(QString, error);
        const ToolRun built = run(line);
        QTEST(built.code, "code");
        QVERIFY2(built.error.startsWith("update-pack: ") && built.error.contains(error), qPrintable(built.error));
        QVERIFY(QDir(at("out")).isEmpty() && QDir(at("source/out")).isEmpty()); // nothing half done stays
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
        row("no JSON", "{\"name\":", "is no JSON object");
        row("mistyped key", R"({"nmae":"FW"})", "\"nmae\" is no key");
        row("components are no list", R"({"components":{}})", "is no list");
        row("mistyped component key", software(R"({"typ":"file"})"), "component 1: \"typ\" is no key");
        row("no version", R"({"name":"FW","package":"p"})", "there is no version");
        row("package elsewhere", R"({"name":"FW","version":"1","package":"../p"})", "file beside the manifest");
        row("unknown kind", R"({"name":"fw","version":"1","package":"p"})", "of no known kind");
        row("no archive", software(""), "cannot be unpacked", "no archive");
        row("cut archive", software(""), "cannot be unpacked", tar.left(tar.size() - 9));
        row("way out", software(""), "cannot be unpacked", TarFile().add("../a", "x").gzip());
        row("absolute name", software(""), "names that lead out", TarFile().add("/none/such/a", "x").gzip());
        row("unknown action", software(R"({"type":"file","action":"Copy","name":"a"})"), "unknown file action: \"Copy\"");
        row("wrong kind", software(R"({"type":"dir","action":"copy","name":"a","destination":"/x"})"), "holds no dir \"a\"");
        row("through a link", software(R"({"type":"file","action":"copy","name":"l/passwd","destination":"/x"})"),
            "through a link", TarFile().add("patch/l", {}, TarFile::SymLink, "/etc").gzip());
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

    void help() {
        QCOMPARE(run("--help").code, 0);
        QVERIFY(run("--help").output.contains("update-pack list PACKAGE"));
    }

protected:
    void setUp() override {
        m_dir = std::make_unique<TestFolder>();
        const QVector<QPair<QString, QByteArray>> files{{"source/app", "the application"},
                                                        {"source/data/one", "1"},
                                                        {"image", "unsigned"},
                                                        {"module", "module package"},
                                                        {"empty", ""},
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
