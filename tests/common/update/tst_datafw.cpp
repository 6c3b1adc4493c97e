#include "common/update/package_scan.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <functional>
#include <stdexcept>
#include <sys/stat.h>

namespace {

QString textOf(const MANIFEST_DATA& manifest) {
    QStringList parts{manifest.manifest_version, manifest.name, manifest.version, manifest.description,
                      manifest.package};
    for (const auto& c : manifest.components)
        parts << '{' + QStringList{c->type, c->name, c->action, c->destination}.join(',') + '}';
    return parts.join('|');
}

QString thrownBy(const std::function<void()>& function) {
    try {
        function();
    } catch (const std::runtime_error& error) {
        return QString::fromStdString(error.what());
    }
    return {};
}

} // namespace

class TestDatafw : public TestBase {
    Q_OBJECT

private slots:
    void manifest_data();
    void manifest();
    void packagePathIsInTheManifestsFolder();
    void specialFile_data();
    void specialFile();
    void readErrorKeepsTheRecordsBeforeIt();
    void type_data();
    void type();
    void scanFindsEveryFolder();
    void scanIsNotLedAstray();
    void nothingThere();
    void mediumPulledAfterTheWalk();
    void searchRoot();

protected:
    void setUp() override {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

private:
    QString put(const QString& name, const QByteArray& bytes = "{}") {
        const QString path = m_dir->filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qWarning("cannot write %s", qPrintable(path));
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestDatafw::manifest_data() {
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");
    const QString nothing("||||");
    QTest::newRow("whole") << QByteArray(R"({"manifest_version":"1","name":"FW-A","version":"2.0","description":"d",
        "package":"p.tgz","components":[{"type":"file","name":"a","action":"copy","destination":"/x"},
        {"type":"dir","name":"b","action":"delete"}],"unknown":{"deep":[1]}})")
                           << "1|FW-A|2.0|d|p.tgz|{file,a,copy,/x}|{dir,b,delete,}";
    QTest::newRow("no components") << QByteArray(R"({"name":"NMX"})") << "|NMX|||";
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF{\"name\":\"FPGA\"}") << "|FPGA|||";
    QTest::newRow("other letters") << QByteArray(u8R"({"description":"größer ±3 µs"})")
                                   << QString::fromUtf8(u8"|||größer ±3 µs|");
    QTest::newRow("wrong types") << QByteArray(R"({"name":5,"version":null,"description":["x"],"package":{},
        "components":{"type":"file"}})")
                                 << nothing;
    QTest::newRow("wrong types in components")
        << QByteArray(R"({"components":[1,null,"x",[],{"type":true,"name":"n"}]})")
        << nothing + "|{,,,}|{,,,}|{,,,}|{,,,}|{,n,,}";
    QTest::newRow("empty") << QByteArray() << nothing;
    QTest::newRow("no JSON") << QByteArray("name = FW") << nothing;
    QTest::newRow("cut in the middle") << QByteArray(R"({"name":"FW-A","version":"2.)") << nothing;
    QTest::newRow("an array") << QByteArray(R"([{"name":"FW"}])") << nothing;
    QTest::newRow("NULs") << QByteArray(100, '\0') << nothing;
    QTest::newRow("broken UTF-8") << QByteArray("{\"name\":\"F\xFF\xFEW\"}") << nothing;
    QTest::newRow("deep") << (QByteArray(100000, '[') + QByteArray(100000, ']')) << nothing;
    QTest::newRow("deep objects") << QByteArray("{\"a\":").repeated(50000) << nothing;
    QTest::newRow("a mebibyte") << ("{\"name\":\"FW\"}" + QByteArray(1024 * 1024 - 13, ' ')) << "|FW|||";
    QTest::newRow("a byte more") << ("{\"name\":\"FW\"}" + QByteArray(1024 * 1024 - 12, ' ')) << nothing;
}

void TestDatafw::manifest() {
    QFETCH(QByteArray, json);
    const fwData data({put("Manifest", json)});
    QCOMPARE(data.manifests().size(), std::size_t{1});
    QTEST(textOf(*data.manifests().front()), "expected");
}

void TestDatafw::packagePathIsInTheManifestsFolder() {
    const QString first = put("a/Manifest", R"({"package":"p.tgz"})");
    const QString second = put("b/c/Manifest", "");
    const fwData data({first, second});
    QCOMPARE(data.manifests()[0]->package_path, m_dir->filePath("a/p.tgz"));
    QCOMPARE(data.manifests()[1]->package_path, m_dir->filePath("b/c/"));
    QVERIFY(fwData().manifests().empty());
}

void TestDatafw::specialFile_data() {
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"missing", "folder", "pipe", "endless"})
        QTest::newRow(kind) << kind;
}

// Each gives an empty record, and none may block or fill the memory.
void TestDatafw::specialFile() {
    QFETCH(QString, kind);
    const QString path = m_dir->filePath("Manifest");
    if (kind == "folder")
        QVERIFY(QDir().mkpath(path));
    if (kind == "pipe")
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    if (kind == "endless")
        QVERIFY(QFile::link("/dev/zero", path));
    const fwData data({path});
    QCOMPARE(textOf(*data.manifests().front()), QString("||||"));
}

void TestDatafw::readErrorKeepsTheRecordsBeforeIt() {
    const QString good = put("Manifest", R"({"name":"FW"})");
    const QString bad = m_dir->filePath("b");
    QVERIFY(QFile::link("/proc/self/mem", bad)); // opens, and fails when it is read
    fwData data;
    const QString thrown = thrownBy([&] { data.init_cmd_config({good, bad, good}); });
    QVERIFY2(thrown.startsWith("Error reading fw file " + bad), qPrintable(thrown));
    QCOMPARE(data.manifests().size(), std::size_t{1});
    const QString list = thrownBy([&] { const auto packages = readPackages({bad}); });
    QVERIFY2(list.startsWith("Error reading fw files "), qPrintable(list));
}

void TestDatafw::type_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("expected");
    const auto row = [](const char* name, PackageType type) {
        QTest::newRow(name) << name << static_cast<int>(type);
    };
    row("FW", PackageType::Software);
    row("NMX-FW", PackageType::Software);
    row("FPGA and FW", PackageType::Software);
    row("NMX FPGA", PackageType::Fpga);
    row("xNMXx", PackageType::Module);
    row("fpga", PackageType::Unknown);
    row("F W", PackageType::Unknown);
    row("", PackageType::Unknown);
}

void TestDatafw::type() {
    QFETCH(QString, name);
    QTEST(static_cast<int>(packageType(name)), "expected");
}

void TestDatafw::scanFindsEveryFolder() {
    const QStringList expected{put("Manifest"), put("a/Manifest"), put("a/b/c/MANIFEST"), put("z/manifest")};
    put("Manifest.txt");
    put("aManifest");
    put(".Trash/Manifest");
    QStringList found = findManifests(m_dir->path());
    QCOMPARE(found, expected);
    QCOMPARE(readPackages(found)->manifests().size(), std::size_t{4});
}

void TestDatafw::scanIsNotLedAstray() {
    put("a/Manifest");
    QVERIFY(QFile::link(m_dir->path(), m_dir->filePath("a/round")));
    QVERIFY(QFile::link("/", m_dir->filePath("a/out")));
    QVERIFY(QDir().mkpath(m_dir->filePath("b/Manifest"))); // a folder of that name
    put(QString("d/").repeated(40) + "Manifest");
    QCOMPARE(findManifests(m_dir->path()), QStringList{m_dir->filePath("a/Manifest")});
    for (int i = 0; i < 1010; ++i)
        put(QString("many/%1/Manifest").arg(i));
    QCOMPARE(findManifests(m_dir->path()).size(), 1000);
}

void TestDatafw::nothingThere() {
    QCOMPARE(findManifests(m_dir->filePath("none")), QStringList());
    QCOMPARE(findManifests(put("file")), QStringList());
    QCOMPARE(findManifests(m_dir->path()), QStringList());
    QCOMPARE(findManifests(""), QStringList());
}

void TestDatafw::mediumPulledAfterTheWalk() {
    const QStringList found{put("a/Manifest"), put("b/Manifest")};
    QVERIFY(QDir(m_dir->filePath("b")).removeRecursively());
    const QString thrown = thrownBy([&] { const auto packages = readPackages(found); });
    QVERIFY2(thrown.startsWith("Error reading fw files ") && thrown.contains("removed"), qPrintable(thrown));
}

void TestDatafw::searchRoot() {
    qputenv("VELDA_MEDIA", "/mnt/m");
    qputenv("VELDA_USER", "anna");
    QCOMPARE(packageSearchRoot(), QString("/mnt/m/anna"));
    qunsetenv("VELDA_MEDIA");
    qunsetenv("VELDA_USER");
}

VELDA_TEST_MAIN(QCoreApplication, TestDatafw)
#include "tst_datafw.moc"
