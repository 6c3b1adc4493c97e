#include "lists/list_content.h"
#include "lists/step_csv.h"
#include "lists/sticks.h"
#include "tests/lists/steplist.h"
#include "tests/support/testbase.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>

namespace {

const QString List = "VeldaList", Pattern = "VeldaPattern";
const QByteArray Head = "frequency,power,dwell,advance\n";

// The steps that come of a table, or the sentence that refuses it.
QString read(const QByteArray& content, const QString& root) {
    QJsonArray array;
    QString error;
    BothSteps both(1);
    IListConfig& list = both.of(root == Pattern);
    if (!StepCsv::read(content, root, array, error) || !list.fromJson(array, error))
        return "!" + error;
    return both.text(root == Pattern);
}

} // namespace

/// Lists as tables of text, and on sticks.
class StepCsvTest : public TestBase {
    Q_OBJECT

private slots:
    void reads_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("expected"); // the sentence that refuses it behind a "!"
        QTest::addColumn<QString>("root");
        const auto row = [](const char* tag, const QByteArray& content, const char* expected,
                            const QString& root = List) {
            QTest::addRow("%s", tag) << content << QString::fromUtf8(expected) << root;
        };
        row("units", Head + "2.4 GHz,-10 dBm,500 \u00B5s,Run\n100MHz,0,1 ms,wait",
            "1,2.4 GHz,-10 dBm,500 \u00B5s,Run;2,100 MHz,0 dBm,1 ms,Wait");
        row("bare", "power,dwell,frequency\n-3.5,0.00025,2.4e9\n", "1,2.4 GHz,-3.5 dBm,250 \u00B5s,Run");
        row("semicolons", "Frequency;Power;Dwell;Advance\r\n433,92 MHz;-1,5;1.5 ms;Run\r\n;;;\r\n",
            "1,433.92 MHz,-1.5 dBm,1.5 ms,Run");
        row("quotes", Head + "\"1 kHz\", \"0 dBm\",\"1\n s\",Run", "1,1 KHz,0 dBm,1 s,Run");
        row("mark and Latin-1", "\xEF\xBB\xBF" + Head + "1 Hz,1000 mV,5 \u03BCs,Run",
            "1,1 Hz,13.0103 dBm,5 \u00B5s,Run");
        row("Latin-1", Head + "1 Hz,0,5 \xB5s,Run\r1 Hz,0,6 \xB5s,Run",
            "1,1 Hz,0 dBm,5 \u00B5s,Run;2,1 Hz,0 dBm,6 \u00B5s,Run");
        row("pattern", "on,off,repetition\n800 ns,1,2 K\n1e-6,2 \u00B5s,3\n",
            "1,800 ns,1 s,2000;2,1 \u00B5s,2 \u00B5s,3", Pattern);
        row("empty", "", "!List file contains no steps");
        row("header alone", Head, "!List file contains no steps");
        row("wrong list", "on,off,repetition\n1,1,1", "!Line 1, column 1: \"on\" is no column of this list");
        row("no header", "2.4 GHz,0,1 ms,Run", "!Line 1, column 1: \"2.4 GHz\" is no column of this list");
        row("column missing", "frequency,dwell\n1,1", "!Line 1, column 3: \"power\" is missing");
        row("column twice", "frequency,power,dwell,power\n", "!Line 1, column 4: \"power\" is there twice");
        row("no number", Head + "1,0,1,Run\n\nabc,0,1,Run", "!Line 4, column 1: \"abc\" is no frequency");
        row("what nobody sees", Head + QByteArray("1\u00A0Hz,1\0,1,Run", 14),
            "!Line 2, column 2: \"1\uFFFD\" is no power");
        row("unit of another", Head + "1 GHz,0,5 MHz,Run", "!Line 2, column 3: \"5 MHz\" is no dwell");
        row("comma in a point list", "frequency;power;dwell\n1.000,5;0;1",
            "!Line 2, column 1: \"1.000,5\" is no frequency");
        row("no voltage", Head + "1,0 mV,1,Run", "!Line 2, column 2: \"0 mV\" is no power");
        row("too large a number", Head + "1e999,0,1,Run", "!Line 2, column 1: \"1e999\" is no frequency");
        row("advance", Head + "1,0,1,Go", "!Line 2, column 4: \"Go\" is no advance");
        row("cell missing", Head + "1,0,,Run", "!Line 2, column 3: no dwell");
        row("cell too many", Head + "1,0,1,Run,x", "!Line 2, column 5: \"x\" has no column");
        row("open quote", Head + "1,0,1,Run\n1,\"0,1,Run", "!Line 3, column 2: a quote does not end");
        row("many columns", QByteArray(100, ','), "!Line 1: too many columns");
        row("half a repetition", "on,off,repetition\n1,1,1.5", "!Line 2, column 3: \"1.5\" is no repetition", Pattern);
        row("too many", Head + QByteArray("1,0,1,Run\n").repeated(ListContent::MostSteps + 1),
            "!List file is too large: the limit is 10000 steps or 4 MB");
    }
    void reads() {
        QFETCH(QByteArray, content);
        QFETCH(QString, root);
        QTEST(read(content, root), "expected");
    }

    /// Whatever number a step can hold.
    void comesBackBitForBit() {
        FrequencySteps steps(2000);
        FrequencyListConfig& list = steps.config;
        QRandomGenerator random(7);
        const auto any = [&random](double most) {
            const double number = random.generateDouble() * most;
            return random.bounded(2) ? number : std::round(number * 1000) / 1000;
        };
        int i = 0;
        for (list_point* p : steps.points) {
            ++i;
            *p = {0,
                  any(6000),
                  i % 2 ? "MHz" : "KHz",
                  any(200) - 150,
                  "dBm",
                  any(i % 3 ? 1000 : 1e-12),
                  i % 5 ? "\u00B5s" : "s",
                  i % 4 ? "Run" : "Wait",
                  false};
        }
        list.renumber();
        const quint64 before = list.fingerprint();
        QByteArray content;
        QString error;
        QJsonArray back;
        QVERIFY(StepCsv::write(list.toJson(), List, content, error));
        QVERIFY2(StepCsv::read(content, List, back, error) && list.fromJson(back, error), qPrintable(error));
        QCOMPARE(list.fingerprint(), before);
        steps.points.front()->frequencyUnit = "furlong";
        QVERIFY(!StepCsv::write(list.toJson(), List, content, error));
        QVERIFY(error.startsWith("Step 1: "));
    }

    void sticks() {
        const QTemporaryDir media;
        qputenv("VELDA_MEDIA", QFile::encodeName(media.path()));
        qputenv("VELDA_USER", "velda");
        QCOMPARE(Sticks::present().size(), std::size_t(0));
        const QString folder = media.path() + "/velda/FIELD KIT";
        QVERIFY(QDir().mkpath(folder));
        const std::vector<Stick> found = Sticks::present();
        QCOMPARE(found.size(), std::size_t(1));
        const Stick& stick = found.front();
        QCOMPARE(stick.name, QString("FIELD KIT"));
        QJsonArray steps;
        QString error;
        QVERIFY(StepCsv::read(Head + "1 MHz,0 dBm,1 s,Run", List, steps, error));
        QVERIFY(Sticks::save(stick, "b.csv", List, steps, error) && Sticks::save(stick, "a.JSON", List, steps, error));
        QVERIFY(QFile::link("/etc/hostname", folder + "/link.csv"));
        QStringList names;
        QVERIFY(Sticks::enumerate(stick, names, error));
        QCOMPARE(names, QStringList({"a.JSON", "b.csv"}));
        for (const QString& name : qAsConst(names)) {
            QJsonArray back;
            QVERIFY2(Sticks::load(stick, name, List, back, error), qPrintable(error));
            QCOMPARE(back.first().toObject().value("Frequency").toDouble(), 1.0);
        }
        for (const char* refused : {"link.csv", "../out.csv", ".csv"})
            QVERIFY2(!Sticks::save(stick, refused, List, steps, error), refused);
        QVERIFY(!QFile::exists(media.path() + "/velda/out.csv"));
        QCOMPARE(QFileInfo(folder + "/link.csv").symLinkTarget(), QString("/etc/hostname"));
        QVERIFY(!Sticks::load(stick, "c.csv", List, steps, error));
        QCOMPARE(error, QString("Failed to open list file"));
        QVERIFY(QDir(folder).removeRecursively());
        for (int i = 0; i < 3; ++i) {
            error.clear();
            QVERIFY(!(i == 0   ? Sticks::enumerate(stick, names, error)
                      : i == 1 ? Sticks::load(stick, "b.csv", List, steps, error)
                               : Sticks::save(stick, "b.csv", List, steps, error)));
            QCOMPARE(error, QString("FIELD KIT was removed"));
        }
        QVERIFY(!QFileInfo::exists(folder));
    }
};

VELDA_TEST_MAIN(QCoreApplication, StepCsvTest)
#include "tst_step_csv.moc"
