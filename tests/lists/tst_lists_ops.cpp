#include "lists/list_content.h"
#include "lists/lists_ops.h"
#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <csignal>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

/// The library of list files: names, folders, and what becomes of file and model when something is wrong.
class TestListsOps : public TestBase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    ListsOps m_ops{QString()};
    const FrequencySteps m_two{2};

    QString save(const QString& name, const IListConfig& list) const {
        QString error;
        return m_ops.save(name, 0, list, error) ? QString() : error;
    }
    QString load(const QString& name, IListConfig& list) const {
        QString error;
        return m_ops.load(name, 0, list, error) ? QString() : error;
    }
    QString erase(const QString& name) const {
        QString error;
        return m_ops.erase(name, 0, error) ? QString() : error;
    }
    QByteArray content(const QString& name) const {
        QFile file(m_ops.filePath(name, 0));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    void put(const QString& name, const QByteArray& bytes) const {
        QString error;
        QFile file(m_ops.channelDirectory(0) + '/' + name);
        file.remove(); // to truncate it would cost some file systems a flush
        if (!m_ops.ensureChannelDirectory(0, error) || !file.open(QIODevice::WriteOnly))
            qFatal("The test cannot write %s", qPrintable(file.fileName()));
        file.write(bytes);
    }

    void makeFolder(const QString& name) const { QVERIFY(QDir().mkpath(m_ops.channelDirectory(0) + '/' + name)); }
    QStringList everything() const {
        return QDir(m_ops.channelDirectory(0)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

protected:
    void setUp() override {
        m_folder = std::make_unique<QTemporaryDir>();
        m_ops.setBaseDirectory(m_folder->filePath("kavor/list"));
    }

private slots:
    void names_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("file"); // empty: no name
        const auto row = [](const QString& typed, const QString& file) {
            addRow(qPrintable(typed.left(20)), typed, file);
        };
        row(" \t my sweep \n", "my sweep.json");
        row("../x", "x.json");
        row("\u00B5-\u6E2C", "\u00B5-\u6E2C.json");
        for (const char* typed : {" \t", "a/", " .JSON "})
            row(typed, QString());
    }

    void names() {
        QFETCH(QString, typed);
        QFETCH(QString, file);
        FrequencySteps loaded;
        if (file.isEmpty()) {
            QCOMPARE(save(typed, m_two.config), QString("Filename is empty"));
            QVERIFY(!QFileInfo::exists(m_ops.baseDirectory()));
            QCOMPARE(load(typed, loaded.config), QString("Failed to open list file"));
            return;
        }
        QCOMPARE(m_ops.filePath(typed, 2), m_ops.baseDirectory() + "/3/" + file);
        QCOMPARE(save(typed, m_two.config), QString());
        QCOMPARE(load(typed, loaded.config), QString());
        QCOMPARE(loaded.text(), m_two.text());
        QCOMPARE(erase(typed), QString());
        QCOMPARE(everything(), QStringList());
    }

    void savedListsComeBack() {
        std::mt19937 random(4);
        std::uniform_real_distribution<double> number(-1e6, 1e6);
        FrequencySteps list(5000);
        for (list_point* point : list.points) {
            // More combinations of texts than are kept at a time, some of them the same when run together.
            point->frequency = number(random);
            point->frequencyUnit = random() % 2 == 0 ? "" : std::to_string(random() % 10);
            point->power = number(random);
            point->dwell = random() % 3 == 0 ? 0 : number(random);
            point->dwellUnit = random() % 2 == 0 ? "\u00B5s" : "unit " + std::to_string(random() % 400);
            point->advance = random() % 2 == 0 ? "Run" : "Wait";
        }
        const PatternSteps pattern(100);
        QCOMPARE(save("list", list.config), QString());
        QCOMPARE(save("pattern", pattern.config), QString());
        QVERIFY(content("pattern").startsWith("{\n    \"VeldaPattern\": [\n        {\n            \"Last\": 0,\n"));
        FrequencySteps loaded(2);
        PatternSteps loadedPattern(2);
        QCOMPARE(load("pattern", loaded.config), QString("List JSON root is missing"));
        QCOMPARE(loaded.text(), m_two.text());
        QCOMPARE(load("list", loaded.config), QString());
        QCOMPARE(load("pattern", loadedPattern.config), QString());
        QVERIFY(loaded.config.toJson() == list.config.toJson());
        QVERIFY(loadedPattern.config.toJson() == pattern.config.toJson());
    }

    void enumeration() {
        QStringList names{"rest"};
        QString error;
        for (const char* name : {"b.json", "a.Json", "c.JSON", ".hidden.json", "note.txt"})
            put(name, "{}");
        makeFolder("folder.json");
        QVERIFY(m_ops.enumerate(0, names, error));
        QCOMPARE(names, QStringList({".hidden.json", "a.Json", "b.json", "c.JSON"}));
        QCOMPARE(erase("x"), QString("List file does not exist"));
        QCOMPARE(erase("folder"), QString("Failed to delete list file"));
    }

    void unloadable_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("sentence");
        const auto row = [](const char* name, const QByteArray& bytes, const char* sentence) {
            addRow(name, bytes, sentence);
        };
        const char* invalid = "Invalid list JSON file";
        row("no UTF-8", "{\"VeldaList\":[{\"FreqUnits\":\"\xff\xfe\"}]}", invalid);
        row("deep", "{\"VeldaList\":" + QByteArray(2000000, '['), invalid);
        const char* tooLarge = "List file is too large: the limit is 10000 steps or 4 MB";
        row("too many steps", "{\"VeldaList\":[{}" + QByteArray(",{}").repeated(ListContent::MostSteps) + "]}",
            tooLarge);
        row("too many bytes", "{\"VeldaList\":[{}]}" + QByteArray(int(ListContent::MostBytes), ' '), tooLarge);
        row("too many values", "{\"VeldaList\":[" + QByteArray("1,").repeated(1000000) + "{}]}", tooLarge);
    }

    void unloadable() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, sentence);
        put("x.json", bytes);
        FrequencySteps list(2);
        QCOMPARE(load("x", list.config), sentence);
        QCOMPARE(list.text(), m_two.text());
        QVERIFY(content("x") == bytes);
    }

    // A name that is taken by what is no plain file, or is longer than names can be.
    void somethingElseThanAFile() {
        makeFolder("folder.json");
        QCOMPARE(mkfifo(QFile::encodeName(m_ops.filePath("pipe", 0)), 0600), 0);
        QVERIFY(QFile::link("/dev/zero", m_ops.filePath("endless", 0)));
        FrequencySteps list;
        for (const char* name : {"pipe", "endless", "folder", "none"})
            QCOMPARE(load(name, list.config), QString("Failed to open list file"));
        const QStringList before = everything();
        for (const QString& name : {QString("folder"), QString(251, 'n')})
            QCOMPARE(save(name, list.config), QString("Failed to open list file for writing"));
        QCOMPARE(everything(), before);
    }

    // The size that a process may write stands in for the room that a disk has.
    void fullDisk() {
        const FrequencySteps small(1);
        const FrequencySteps large(2000);
        QCOMPARE(save("x", small.config), QString());
        const QByteArray before = content("x");
        rlimit previous{};
        getrlimit(RLIMIT_FSIZE, &previous);
        for (const rlim_t room : {0, 1, 100, 4096, 100000}) {
            const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{room, previous.rlim_max};
            setrlimit(RLIMIT_FSIZE, &limit);
            QStringList sentences{save("x", large.config), save("new", large.config)};
            if (room < 300)
                sentences << save("x", m_two.config); // goes to the disk in one piece
            setrlimit(RLIMIT_FSIZE, &previous);
            std::signal(SIGXFSZ, previousHandler);
            for (const QString& sentence : sentences)
                QCOMPARE(sentence, QString("Failed to write list file"));
            QCOMPARE(content("x"), before);
            QCOMPARE(everything(), QStringList("x.json"));
        }
        QCOMPARE(save("x", large.config), QString());
    }

    // A name is on the disk when its folder is: a folder that may be written and not read cannot be put there.
    void folderThatCannotBeSynced() {
        put("other.json", "{}");
        const QByteArray folder = QFile::encodeName(m_ops.channelDirectory(0));
        // The administrator may read everywhere, so the test steps down from that.
        QVERIFY(chmod(QFile::encodeName(m_folder->path()), 0755) == 0 && chmod(folder, 0333) == 0);
        const uid_t user = geteuid();
        QVERIFY(user != 0 || seteuid(65534) == 0);
        const QString told = save("x", m_two.config);
        QVERIFY(user != 0 || seteuid(user) == 0);
        chmod(folder, 0755);
        QCOMPARE(told, QString("Failed to write list file"));
    }

    void leftoversAreSwept() {
        const QStringList kept{".velda-unfinished-notes.txt", "a.json", "a.json.backup", "a.json.golden"};
        for (const QString& name : kept + QStringList{".velda-unfinished-AbCdEf"})
            put(name, "x");
        QCOMPARE(save("a", m_two.config), QString());
        QCOMPARE(everything(), kept);
    }

    // Names of somebody else's making: a row of the browser stands for its own file alone.
    void aFileIsTheOneNamed_data() {
        QTest::addColumn<QString>("name");
        addRow("blank in front", " lead.json");
        addRow("blank behind", "lead .json");
        addRow("nothing but blanks", "  .json");
        addRow("as long as a name can be", QString(250, 'n') + ".JSON");
    }

    void aFileIsTheOneNamed() {
        QFETCH(QString, name);
        QCOMPARE(save("lead", FrequencySteps(1).config), QString());
        const QByteArray other = content("lead");
        put(name, "{\"VeldaList\": [{}, {}, {}]}");
        FrequencySteps list;
        QCOMPARE(load(name, list.config), QString());
        QCOMPARE(list.points.size(), std::size_t(3));
        if (!name.chopped(5).trimmed().isEmpty()) {
            QCOMPARE(save(name, m_two.config), QString());
            QCOMPARE(load(name, list.config), QString());
            QCOMPARE(list.text(), m_two.text());
        }
        QCOMPARE(content("lead"), other);
        QCOMPARE(erase(name), QString());
        QCOMPARE(everything(), QStringList("lead.json"));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestListsOps)

#include "tst_lists_ops.moc"
