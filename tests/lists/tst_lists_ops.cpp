#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <csignal>
#include <random>

#include "lists/lists_ops.h"
#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

/// The library of list files: names, folders, and what becomes of file and model when something is wrong.
class TestListsOps : public TestBase {
    Q_OBJECT

private slots:
    void names_data();
    void names();
    void namesThatAreEmpty_data();
    void namesThatAreEmpty();
    void channelsHaveFolders();
    void savedListsComeBack_data();
    void savedListsComeBack();
    void theDocument();
    void enumeration();
    void erasing();
    void withoutBaseFolder();
    void aFileInTheFoldersPlace();
    void unloadable_data();
    void unloadable();
    void cutAnywhere();
    void flippedAnywhere();
    void somethingElseThanAFile();
    void manySteps();
    void fullDisk();
    void readOnlyFolder();
    void aFolderOfTheSameName();
    void leftoversAreSwept();

protected:
    void setUp() override {
        m_folder = std::make_unique<QTemporaryDir>();
        m_ops.setBaseDirectory(m_folder->filePath("kavor/list"));
    }

private:
    QString save(const QString& name, const IListConfig& list) const {
        QString error;
        return m_ops.save(name, 0, list, error) ? QString() : error;
    }
    QString load(const QString& name, IListConfig& list) const {
        QString error;
        return m_ops.load(name, 0, list, error) ? QString() : error;
    }
    QByteArray content(const QString& name) const {
        QFile file(m_ops.filePath(name, 0));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    void put(const QString& name, const QByteArray& bytes) const {
        QString error;
        QFile file(m_ops.filePath(name, 0));
        file.remove(); // to truncate it would cost some file systems a flush
        if (!m_ops.ensureChannelDirectory(0, error) || !file.open(QIODevice::WriteOnly))
            qFatal("The test cannot write %s", qPrintable(file.fileName()));
        file.write(bytes);
    }
    QStringList everything() const {
        return QDir(m_ops.channelDirectory(0)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    ListsOps m_ops{QString()};
};

void TestListsOps::names_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("file");
    QTest::newRow("plain") << "sweep"
                           << "sweep.json";
    QTest::newRow("blanks around") << " \t my sweep \n"
                                   << "my sweep.json";
    QTest::newRow("with ending") << "a.json"
                                 << "a.json";
    QTest::newRow("ending in capitals") << "Sweep.JSON"
                                        << "Sweep.JSON";
    QTest::newRow("mixed ending") << "a.Json"
                                  << "a.Json";
    QTest::newRow("other ending") << "a.json.txt"
                                  << "a.json.txt.json";
    QTest::newRow("folder above") << "../x"
                                  << "x.json";
    QTest::newRow("absolute") << "/etc/passwd"
                              << "passwd.json";
    QTest::newRow("this folder") << "."
                                 << "..json";
    QTest::newRow("the folder above") << ".."
                                      << "...json";
    QTest::newRow("hidden") << ".x"
                            << ".x.json";
    QTest::newRow("beyond ASCII") << "\u00B5-\u6E2C\u8A66"
                                  << "\u00B5-\u6E2C\u8A66.json";
    QTest::newRow("signs of a shell") << "$(x);*?"
                                      << "$(x);*?.json";
    const QString longest(243, 'n');
    QTest::newRow("longest") << longest << longest + ".json";
}

void TestListsOps::names() {
    QFETCH(QString, typed);
    QFETCH(QString, file);
    QCOMPARE(m_ops.normalizedFilename(typed), file);
    QCOMPARE(m_ops.filePath(typed, 2), m_ops.baseDirectory() + "/3/" + file);
    FrequencySteps list(2);
    QVERIFY(!m_ops.exists(typed, 0));
    QCOMPARE(save(typed, list.config), QString());
    QCOMPARE(everything(), QStringList(file));
    QStringList found;
    QString error;
    QVERIFY(m_ops.enumerate(0, found, error));
    QCOMPARE(found, QStringList(file));
    FrequencySteps loaded;
    QCOMPARE(load(typed, loaded.config), QString());
    QCOMPARE(loaded.text(), list.text());
    QVERIFY(m_ops.exists(typed, 0));
    QVERIFY(m_ops.erase(typed, 0, error));
    QCOMPARE(everything(), QStringList());
}

void TestListsOps::namesThatAreEmpty_data() {
    QTest::addColumn<QString>("typed");
    for (const char* name : {"", "   ", "\t", "/", "a/", ".json", " .JSON ", "a/.json", "a/ .json"})
        QTest::newRow(qPrintable('"' + QString(name) + '"')) << name;
}

void TestListsOps::namesThatAreEmpty() {
    QFETCH(QString, typed);
    FrequencySteps list;
    QCOMPARE(save(typed, list.config), QString("Filename is empty"));
    QVERIFY(!QFileInfo::exists(m_ops.baseDirectory()));
    QCOMPARE(load(typed, list.config), QString("Failed to open list file"));
}

void TestListsOps::channelsHaveFolders() {
    QCOMPARE(m_ops.channelDirectory(0), m_ops.baseDirectory() + "/1");
    QCOMPARE(m_ops.channelDirectory(4294967295U), m_ops.baseDirectory() + "/4294967296");
    FrequencySteps list;
    QString error;
    QVERIFY(m_ops.save("x", 1, list.config, error));
    QVERIFY(m_ops.exists("x", 1) && !m_ops.exists("x", 0));
    QVERIFY(!m_ops.load("x", 0, list.config, error));
}

void TestListsOps::savedListsComeBack_data() {
    QTest::addColumn<int>("steps");
    QTest::newRow("1") << 1;
    QTest::newRow("5000") << 5000;
}

void TestListsOps::savedListsComeBack() {
    QFETCH(int, steps);
    FrequencySteps list(steps);
    PatternSteps pattern(steps);
    list.points.back()->power = -3.25;
    pattern.points.front()->loops = 77;
    QCOMPARE(save("list", list.config), QString());
    QCOMPARE(save("pattern", pattern.config), QString());
    FrequencySteps loadedList(2);
    PatternSteps loadedPattern(2);
    QCOMPARE(load("pattern", loadedList.config), QString("List JSON root is missing"));
    QCOMPARE(load("list", loadedPattern.config), QString("List JSON root is missing"));
    QCOMPARE(loadedList.points.size(), std::size_t(2));
    QCOMPARE(load("list", loadedList.config), QString());
    QCOMPARE(load("pattern", loadedPattern.config), QString());
    QCOMPARE(loadedList.text(), list.text());
    QCOMPARE(loadedPattern.text(), pattern.text());
}

void TestListsOps::theDocument() {
    PatternSteps pattern;
    QCOMPARE(save("x", pattern.config), QString());
    QCOMPARE(content("x"), QByteArray("{\n    \"VeldaPattern\": [\n        {\n            \"Last\": 1,\n"
                                      "            \"Loops\": 3,\n            \"OffTime\": 800,\n"
                                      "            \"OffTimeTimeUnits\": \"ns\",\n            \"OnTime\": 800,\n"
                                      "            \"OnTimeTimeUnits\": \"ns\",\n            \"StepNumber\": 1\n"
                                      "        }\n    ]\n}\n"));
}

void TestListsOps::enumeration() {
    QStringList names{"rest"};
    QString error;
    QVERIFY(m_ops.enumerate(0, names, error));
    QVERIFY(names.isEmpty());
    QVERIFY(QFileInfo(m_ops.channelDirectory(0)).isDir());
    for (const char* name : {"b", "a.Json", "c.JSON", ".hidden"})
        put(name, "{}");
    QVERIFY(QDir(m_ops.channelDirectory(0)).mkdir("folder.json"));
    QFile other(m_ops.channelDirectory(0) + "/note.txt");
    QVERIFY(other.open(QIODevice::WriteOnly));
    QVERIFY(m_ops.enumerate(0, names, error));
    QCOMPARE(names, QStringList({".hidden.json", "a.Json", "b.json", "c.JSON"}));
}

void TestListsOps::erasing() {
    QString error;
    QVERIFY(!m_ops.erase("x", 0, error));
    QCOMPARE(error, QString("List file does not exist"));
    put("x", "{}");
    put("y", "{}");
    QVERIFY(m_ops.erase("x", 0, error));
    QCOMPARE(everything(), QStringList("y.json"));
    QVERIFY(QDir(m_ops.channelDirectory(0)).mkdir("z.json"));
    QVERIFY(!m_ops.erase("z", 0, error));
    QCOMPARE(error, QString("Failed to delete list file"));
}

void TestListsOps::withoutBaseFolder() {
    const ListsOps ops{QString()};
    FrequencySteps list;
    QStringList names{"rest"};
    QString error;
    QVERIFY(!ops.save("x", 0, list.config, error));
    QCOMPARE(error, QString("List base directory is empty"));
    error.clear();
    QVERIFY(!ops.enumerate(0, names, error));
    QCOMPARE(error, QString("List base directory is empty"));
    QVERIFY(names.isEmpty());
}

void TestListsOps::aFileInTheFoldersPlace() {
    QFile file(m_folder->filePath("kavor"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    FrequencySteps list;
    QCOMPARE(save("x", list.config), QString("Failed to create list directory"));
}

void TestListsOps::unloadable_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("sentence");
    const QString invalid = "Invalid list JSON file";
    const QString noRoot = "List JSON root is missing";
    QTest::newRow("empty") << QByteArray() << invalid;
    QTest::newRow("blanks") << QByteArray(" \n") << invalid;
    QTest::newRow("zeros") << QByteArray(4096, '\0') << invalid;
    QTest::newRow("text") << QByteArray("list") << invalid;
    QTest::newRow("null") << QByteArray("null") << invalid;
    QTest::newRow("number") << QByteArray("1") << invalid;
    QTest::newRow("something behind") << QByteArray("{\"VeldaList\":[{}]} x") << invalid;
    QTest::newRow("no UTF-8") << QByteArray("{\"VeldaList\":[{\"FreqUnits\":\"\xff\xfe\"}]}") << invalid;
    QTest::newRow("deep") << QByteArray("{\"VeldaList\":") + QByteArray(2000000, '[') << invalid;
    QTest::newRow("array") << QByteArray("[{}]") << noRoot;
    QTest::newRow("no member") << QByteArray("{}") << noRoot;
    QTest::newRow("other case") << QByteArray("{\"veldalist\":[{}]}") << noRoot;
    QTest::newRow("other kind") << QByteArray("{\"VeldaPattern\":[{}]}") << noRoot;
    QTest::newRow("no array") << QByteArray("{\"VeldaList\":{\"0\":{}}}") << noRoot;
    QTest::newRow("no steps") << QByteArray("{\"VeldaList\":[]}") << "List file contains no steps";
    QTest::newRow("no objects") << QByteArray("{\"VeldaList\":[1]}") << "List file contains no valid steps";
    QTest::newRow("bad power") << QByteArray("{\"VeldaList\":[{\"PowerUnits\":\"mV\"}]}")
                               << "List file contains an invalid power value";
    QByteArray many("{\"VeldaList\":[{}");
    for (int i = 0; i < ListsOps::kMostSteps; ++i)
        many += ",{}";
    QTest::newRow("more steps than any list has") << many + "]}" << invalid;
    QTest::newRow("more bytes than any list has")
        << "{\"VeldaList\":[{}]}" + QByteArray(static_cast<int>(ListsOps::kMostBytes), ' ') << invalid;
}

void TestListsOps::unloadable() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, sentence);
    put("x", bytes);
    FrequencySteps list(2);
    const QString before = list.text();
    QCOMPARE(load("x", list.config), sentence);
    QCOMPARE(list.text(), before);
    QVERIFY(content("x") == bytes);
}

void TestListsOps::cutAnywhere() {
    FrequencySteps list(2);
    QCOMPARE(save("x", list.config), QString());
    const QByteArray whole = content("x");
    FrequencySteps other(1);
    const QString before = other.text();
    for (int length = 0; length < whole.trimmed().size(); ++length) {
        put("x", whole.left(length));
        QCOMPARE(load("x", other.config), QString("Invalid list JSON file"));
        QCOMPARE(other.text(), before);
    }
}

// Whatever a damaged file says: either it is refused and the model stays, or the model is a numbered list.
void TestListsOps::flippedAnywhere() {
    FrequencySteps list(2);
    QCOMPARE(save("x", list.config), QString());
    const QByteArray whole = content("x");
    std::mt19937 random(5);
    for (int i = 0; i < 2000; ++i) {
        QByteArray bytes = whole;
        for (unsigned flips = 1 + random() % 3; flips > 0; --flips) {
            const int at = static_cast<int>(random() % static_cast<unsigned>(bytes.size()));
            bytes[at] = static_cast<char>(bytes[at] ^ (1U << random() % 8));
        }
        put("x", bytes);
        FrequencySteps other(1);
        const QString before = other.text();
        if (!load("x", other.config).isEmpty())
            QCOMPARE(other.text(), before);
        QVERIFY(other.isNumbered() && !other.points.empty());
    }
}

void TestListsOps::somethingElseThanAFile() {
    QString error;
    QVERIFY(m_ops.ensureChannelDirectory(0, error));
    QCOMPARE(mkfifo(QFile::encodeName(m_ops.filePath("pipe", 0)), 0600), 0);
    QVERIFY(QFile::link("/dev/zero", m_ops.filePath("endless", 0)));
    QVERIFY(QDir().mkdir(m_ops.filePath("folder", 0)));
    FrequencySteps list;
    for (const char* name : {"pipe", "endless", "folder", "none"})
        QCOMPARE(load(name, list.config), QString("Failed to open list file"));
}

void TestListsOps::manySteps() {
    PatternSteps pattern;
    pattern.points.resize(100000);
    for (std::size_t i = 1; i < pattern.points.size(); ++i)
        pattern.points[i] = new pattern_point;
    pattern.config.renumber();
    QCOMPARE(save("x", pattern.config), QString());
    PatternSteps loaded;
    QCOMPARE(load("x", loaded.config), QString());
    QCOMPARE(loaded.points.size(), pattern.points.size());
    QVERIFY(loaded.isNumbered());
}

// The size that a process may write stands in for the room that a disk has.
void TestListsOps::fullDisk() {
    FrequencySteps small(1);
    QCOMPARE(save("x", small.config), QString());
    const QByteArray before = content("x");
    FrequencySteps large(2000);
    rlimit previous{};
    getrlimit(RLIMIT_FSIZE, &previous);
    for (const rlim_t room : {0, 1, 100, 4096, 100000}) {
        const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{room, previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const QString sentence = save("x", large.config);
        const QString newSentence = save("new", large.config);
        FrequencySteps other(2); // so small that it goes to the disk in one piece
        const QString smallSentence = room < 300 ? save("x", other.config) : sentence;
        setrlimit(RLIMIT_FSIZE, &previous);
        std::signal(SIGXFSZ, previousHandler);
        QCOMPARE(sentence, QString("Failed to write list file"));
        QCOMPARE(newSentence, QString("Failed to write list file"));
        QCOMPARE(smallSentence, QString("Failed to write list file"));
        QCOMPARE(content("x"), before);
        QCOMPARE(everything(), QStringList("x.json"));
    }
    QCOMPARE(save("x", large.config), QString());
}

void TestListsOps::readOnlyFolder() {
    FrequencySteps list(1);
    QCOMPARE(save("x", list.config), QString());
    const QByteArray before = content("x");
    // The administrator may write everywhere, so the test steps down from that.
    QCOMPARE(chmod(QFile::encodeName(m_folder->path()), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(m_ops.channelDirectory(0)), 0555), 0);
    const uid_t user = geteuid();
    QVERIFY(user != 0 || seteuid(65534) == 0);
    FrequencySteps other(2);
    const QString overOld = save("x", other.config);
    const QString asNew = save("y", other.config);
    QString error;
    const bool erased = m_ops.erase("x", 0, error);
    const ListsOps elsewhere(m_ops.channelDirectory(0) + "/deeper");
    QString folderError;
    const bool made = elsewhere.ensureChannelDirectory(0, folderError);
    QVERIFY(user != 0 || seteuid(user) == 0);
    chmod(QFile::encodeName(m_ops.channelDirectory(0)), 0755);
    QCOMPARE(overOld, QString("Failed to open list file for writing"));
    QCOMPARE(asNew, QString("Failed to open list file for writing"));
    QVERIFY(!erased);
    QCOMPARE(error, QString("Failed to delete list file"));
    QVERIFY(!made);
    QCOMPARE(folderError, QString("Failed to create list directory"));
    QCOMPARE(content("x"), before);
    QCOMPARE(everything(), QStringList("x.json"));
}

void TestListsOps::aFolderOfTheSameName() {
    QString error;
    QVERIFY(m_ops.ensureChannelDirectory(0, error));
    QVERIFY(QDir().mkdir(m_ops.filePath("x", 0)));
    FrequencySteps list;
    QCOMPARE(save("x", list.config), QString("Failed to open list file for writing"));
    for (int length : {244, 250, 300})
        QCOMPARE(save(QString(length, 'n'), list.config), QString("Failed to open list file for writing"));
    QCOMPARE(everything(), QStringList("x.json"));
}

void TestListsOps::leftoversAreSwept() {
    QString error;
    QVERIFY(m_ops.ensureChannelDirectory(0, error));
    const QDir dir(m_ops.channelDirectory(0));
    const QStringList kept{"a.json",         "a.json.123456.json", "a.json.12345",
                           "a.json.1234567", "a.json.12_456",      "b.txt.123456"};
    const QStringList left{"a.json.AbC123", "B.JSON.zzzzzz"};
    for (const QString& name : kept + left) {
        QFile file(dir.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QVERIFY(dir.mkdir("d.json.123456"));
    FrequencySteps list;
    QCOMPARE(save("a", list.config), QString());
    QStringList expected = kept + QStringList("d.json.123456");
    QStringList found = everything();
    std::sort(expected.begin(), expected.end());
    std::sort(found.begin(), found.end());
    QCOMPARE(found, expected);
}

VELDA_TEST_MAIN(QCoreApplication, TestListsOps)

#include "tst_lists_ops.moc"
