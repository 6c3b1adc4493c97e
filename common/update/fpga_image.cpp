#include "common/update/fpga_image.h"

#include "common/update/fpga_datagram.h"
#include "common/update/fpga_trailer.h"
#include "common/update/update_texts.h"
#include "platform/crc32utils.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QThread>
#include <algorithm>

Q_LOGGING_CATEGORY(lcFpgaImage, "velda.fpga.image")

namespace {

// The name comes from a file: nothing of it may break a log line.
QString printable(const QByteArray& name) {
    QString text = QString::fromLatin1(name);
    std::replace_if(
        text.begin(), text.end(), [](QChar c) { return c < ' ' || c > '~'; }, QChar('?'));
    return text;
}

// Of a file that is too large to be kept: read piece by piece. What it is comes first, then that it cannot be sent.
bool isSigned(QFile& file) {
    constexpr qint64 Piece = qint64{1024} * 1024;
    const Crc32Utils* utils = Crc32Utils::getInstance();
    if (!utils || !file.seek(file.size() - FpgaTrailer::Size))
        return false;
    const std::optional<FpgaTrailer> trailer = readFpgaTrailer(file.read(FpgaTrailer::Size));
    if (!trailer || trailer->design != FpgaDesign || !file.seek(0))
        return false;
    quint32 crc = utils->crc32_init();
    for (qint64 left = file.size() - FpgaTrailer::CrcSize; left > 0;) {
        const QByteArray bytes = file.read(std::min(Piece, left));
        if (bytes.isEmpty() || QThread::currentThread()->isInterruptionRequested())
            return false;
        crc = utils->calculate_crc32(crc, bytes.constData(), bytes.size());
        left -= bytes.size();
    }
    return utils->crc32_signoff(crc) == trailer->crc;
}

} // namespace

FpgaImageCheck checkFpgaImage(const QByteArray& image) {
    if (image.size() < FpgaTrailer::Size)
        return {false, QStringLiteral("FPGA image too small for signature")};
    const std::optional<FpgaTrailer> trailer = readFpgaTrailer(image);
    if (!trailer)
        return {false, QStringLiteral("FPGA image is not signed")};
    if (!Crc32Utils::getInstance())
        return {false, QStringLiteral("CRC32 utils not available")};
    const quint32 crc = fpgaFileCrc(image);
    if (crc != trailer->crc) {
        return {false, QStringLiteral("Image CRC failure: %1 vs %2")
                           .arg(QString::number(crc, 16), QString::number(trailer->crc, 16))};
    }
    if (trailer->design != FpgaDesign)
        return {false, QStringLiteral("Wrong project: %1").arg(printable(trailer->design))};
    return {true, QStringLiteral("Loading %1 FPGA %2 . %3 Date: %4 - %5 - %6")
                      .arg(FpgaDesign)
                      .arg(trailer->versionMajor)
                      .arg(trailer->versionMinor)
                      .arg(trailer->day)
                      .arg(trailer->month)
                      .arg(trailer->year)};
}

bool authenticateFpgaImage(const QByteArray& image) {
    const FpgaImageCheck check = checkFpgaImage(image);
    qCDebug(lcFpgaImage).noquote() << check.line;
    return check.ok;
}

QByteArray removeSignature(const QByteArray& image) {
    return image.left(image.size() - FpgaTrailer::Size);
}

bool loadFpgaImage(const QString& path, QByteArray& image, QString& error) {
    error = UpdateTexts::cannotOpenImage(path);
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    if (file.size() > FpgaWire::LargestImage + FpgaTrailer::Size) {
        error = UpdateTexts::imageRefused();
        if (isSigned(file)) {
            qCWarning(lcFpgaImage).noquote()
                << "[FPGA] Image of" << file.size() << "bytes has more blocks than can be sent.";
            error = UpdateTexts::fpgaFailed();
        }
        return false;
    }
    const qint64 size = file.size();
    const QByteArray bytes = file.read(size + 1);
    if (file.error() != QFileDevice::NoError || bytes.size() != size) {
        qCWarning(lcFpgaImage).noquote() << "[FPGA] Image cannot be read to its end:" << file.errorString();
        return false;
    }
    if (!authenticateFpgaImage(bytes)) {
        error = UpdateTexts::imageRefused();
        return false;
    }
    image = removeSignature(bytes);
    error.clear();
    return true;
}
