#include "common/update/package_scan.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <cstdio>
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

} // namespace

class TestDatafw : public TestBase {
    Q_OBJECT

private slots:
    void manifest_data();
    void manifest() {
        QFETCH(QByteArray, json);
        const fwData data({put("Manifest", json)});
        QTEST(textOf(*data.manifests().front()), "expected");
    }

    // None may block or fill the memory; what opens and fails when it is read is told.
    void specialFiles() {
        QCOMPARE(mkfifo(QFile::encodeName(m_dir->at("pipe")).constData(), 0600), 0);
        QVERIFY(QFile::link("/dev/zero", m_dir->at("endless")) && QFile::link("/proc/self/mem", m_dir->at("bad")));
        for (const char* kind : {"missing", "pipe", "endless"})
            QCOMPARE(textOf(*fwData({m_dir->at(kind)}).manifests().front()), QString("||||"));
        QVERIFY_EXCEPTION_THROWN(fwData({m_dir->at("bad")}), std::runtime_error); // its text is in tests/gui
    }

    void scanFindsEveryFolderAndIsNotLedAstray() {
        const QStringList expected{put("Manifest"), put("a/Manifest"), put("a/b/c/MANIFEST"), put("z/manifest")};
        for (const char* none : {"Manifest.txt", "aManifest", ".Trash/Manifest"})
            put(none);
        put(QString("d/").repeated(40) + "Manifest");
        QVERIFY(QFile::link(m_dir->path(), m_dir->at("a/round")) && QFile::link("/", m_dir->at("a/out")));
        QVERIFY(QDir().mkpath(m_dir->at("b/Manifest"))); // a folder of that name
        const QByteArray noText = QFile::encodeName(m_dir->at("n")) + "\xff\xfe";
        QCOMPARE(mkdir(noText.constData(), 0700), 0);
        QCOMPARE(std::rename(QFile::encodeName(m_dir->at("aManifest")).constData(), (noText + "/Manifest").constData()),
                 0);
        QCOMPARE(findManifests(m_dir->path()), expected);
        QVERIFY(!packagesBelow(m_dir->path())->isCut());
        QVERIFY(unlink((noText + "/Manifest").constData()) == 0 && rmdir(noText.constData()) == 0);
        for (int i = 0; i < 1010; ++i)
            put(QString("many/%1/Manifest").arg(i));
        QCOMPARE(findManifests(m_dir->path()).size(), MostManifests + 1);
        const auto packages = packagesBelow(m_dir->path());
        QVERIFY(packages->isCut() && packages->manifests().size() == MostManifests);
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
    addRow("wrong types in components", QByteArray(R"({"components":[1,null,{"type":true,"name":"n"}]})"),
           "|||||{,,,}|{,,,}|{,n,,}");
    addRow("cut in the middle", QByteArray(R"({"name":"FW-A","version":"2.)"), nothing);
    addRow("deep", (QByteArray(100000, '[') + QByteArray(100000, ']')), nothing);
    addRow("a byte more", ("{\"name\":\"FW\"}" + QByteArray(1024 * 1024 - 12, ' ')), nothing);
}

VELDA_TEST_MAIN(QCoreApplication, TestDatafw)
#include "tst_datafw.moc"
