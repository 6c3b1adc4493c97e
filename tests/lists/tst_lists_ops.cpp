#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <csignal>
#include <random>
#include <tuple>

#include "lists/lists_ops.h"
#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

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
        row("Sweep.JSON", "Sweep.JSON");
        row("../x", "x.json");
        row("a/ x", " x.json");
        row("..", "...json");
        row(".x", ".x.json");
        row("\u00B5-\u6E2C", "\u00B5-\u6E2C.json");
        row(QString(243, 'n'), QString(243, 'n') + ".json");
        for (const char* typed : {"", " \t", "a/", ".json", " .JSON ", "a/ .json"})
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
        QVERIFY(!m_ops.exists(typed, 0));
        QCOMPARE(save(typed, m_two.config), QString());
        QVERIFY(m_ops.exists(typed, 0) && !m_ops.exists(typed, 1));
        QStringList found;
        QString error;
        QVERIFY(m_ops.enumerate(0, found, error));
        QCOMPARE(found, QStringList(file));
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
            *point = {point->stepNumber,
                      number(random),
                      random() % 2 == 0 ? "" : std::to_string(random() % 10),
                      number(random),
                      "dBm",
                      random() % 3 == 0 ? 0 : number(random),
                      random() % 2 == 0 ? "\u00B5s" : "unit " + std::to_string(random() % 400),
                      random() % 2 == 0 ? "Run" : "Wait",
                      point->last};
        }
        PatternSteps pattern;
        pattern.points.resize(100000);
        for (std::size_t i = 1; i < pattern.points.size(); ++i)
            pattern.points[i] = new pattern_point{1, number(random), "s", number(random), "ms", 7 * unsigned(i), false};
        pattern.config.renumber();
        QCOMPARE(save("list", list.config), QString());
        QCOMPARE(save("pattern", pattern.config), QString());
        QVERIFY(content("pattern").startsWith("{\n    \"VeldaPattern\": [\n        {\n            \"Last\": 0,\n"));
        FrequencySteps loaded(2);
        PatternSteps loadedPattern(2);
        QCOMPARE(load("pattern", loaded.config), QString("List JSON root is missing"));
        QCOMPARE(load("list", loadedPattern.config), QString("List JSON root is missing"));
        QCOMPARE(loaded.text(), m_two.text());
        QCOMPARE(load("list", loaded.config), QString());
        QCOMPARE(load("pattern", loadedPattern.config), QString());
        const auto same = [](const auto& found, const auto& wanted, const auto& fields) {
            return std::equal(found.points.begin(), found.points.end(), wanted.points.begin(), wanted.points.end(),
                              [&](const auto* a, const auto* b) { return fields(*a) == fields(*b); });
        };
        QVERIFY(same(loaded, list, [](const list_point& p) {
            return std::tie(p.stepNumber, p.frequency, p.frequencyUnit, p.power, p.dwell, p.dwellUnit, p.advance,
                            p.last);
        }));
        QVERIFY(same(loadedPattern, pattern, [](const pattern_point& p) {
            return std::tie(p.stepNumber, p.onTime, p.onTimeUnit, p.offTime, p.offTimeUnit, p.loops, p.last);
        }));
    }

    void enumeration() {
        QStringList names{"rest"};
        QString error;
        QVERIFY(m_ops.enumerate(0, names, error));
        QVERIFY(names.isEmpty() && QFileInfo(m_ops.channelDirectory(0)).isDir());
        for (const char* name : {"b.json", "a.Json", "c.JSON", ".hidden.json", "note.txt"})
            put(name, "{}");
        makeFolder("folder.json");
        QVERIFY(m_ops.enumerate(0, names, error));
        QCOMPARE(names, QStringList({".hidden.json", "a.Json", "b.json", "c.JSON"}));
        QCOMPARE(erase("x"), QString("List file does not exist"));
        QCOMPARE(erase("folder"), QString("Failed to delete list file"));
    }

    void withoutAFolder() {
        QFile file(m_folder->filePath("kavor"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(save("x", m_two.config), QString("Failed to create list directory"));
        m_ops.setBaseDirectory(QString());
        QCOMPARE(save("x", m_two.config), QString("List base directory is empty"));
        QStringList names{"rest"};
        QString error;
        QVERIFY(!m_ops.enumerate(0, names, error));
        QCOMPARE(error, QString("List base directory is empty"));
        QVERIFY(names.isEmpty());
    }

    void unloadable_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("sentence");
        const auto row = [](const char* name, const QByteArray& bytes, const char* sentence) {
            addRow(name, bytes, sentence);
        };
        const char* invalid = "Invalid list JSON file";
        const char* noRoot = "List JSON root is missing";
        row("empty", "", invalid);
        row("zeros", QByteArray(4096, '\0'), invalid);
        row("something behind", "{\"VeldaList\":[{}]} x", invalid);
        row("no UTF-8", "{\"VeldaList\":[{\"FreqUnits\":\"\xff\xfe\"}]}", invalid);
        row("deep", "{\"VeldaList\":" + QByteArray(2000000, '['), invalid);
        row("other case", "{\"veldalist\":[{}]}", noRoot);
        row("no array", "{\"VeldaList\":{\"0\":{}}}", noRoot);
        row("no steps", "{\"VeldaList\":[]}", "List file contains no steps");
        row("too many steps", "{\"VeldaList\":[{}" + QByteArray(",{}").repeated(ListsOps::kMostSteps) + "]}", invalid);
        row("too many bytes", "{\"VeldaList\":[{}]}" + QByteArray(int(ListsOps::kMostBytes), ' '), invalid);
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

    // Whatever a damaged file says: either it is refused and the model stays, or the model is a numbered list.
    void damagedAnywhere() {
        QCOMPARE(save("x", m_two.config), QString());
        const QByteArray whole = content("x");
        const QString before = FrequencySteps(1).text();
        for (int length = 0; length < whole.trimmed().size(); ++length) {
            put("x.json", whole.left(length));
            FrequencySteps other(1);
            QCOMPARE(load("x", other.config), QString("Invalid list JSON file"));
            QCOMPARE(other.text(), before);
        }
        std::mt19937 random(5);
        for (int i = 0; i < 2000; ++i) {
            QByteArray bytes = whole;
            for (unsigned flips = 1 + random() % 3; flips > 0; --flips) {
                const int at = static_cast<int>(random() % static_cast<unsigned>(bytes.size()));
                bytes[at] = static_cast<char>(bytes[at] ^ (1U << random() % 8));
            }
            put("x.json", bytes);
            FrequencySteps other(1);
            if (!load("x", other.config).isEmpty())
                QCOMPARE(other.text(), before);
            QVERIFY(other.isNumbered() && !other.points.empty());
        }
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
        for (const QString& name : {QString("folder"), QString(244, 'n'), QString(250, 'n'), QString(300, 'n')})
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

    void readOnlyFolder() {
        QCOMPARE(save("x", m_two.config), QString());
        const QByteArray before = content("x");
        const QByteArray folder = QFile::encodeName(m_ops.channelDirectory(0));
        // The administrator may write everywhere, so the test steps down from that.
        QCOMPARE(chmod(QFile::encodeName(m_folder->path()), 0755), 0);
        QCOMPARE(chmod(folder, 0555), 0);
        const uid_t user = geteuid();
        QVERIFY(user != 0 || seteuid(65534) == 0);
        const QStringList told{save("x", FrequencySteps(1).config), save("y", m_two.config), erase("x")};
        QVERIFY(user != 0 || seteuid(user) == 0);
        chmod(folder, 0755);
        const QString unwritable("Failed to open list file for writing");
        QCOMPARE(told, QStringList({unwritable, unwritable, "Failed to delete list file"}));
        QCOMPARE(content("x"), before);
        QCOMPARE(everything(), QStringList("x.json"));
    }

    void leftoversAreSwept() {
        QStringList kept{"a.json",         "a.json.123456.json", "a.json.12345",
                         "a.json.1234567", "a.json.12_456",      "b.txt.123456"};
        for (const QString& name : kept + QStringList{"a.json.AbC123", "B.JSON.zzzzzz"})
            put(name, "x");
        makeFolder("d.json.123456");
        kept << "d.json.123456";
        QCOMPARE(save("a", m_two.config), QString());
        QStringList found = everything();
        std::sort(kept.begin(), kept.end());
        std::sort(found.begin(), found.end());
        QCOMPARE(found, kept);
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestListsOps)

#include "tst_lists_ops.moc"
