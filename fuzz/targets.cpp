#include "fuzz/targets.h"

#include "common/link/record_texts.h"
#include "common/link/scpireply.h"
#include "common/update/datafw.h"
#include "common/update/fpga_datagram.h"
#include "common/update/fpga_image.h"
#include "common/update/fpga_trailer.h"
#include "common/wire/channel_record.h"
#include "lists/frequency_list_config.h"
#include "lists/lists_ops.h"
#include "lists/pattern_list_config.h"
#include "lists/step_csv.h"
#include "values/formatting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <cstring>
#include <memory>

namespace {

QString outcome(ScpiReply& reply, bool query) {
    QString error;
    switch (reply.advance(query, error)) {
    case ScpiReply::Progress::Waiting:
        return QStringLiteral("waits");
    case ScpiReply::Progress::Failed:
        return QStringLiteral("failed");
    case ScpiReply::Progress::Answered:
        break;
    }
    return QStringLiteral("answered ") + QString::fromLatin1(QByteArray::fromStdString(reply.takePayload()).toHex());
}

/// However the bytes are cut on their way, the same comes of them.
FuzzTarget replyStream() {
    const auto read = [](const QByteArray& input, Mutator& random) {
        const bool query = random.below(2) == 0;
        ScpiReply whole, cut;
        whole.append(input);
        const QString expected = outcome(whole, query);
        QString got = QStringLiteral("waits");
        for (int at = 0; at < input.size() && got == QLatin1String("waits");) {
            const int length = 1 + random.below(7);
            cut.append(input.mid(at, length));
            got = outcome(cut, query);
            at += length;
        }
        return got == expected ? QString() : QStringLiteral("%1, in pieces %2").arg(expected, got);
    };
    return {QStringLiteral("reply"),
            {"+OK\n", "-ERR \"text\"\n", "1.5E+9\n", "+OK\r\n\n12,13\r\n", "#15hello\n", "#3012abcdefghijkl\r\n+OK\n",
             QByteArray("#210\0\n\r#\xFF\x00\x01\x02\x03\n", 15)},
            {"#0", "#9999999999", "#800000001", "+OK", "-ERR", "\r\n", "\n", "#"},
            read};
}

/// A million files on a disk would take hours.
QString memoryFolder() {
    const QString shared = QStringLiteral("/dev/shm");
    return QFileInfo(shared).isWritable() ? shared : QDir::tempPath();
}

/// What can be read can be written, and read again as the same.
template <typename Config, typename Point, typename Limits>
FuzzTarget listFile(const QString& name, std::vector<QByteArray> seeds) {
    struct State {
        QTemporaryDir home{memoryFolder() + QStringLiteral("/fuzz-XXXXXX")};
        ListsOps files{home.path()};
        std::vector<Point*> points;
        Config list{&points, Limits()};
        ~State() { qDeleteAll(points); } // the list's owner, not the list, frees them
    };
    const auto state = std::make_shared<State>();
    QString error;
    if (!state->files.save(QStringLiteral("fuzz"), 0, state->list, error))
        qFatal("%s", qPrintable(error));
    const auto read = [state, good = seeds.front()](const QByteArray& input, Mutator&) -> QString {
        QFile file(state->files.filePath(QStringLiteral("fuzz"), 0));
        if (!file.open(QIODevice::WriteOnly) || file.write(input) != input.size())
            return QStringLiteral("the input cannot be written");
        file.close();
        QString error;
        if (!state->list.clearAndCreateDefault(error)) // what one input leaves is not the next one's beginning
            return error;
        const QJsonArray before = state->list.toJson();
        if (!state->files.load(QStringLiteral("fuzz"), 0, state->list, error)) {
            if (input == good)
                return QStringLiteral("a good file is refused: ") + error;
            const bool kept = state->list.toJson() == before;
            return error.isEmpty() ? QStringLiteral("no reason given")
                                   : (kept ? QString() : QStringLiteral("a refused file changed the list"));
        }
        const QJsonArray steps = state->list.toJson();
        if (!state->list.fromJson(steps, error) || state->list.toJson() != steps)
            return QStringLiteral("does not come back: ") + error;
        return QString();
    };
    return {name,
            std::move(seeds),
            {"null", "1e999", "-0", "[", "{", "]", "}", "\"\"", "4294967296", "true", "\\u0000", "\"Hz\"", ","},
            read};
}

/// A table that is taken is written, and read again as the same steps; one that is refused is refused with a reason.
template <typename Config, typename Point, typename Limits>
FuzzTarget csvFile(const QString& name, std::vector<QByteArray> seeds) {
    const auto read = [good = seeds.front()](const QByteArray& input, Mutator&) -> QString {
        std::vector<Point*> points;
        Config list(&points, Limits());
        const auto outcome = [&]() -> QString {
            QString error;
            QJsonArray steps;
            if (!StepCsv::read(input, list.jsonRootName(), steps, error) || !list.fromJson(steps, error))
                return error.isEmpty()  ? QStringLiteral("no reason given")
                       : input == good  ? QStringLiteral("a good table is refused: ") + error
                       : points.empty() ? QString()
                                        : QStringLiteral("a refused table left steps");
            const quint64 before = list.fingerprint();
            QByteArray written;
            if (!StepCsv::write(list.toJson(), list.jsonRootName(), written, error) ||
                !StepCsv::read(written, list.jsonRootName(), steps, error) || !list.fromJson(steps, error))
                return QStringLiteral("does not come back: ") + error;
            return list.fingerprint() == before ? QString() : QStringLiteral("comes back as something else");
        };
        const QString wrong = outcome();
        list.destroyPoints();
        return wrong;
    };
    return {name,
            std::move(seeds),
            {"\"", "\"\"", ",", ";", "\r\n", "\r", "1e999", "-0", ".", "K", "mV", "\xB5s", "\xEF\xBB\xBF",
             QByteArray(1, '\0')},
            read};
}

FuzzTarget manifest() {
    const auto read = [](const QByteArray& input, Mutator&) {
        const auto data = manifestFromJson(input, QStringLiteral("/media/stick"));
        const bool readable = QJsonDocument::fromJson(input).isObject();
        const bool empty = data->name.isEmpty() && data->version.isEmpty() && data->components.empty();
        return readable || empty ? QString() : QStringLiteral("texts out of nothing");
    };
    return {QStringLiteral("manifest"),
            {R"({"manifest_version":"1","name":"FW","version":"2.1","description":"d","package":"p.tar.gz",)"
             R"("components":[{"type":"dir","name":"app","action":"copy","destination":"/home"}]})",
             R"({"name":"FPGA","package":"i.img"})", "[]", "{}"},
            {"null", "[[[[[[[[", "{\"components\":", "\"..\"", "1e400", "\\ud800"},
            read};
}

FuzzTarget imageTrailer() {
    FpgaTrailer trailer;
    trailer.versionMajor = 1;
    trailer.design = FpgaDesign;
    const QByteArray good = withFpgaTrailer(QByteArray(100, 'x'), trailer);
    const auto read = [good](const QByteArray& input, Mutator&) {
        const bool accepted = checkFpgaImage(input).ok;
        const auto found = readFpgaTrailer(input);
        if (accepted && (!found || found->crc != fpgaFileCrc(input) || found->design != FpgaDesign))
            return QStringLiteral("accepted, and should not be");
        return !accepted && input == good ? QStringLiteral("refused, and should not be") : QString();
    };
    return {
        QStringLiteral("trailer"), {good, good.right(FpgaTrailer::Size), good.left(33)}, {"KVS1", FpgaDesign}, read};
}

FuzzTarget boardDatagram() {
    QByteArray good(FpgaWire::HeaderSize, '\0');
    FpgaWire::writeHeader(good.data(), 7, FpgaWire::AllOnes, 512);
    const auto read = [](const QByteArray& input, Mutator&) {
        const bool meant = input.size() >= FpgaWire::HeaderSize && input.startsWith(FpgaWire::Magic);
        const auto reply = FpgaWire::readReply(input.constData(), input.size());
        return reply.has_value() == meant ? QString() : QStringLiteral("taken for what it is not");
    };
    return {
        QStringLiteral("datagram"), {good, good.left(21), good + QByteArray(1024, 'x')}, {"KVPD", "\xFF\xFF"}, read};
}

FuzzTarget recordTexts() {
    const auto read = [](const QByteArray& input, Mutator&) {
        ChannelRecord record;
        std::memset(&record, 0, sizeof record);
        std::memcpy(&record, input.constData(), std::min(sizeof record, static_cast<std::size_t>(input.size())));
        terminateTexts(record);
        for (const auto* text : {&record.model, &record.serial, &record.options, &record.triggerSource,
                                 &record.listName, &record.frswDirection, &record.calibrationDate}) {
            if (std::memchr(*text, 0, sizeof *text) == nullptr)
                return QStringLiteral("a text without an end");
        }
        for (const double value : {record.frequency.value, record.power.value, record.listDwell.maximum}) {
            if (formatFrequency(value, "Hz").size() + formatTime(value, "ns").size() > 1024)
                return QStringLiteral("a number without an end");
        }
        return QString();
    };
    return {QStringLiteral("record"),
            {QByteArray(sizeof(ChannelRecord), '\0'), QByteArray(sizeof(ChannelRecord), '\xFF'), QByteArray(1815, 'A')},
            {"INTernal", QByteArray("\x00\x00\x00\x00\x00\x00\xF8\x7F", 8),
             QByteArray("\x00\x00\x00\x00\x00\x00\xF0\xFF", 8)},
            read};
}

} // namespace

std::vector<FuzzTarget> fuzzTargets() {
    return {replyStream(),
            listFile<FrequencyListConfig, list_point, FrequencyListLimits>(
                QStringLiteral("list"),
                {R"({"VeldaList":[{"Advance":false,"DwellTime":1,"DwellUnits":"ms","FreqUnits":"GHz","Frequency":1.5,)"
                 R"("Last":true,"Power":-10,"PowerUnits":"dBm","StepNumber":1}]})",
                 R"({"VeldaList":[]})", "{}"}),
            listFile<PatternListConfig, pattern_point, PatternListLimits>(
                QStringLiteral("pattern"),
                {R"({"VeldaPattern":[{"Last":true,"Loops":3,"OffTime":1,"OffTimeTimeUnits":"ms","OnTime":2.5,)"
                 R"("OnTimeTimeUnits":"s","StepNumber":1}]})",
                 "[1]"}),
            csvFile<FrequencyListConfig, list_point, FrequencyListLimits>(
                QStringLiteral("csv"),
                {"frequency,power,dwell,advance\r\n2.4 GHz,-10 dBm,500 \u00B5s,Run\r\n\"100\",1e3 mV,0.001,Wait\r\n",
                 "frequency;power;dwell\n433,92 MHz;-1,5;1 ms\n", "power"}),
            csvFile<PatternListConfig, pattern_point, PatternListLimits>(
                QStringLiteral("csvpattern"), {"on,off,repetition\n800 ns,1,2 K\n", "off;on\n1,5 s;2\n"}),
            manifest(),
            imageTrailer(),
            boardDatagram(),
            recordTexts()};
}
