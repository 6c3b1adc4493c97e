#include "common/update/package_scan.h"
#include "tests/common/update/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

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
    void manifest() {
        QFETCH(QByteArray, json);
        const fwData data({put("Manifest", json)});
        QCOMPARE(data.manifests().size(), std::size_t{1});
        QTEST(textOf(*data.manifests().front()), "expected");
    }

    void packagePathIsInTheManifestsFolder() {
        const QString first = put("a/Manifest", R"({"package":"p.tgz"})");
        const QString second = put("b/c/Manifest", "");
        const fwData data({first, second});
        QCOMPARE(data.manifests()[0]->package_path, m_dir->at("a/p.tgz"));
        QCOMPARE(data.manifests()[1]->package_path, m_dir->at("b/c/"));
        QVERIFY(fwData().manifests().empty());
    }

    // Each gives an empty record, and none may block or fill the memory.
    void specialFiles() {
        QVERIFY(QDir().mkpath(m_dir->at("folder")));
        QCOMPARE(mkfifo(QFile::encodeName(m_dir->at("pipe")).constData(), 0600), 0);
        QVERIFY(QFile::link("/dev/zero", m_dir->at("endless")));
        for (const char* kind : {"missing", "folder", "pipe", "endless"})
            QCOMPARE(textOf(*fwData({m_dir->at(kind)}).manifests().front()), QString("||||"));
    }

    void readErrorKeepsTheRecordsBeforeIt() {
        const QString good = put("Manifest", R"({"name":"FW"})");
        const QString bad = m_dir->at("b");
        QVERIFY(QFile::link("/proc/self/mem", bad)); // opens, and fails when it is read
        fwData data;
        const QString thrown = thrownBy([&] { data.init_cmd_config({good, bad, good}); });
        QVERIFY2(thrown.startsWith("Error reading fw file " + bad), qPrintable(thrown));
        QCOMPARE(data.manifests().size(), std::size_t{1});
        const QString list = thrownBy([&] { const auto packages = readPackages({bad}); });
        QVERIFY2(list.startsWith("Error reading fw files "), qPrintable(list));
    }

    void type() {
        const QVector<QPair<const char*, PackageType>> table{
            {"FW", PackageType::Software},   {"NMX-FW", PackageType::Software}, {"FPGA and FW", PackageType::Software},
            {"NMX FPGA", PackageType::Fpga}, {"xNMXx", PackageType::Module},    {"fpga", PackageType::Unknown},
            {"F W", PackageType::Unknown}};
        for (const auto& row : table)
            QVERIFY2(packageType(row.first) == row.second, row.first);
    }

    void scanFindsEveryFolder() {
        const QStringList expected{put("Manifest"), put("a/Manifest"), put("a/b/c/MANIFEST"), put("z/manifest")};
        put("Manifest.txt");
        put("aManifest");
        put(".Trash/Manifest");
        QStringList found = findManifests(m_dir->path());
        QCOMPARE(found, expected);
        QCOMPARE(readPackages(found)->manifests().size(), std::size_t{4});
    }

    void scanIsNotLedAstray() {
        put("a/Manifest");
        QVERIFY(QFile::link(m_dir->path(), m_dir->at("a/round")));
        QVERIFY(QFile::link("/", m_dir->at("a/out")));
        QVERIFY(QDir().mkpath(m_dir->at("b/Manifest"))); // a folder of that name
        put(QString("d/").repeated(40) + "Manifest");
        QCOMPARE(findManifests(m_dir->path()), QStringList{m_dir->at("a/Manifest")});
        for (int i = 0; i < 1010; ++i)
            put(QString("many/%1/Manifest").arg(i));
        QCOMPARE(findManifests(m_dir->path()).size(), 1000);
    }

    void nothingThere() {
        for (const QString& root : {m_dir->at("none"), put("file"), m_dir->path(), QString()})
            QCOMPARE(findManifests(root), QStringList());
    }

    // A folder that cannot be opened while the walk is on its way to it; here because no more files may be open.
    void mediumUnreadableInTheWalk() {
        put("a/Manifest");
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &before), 0);
        const int lowestFree = dup(0);
        close(lowestFree);
        const rlimit onlyTheRoot{static_cast<rlim_t>(lowestFree) + 1, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &onlyTheRoot), 0);
        const QString thrown = thrownBy([&] { const auto packages = packagesBelow(m_dir->path()); });
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &before), 0);
        QVERIFY2(thrown.startsWith("Error reading fw files "), qPrintable(thrown));
    }

    // Whatever goes at whatever moment of the look: it ends with what is there, or with a sentence.
    void mediumPulledAtAnyMoment() {
        std::atomic<bool> ended{false};
        const std::unique_ptr<QThread> hand(QThread::create([&] {
            while (!ended) {
                for (int i = 0; i < 10; ++i)
                    put(QString("stick/%1/deep/Manifest").arg(i));
                QDir(m_dir->at("stick")).removeRecursively();
            }
        }));
        hand->start();
        for (int i = 0; i < 60; ++i) {
            std::size_t found = 0;
            const QString thrown = thrownBy([&] { found = packagesBelow(m_dir->path())->manifests().size(); });
            QVERIFY(found <= 10);
            QVERIFY2(thrown.isEmpty() || thrown.startsWith("Error reading fw files "), qPrintable(thrown));
        }
        ended = true;
        hand->wait();
    }

protected:
    void setUp() override { m_dir = std::make_unique<TestFolder>(); }

private:
    QString put(const QString& name, const QByteArray& bytes = "{}") { return m_dir->put(name, bytes); }

    std::unique_ptr<TestFolder> m_dir;
};

void TestDatafw::manifest_data() {
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");
    const QString nothing("||||");
    addRow("whole", QByteArray(R"({"manifest_version":"1","name":"FW-A","version":"2.0","description":"d",
        "package":"p.tgz","components":[{"type":"file","name":"a","action":"copy","destination":"/x"},
        {"type":"dir","name":"b","action":"delete"}],"unknown":{"deep":[1]}})"),
           "1|FW-A|2.0|d|p.tgz|{file,a,copy,/x}|{dir,b,delete,}");
    addRow("byte order mark", QByteArray("\xEF\xBB\xBF{\"name\":\"FPGA\"}"), "|FPGA|||");
    addRow("other letters", QByteArray(R"({"description":"größer ±3 µs"})"), QString::fromUtf8("|||größer ±3 µs|"));
    addRow("wrong types", QByteArray(R"({"name":5,"version":null,"description":["x"],"package":{},
        "components":{"type":"file"}})"),
           nothing);
    addRow("wrong types in components", QByteArray(R"({"components":[1,null,"x",[],{"type":true,"name":"n"}]})"),
           nothing + "|{,,,}|{,,,}|{,,,}|{,,,}|{,n,,}");
    addRow("empty", QByteArray(), nothing);
    addRow("no JSON", QByteArray("name = FW"), nothing);
    addRow("cut in the middle", QByteArray(R"({"name":"FW-A","version":"2.)"), nothing);
    addRow("an array", QByteArray(R"([{"name":"FW"}])"), nothing);
    addRow("broken UTF-8", QByteArray("{\"name\":\"F\xFF\xFEW\"}"), nothing);
    addRow("deep", (QByteArray(100000, '[') + QByteArray(100000, ']')), nothing);
    addRow("a mebibyte", ("{\"name\":\"FW\"}" + QByteArray(1024 * 1024 - 13, ' ')), "|FW|||");
    addRow("a byte more", ("{\"name\":\"FW\"}" + QByteArray(1024 * 1024 - 12, ' ')), nothing);
}

VELDA_TEST_MAIN(QCoreApplication, TestDatafw)
#include "tst_datafw.moc"
