#include "common/update/fpga_datagram.h"
#include "common/update/fpga_image.h"
#include "common/update/fpga_trailer.h"
#include "tools/console.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDate>
#include <QRegularExpression>

namespace {

constexpr qint64 LargestFile = FpgaWire::LargestImage + FpgaTrailer::Size;

QString takeVersion(const QString& text, FpgaTrailer& trailer) {
    const auto match = QRegularExpression("^([0-9]{1,3})\\.([0-9]{1,3})$").match(text);
    const int versionMajor = match.captured(1).toInt();
    const int versionMinor = match.captured(2).toInt();
    if (!match.hasMatch() || versionMajor > 255 || versionMinor > 255)
        return QStringLiteral("the version is to be MAJOR.MINOR, each from 0 to 255");
    trailer.versionMajor = static_cast<quint8>(versionMajor);
    trailer.versionMinor = static_cast<quint8>(versionMinor);
    return {};
}

QString takeDate(const QString& text, FpgaTrailer& trailer) {
    const QDate date = text.isEmpty() ? QDate::currentDate() : QDate::fromString(text, Qt::ISODate);
    if (!date.isValid() || date.year() < 1 || date.year() > 0xFFFF)
        return QStringLiteral("the date is to be YYYY-MM-DD");
    trailer.year = static_cast<quint16>(date.year());
    trailer.month = static_cast<quint8>(date.month());
    trailer.day = static_cast<quint8>(date.day());
    return {};
}

QString takeDesign(const QString& text, FpgaTrailer& trailer) {
    if (!QRegularExpression("^[!-~]{1,19}$").match(text).hasMatch())
        return QStringLiteral("the design name is to be 1 to 19 ASCII characters without blanks");
    trailer.design = text.toLatin1();
    return {};
}

QString takeImage(const QString& path, QByteArray& image) {
    const QString problem = Console::readFile(path, FpgaWire::LargestImage, image);
    if (!problem.isEmpty())
        return problem;
    if (image.isEmpty())
        return QStringLiteral("%1 is empty").arg(path);
    if (readFpgaTrailer(image))
        return QStringLiteral("%1 is signed already").arg(path);
    return {};
}

int sign(const QCommandLineParser& parser, const QStringList& files) {
    if (files.size() != 2)
        return Console::refuse("sign takes an image and the file to write", Console::Usage);
    FpgaTrailer trailer;
    QByteArray image;
    for (const QString& problem :
         {takeVersion(parser.value("version"), trailer), takeDate(parser.value("date"), trailer),
          takeDesign(parser.value("design"), trailer), takeImage(files[0], image)}) {
        if (!problem.isEmpty())
            return Console::refuse(problem);
    }
    const QString problem = Console::writeFile(files[1], withFpgaTrailer(image, trailer));
    return problem.isEmpty() ? Console::Done : Console::refuse(problem);
}

int check(const QCommandLineParser& parser, const QStringList& files) {
    if (files.isEmpty() || !parser.optionNames().isEmpty())
        return Console::refuse("check takes signed files and no options", Console::Usage);
    int code = Console::Done;
    for (const QString& path : files) {
        QByteArray file;
        const QString problem = Console::readFile(path, LargestFile, file);
        if (!problem.isEmpty()) {
            code = Console::refuse(problem);
            continue;
        }
        const FpgaImageCheck verdict = checkFpgaImage(file);
        if (!verdict.ok) {
            code = Console::refuse(path + ": " + verdict.line);
            continue;
        }
        const int bytes = file.size() - FpgaTrailer::Size;
        Console::say(QStringLiteral("%1: %2, CRC %3, %4 bytes in %5 blocks")
                         .arg(path, verdict.line, QString::number(fpgaFileCrc(file), 16))
                         .arg(bytes)
                         .arg((bytes + FpgaWire::BlockSize - 1) / FpgaWire::BlockSize));
    }
    return code;
}

} // namespace

int main(int argc, char** argv) {
    const Console::Tool tool{"Adds the trailer to an FPGA image that the instrument asks for, and checks it.\n\n"
                             "  fpga-sign --version 1.4 sign IMAGE SIGNED\n"
                             "  fpga-sign check SIGNED...\n\n"
                             "Ends with 0 when done, 1 when an image is refused, 2 when called the wrong way.",
                             "sign or check",
                             "the image and the file to write, or the files to check",
                             "FILE...",
                             {{"version", "Version of the image, MAJOR.MINOR.", "version"},
                              {"date", "Build date, YYYY-MM-DD; today when left out.", "date"},
                              {"design", "Design name; the instrument takes velda_top alone.", "name", FpgaDesign}}};
    return Console::run(
        argc, argv, tool,
        [](const QCommandLineParser& parser, const QString& command, const QStringList& files) -> std::optional<int> {
            if (command == "sign")
                return sign(parser, files);
            if (command == "check")
                return check(parser, files);
            return std::nullopt;
        });
}
