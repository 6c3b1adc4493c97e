#include "common/update/package_installer.h"
#include "common/update/package_scan.h"
#include "tests/common/update/tar_file.h"
#include "tests/support/testbase.h"
#include "tests/tools/tool_run.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

class TestUpdatePack : public TestBase {
    Q_OBJECT

private slots:
    // From the source folder through the tool and the installer to the place on the instrument.
    void builtSoftwareInstalls() {
        const ToolRun built = run("--version 2.1 --run touch_@ran --install app=@installed --install data=@ --run true "
                                  "software @source @stick/FW");
        QVERIFY2(built.code == 0, qPrintable(built.error));
        QCOMPARE(run("check @stick/FW").code, 0);
        put("bin/sudo", "#!/bin/sh\nexec \"$@\"\n");
        QVERIFY(QFile::setPermissions(at("bin/sudo"), QFile::ReadOwner | QFile::ExeOwner));
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
        QCOMPARE(get("installed"), QByteArray("the application"));
        QCOMPARE(get("data/one"), QByteArray("1"));
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
        QCOMPARE(get("out/m/module"), QByteArray("module package"));
        QVERIFY(run("list @out/f").output.contains("check the trailer of signed"));
        QVERIFY(run("list @out/m").output.contains("copy module to /home/velda/kavor/upgrade/veldax/"));
    }

    void buildRefusal_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* line, const char* error) {
            QTest::newRow(line) << QString(line) << QString(error);
        };
        row("software @source @out", "version is to be");
        row("--version 1/2 software @source @out", "version is to be");
        row("--version 1 --name FW/x software @source @out", "name is to be");
        row("--version 1 --name NMX software @source @out", "would not take");
        row("--version 1 --name FPGA-FW fpga @image @out", "would not take");
        row("--version 1 software @none @out", "is no folder");
        row("--version 1 software @image @out", "is no folder");
        row("--version 1 fpga @source @out", "is no file");
        row("--version 1 fpga @image @out", "too small for signature");
        row("--version 1 module @empty @out", "is no file, or empty");
        row("--version 1 software @source @source/out", "lies in the folder");
        row("--version 1 module @module @used", "holds a manifest already");
        row("--version 1 --install none=/x software @source @out", "component 1: the package holds no file \"none\"");
        row("--version 1 --install app=x software @source @out", "no absolute path");
        row("--version 1 --install app=/x;y software @source @out", "may not stand in a command");
        row("--version 1 --install ../image=/x software @source @out", "leads out of the package");
        row("--version 1 --install app= software @source @out", "destination is empty");
        row("--version 1 --reboot --run x software @source @out", "component 2: stands behind the reboot");
        row("--version 1 --run= software @source @out", "its command is empty");
    }

    void buildRefusal() {
        QFETCH(QString, line);
        QFETCH(QString, error);
        const ToolRun built = run(line);
        QCOMPARE(built.code, 1);
        QVERIFY2(built.error.startsWith("update-pack: ") && built.error.contains(error), qPrintable(built.error));
        QVERIFY(QDir(at("out")).isEmpty() && QDir(at("source/out")).isEmpty()); // nothing half done stays
        QCOMPARE(get("used/Manifest"), QByteArray("{}"));
    }

    void checkRefusal_data() {
        // clang-format off
        QTest::addColumn<QByteArray>("manifest");
        QTest::addColumn<QByteArray>("package");
        QTest::addColumn<QString>("error");
        const QByteArray tar = TarFile().add("patch/a", "A").gzip();
        const auto row = [&tar](const char* name, const QByteArray& manifest, const char* error, QByteArray package = {}) {
            QTest::newRow(name) << manifest << (package.isEmpty() ? tar : package) << QString(error);
        };
        const auto software = [](const QByteArray& component) {
            return QByteArray(R"({"name":"FW","version":"1","package":"p","components":[)") + component + "]}";
        };
        row("no JSON", "{\"name\":", "is no JSON object");
        row("list", "[]", "is no JSON object");
        row("number for a text", R"({"name":1})", "\"name\" is no text");
        row("mistyped key", R"({"nmae":"FW"})", "\"nmae\" is no key");
        row("components are no list", R"({"components":{}})", "is no list");
        row("mistyped component key", software(R"({"typ":"file"})"), "component 1: \"typ\" is no key");
        row("no version", R"({"name":"FW","package":"p"})", "there is no version");
        row("no package", R"({"name":"FW","version":"1"})", "file beside the manifest");
        row("package elsewhere", R"({"name":"FW","version":"1","package":"../p"})", "file beside the manifest");
        row("package missing", R"({"name":"FW","version":"1","package":"q"})", "is no file, or empty");
        row("unknown kind", R"({"name":"fw","version":"1","package":"p"})", "of no known kind");
        row("no archive", software(""), "cannot be unpacked", "no archive");
        row("cut archive", software(""), "cannot be unpacked", tar.left(tar.size() - 9));
        row("way out", software(""), "cannot be unpacked", TarFile().add("../a", "x").gzip());
        row("absolute name", software(""), "names that lead out", TarFile().add("/none/such/a", "x").gzip());
        row("unknown action", software(R"({"type":"file","action":"Copy","name":"a"})"), "unknown file action: \"Copy\"");
        row("unknown type", software(R"({"type":"link","action":"copy","name":"a"})"), "unknown component type: \"link\"");
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
        put("stick/Manifest", manifest);
        put("stick/p", package);
        const ToolRun check = run("check @stick");
        QCOMPARE(check.code, 1);
        QVERIFY2(check.error.contains(error), qPrintable(check.error));
        QCOMPARE(run("list @stick").code, 1);
    }

    void usage_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("code");
        for (const char* line :
             {"", "paint", "check", "check @a @b", "software @source", "--install app --version 1 software a b",
              "--reboot --version 1 fpga @image @out", "--colour check @a"})
            QTest::newRow(line) << QString(line) << 2;
        QTest::newRow("help") << "--help" << 0;
        QTest::newRow("nothing to check") << "check @none" << 1;
    }

    void usage() {
        QFETCH(QString, line);
        QFETCH(int, code);
        const ToolRun used = run(line);
        QCOMPARE(used.code, code);
        QCOMPARE(used.output.contains("Usage:"), code == 0);
        QVERIFY(!QFile::exists(at("out")));
    }

protected:
    void setUp() override {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        put("source/app", "the application");
        put("source/data/one", "1");
        put("image", "unsigned");
        put("module", "module package");
        put("empty", "");
        put("used/Manifest", "{}");
    }

private:
    QString at(const QString& name) const { return m_dir->filePath(name); }

    void put(const QString& name, const QByteArray& bytes) {
        QDir().mkpath(QFileInfo(at(name)).absolutePath());
        QFile file(at(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    QByteArray get(const QString& name) const {
        QFile file(at(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Words are split at blanks, @ stands for the test's folder, _ in a word for a blank.
    ToolRun run(const QString& line) const {
        QStringList words = line.split(' ', Qt::SkipEmptyParts);
        words.replaceInStrings("_", " ").replaceInStrings("@", m_dir->path() + '/');
        return runTool("update-pack", words);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

VELDA_TEST_MAIN(QCoreApplication, TestUpdatePack)
#include "tst_update_pack.moc"
