#include "lists/list_content.h"

#include "lists/step_csv.h"
#include "platform/durable_file.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace {

constexpr int ValuesInStep = 20; // with room for members that are not ours

// Block by block, of a length that the compiler knows: it then counts in vectors, in a tenth of the time.
int commasIn(const QByteArray& content) {
    constexpr int Block = 128;
    int commas = 0, at = 0;
    for (; at + Block <= content.size(); at += Block) {
        const char* const block = content.constData() + at;
        unsigned char inBlock = 0;
        for (int i = 0; i < Block; ++i)
            inBlock = static_cast<unsigned char>(inBlock + (block[i] == ',' ? 1 : 0));
        commas += inBlock;
    }
    return commas + static_cast<int>(std::count(content.begin() + at, content.end(), ','));
}

bool fail(QString& error, const char* sentence) {
    error = QLatin1String(sentence);
    return false;
}

} // namespace

bool ListContent::refuseSize(QString& error) {
    error = QStringLiteral("List file is too large: the limit is %1 steps or %2 MB")
                .arg(MostSteps)
                .arg(MostBytes / 1000000);
    return false;
}

bool ListContent::isCsv(const QString& name) {
    return name.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive);
}

bool ListContent::parse(const QByteArray& content, const QString& name, const QString& root, QJsonArray& steps,
                        QString& error) {
    if (isCsv(name))
        return StepCsv::read(content, root, steps, error);
    if (commasIn(content) > MostSteps * ValuesInStep)
        return refuseSize(error);
    const QJsonDocument document = QJsonDocument::fromJson(content);
    if (document.isNull() || document.isEmpty())
        return fail(error, "Invalid list JSON file");
    const QJsonValue value = document.object().value(root);
    if (!value.isArray())
        return fail(error, "List JSON root is missing");
    if (value.toArray().size() > MostSteps)
        return refuseSize(error);
    steps = value.toArray();
    return true;
}

bool ListContent::compose(const QJsonArray& steps, const QString& name, const QString& root, QByteArray& content,
                          QString& error) {
    if (isCsv(name))
        return StepCsv::write(steps, root, content, error);
    content = QJsonDocument(QJsonObject{{root, steps}}).toJson();
    return true;
}

bool ListContent::readFile(const QString& path, const QString& root, QJsonArray& steps, QString& error) {
    QFile file(path);
    // What is no plain file, a pipe for one, could keep the panel waiting for ever.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return fail(error, "Failed to open list file");
    if (file.size() > MostBytes)
        return refuseSize(error);
    const QByteArray content = file.read(MostBytes);
    if (file.error() != QFileDevice::NoError)
        return fail(error, "Failed to open list file");
    return parse(content, path, root, steps, error);
}

bool ListContent::writeFile(const QString& path, const QJsonArray& steps, const QString& root, QString& error) {
    QByteArray content;
    if (!compose(steps, path, root, content, error))
        return false;
    DurableFile::sweep(QFileInfo(path).path());
    switch (DurableFile::replace(path, content)) {
    case DurableFile::Result::CannotOpen:
        return fail(error, "Failed to open list file for writing");
    case DurableFile::Result::CannotWrite:
        return fail(error, "Failed to write list file");
    case DurableFile::Result::Ok:
        break;
    }
    return true;
}
