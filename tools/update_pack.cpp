#include "common/update/package_trust.h"
#include "tools/console.h"
#include "tools/package_build.h"
#include "tools/package_check.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QMap>

namespace {

int tell(const QStringList& problems) {
    for (const QString& problem : problems)
        Console::refuse(Console::visible(problem));
    return problems.isEmpty() ? Console::Done : Console::Refused;
}

// A copy depends on what is there: the folder that it goes into is made first, and a folder is copied as what it holds.
// Then the first and the second installation leave the same tree, whatever the other components make.
QString takeInstall(const QString& text, PackageRequest& request) {
    const int at = text.indexOf('=');
    if (at < 1 || at + 1 == text.size())
        return QStringLiteral("--install takes NAME=DESTINATION");
    MANIFEST_DATA_COMPONENT component{"file", text.left(at), "copy", text.mid(at + 1)};
    const QFileInfo source(request.source + '/' + component.name);
    if (component.destination.endsWith('/'))
        component.destination += QFileInfo(source.absoluteFilePath()).fileName();
    QString folder = QFileInfo(component.destination).path();
    if (source.isDir()) {
        folder = component.destination;
        component.type = "dir";
        component.name += "/.";
    }
    request.components << MANIFEST_DATA_COMPONENT{"file", "sudo mkdir -p " + folder, "action", {}} << component;
    return {};
}

// The order on the command line is the order of the installation, across the kinds of options.
QString takeComponents(const QCommandLineParser& parser, PackageRequest& request) {
    QMap<QString, QStringList> values;
    for (const QString& option : parser.optionNames()) {
        QStringList& left = values[option];
        if (left.isEmpty())
            left = parser.values(option);
        const QString value = left.isEmpty() ? QString() : left.takeFirst();
        QString problem;
        if (option == "install")
            problem = takeInstall(value, request);
        else if (option == "delete")
            request.components << MANIFEST_DATA_COMPONENT{
                QFileInfo(request.source + '/' + value).isDir() ? "dir" : "file", value, "delete", {}};
        else if (option == "run" || option == "try")
            request.components << MANIFEST_DATA_COMPONENT{option == "run" ? "file" : "dir", value, "action", {}};
        else if (option == "reboot")
            request.components << MANIFEST_DATA_COMPONENT{"file", "sudo reboot", "action", {}};
        if (!problem.isEmpty())
            return problem;
    }
    return {};
}

/// Why not, or nothing.
QString takeSigning(const QCommandLineParser& parser, Signing& signing) {
    signing.model = parser.value("model");
    if (parser.isSet("release")) {
        bool isNumber = false;
        signing.release = parser.value("release").toInt(&isNumber);
        if (!isNumber || signing.release < 1 || signing.release > HighestRelease)
            return QStringLiteral("--release takes a number from 1 to %1").arg(HighestRelease);
    }
    return parser.isSet("key") ? readKey(parser.value("key"), signing.seed) : QString();
}

int build(PackageType type, const QCommandLineParser& parser, const QStringList& places) {
    if (places.size() != 2)
        return Console::refuse("a package is built of a source into a folder", Console::Usage);
    PackageRequest request;
    request.type = type;
    request.name = parser.value("name");
    request.version = parser.value("version");
    request.description = parser.value("description");
    request.source = places[0];
    request.output = places[1];
    QString problem = takeComponents(parser, request);
    if (problem.isEmpty())
        problem = takeSigning(parser, request.signing);
    if (!problem.isEmpty())
        return Console::refuse(Console::visible(problem), Console::Usage);
    if (type != PackageType::Software && !request.components.isEmpty())
        return Console::refuse("only a software package has components", Console::Usage);
    return tell(buildPackage(request));
}

QString manifestOf(const QString& place) {
    return QFileInfo(place).isDir() ? place + "/Manifest" : place;
}

int inspect(bool list, const QCommandLineParser& parser, const QStringList& places) {
    const QStringList options = parser.optionNames();
    if (places.size() != 1 || (!options.isEmpty() && options != QStringList("public")))
        return Console::refuse("name one manifest, or the folder that holds it, and no option but --public",
                               Console::Usage);
    QByteArray key;
    const QString unread = parser.isSet("public") ? readKey(parser.value("public"), key) : QString();
    if (!unread.isEmpty())
        return Console::refuse(Console::visible(unread));
    const QString manifest = manifestOf(places[0]);
    const QStringList problems = checkPackage(manifest, key);
    if (QFileInfo(manifest).isFile()) {
        int number = 0;
        for (const QString& line : describePackage(manifest))
            Console::say(Console::visible(line));
        for (const QString& step : list ? listPackage(manifest) : QStringList())
            Console::say(QStringLiteral("%1. %2").arg(++number).arg(Console::visible(step)));
    }
    return tell(problems);
}

int sign(const QCommandLineParser& parser, const QStringList& places) {
    Signing signing;
    if (places.size() != 1 || !parser.isSet("key"))
        return Console::refuse("sign takes a package and --key", Console::Usage);
    const QString problem = takeSigning(parser, signing);
    if (!problem.isEmpty())
        return Console::refuse(Console::visible(problem), Console::Usage);
    const QString manifest = manifestOf(places[0]);
    QStringList problems = checkPackage(manifest);
    if (problems.isEmpty())
        problems = QStringList(signPackage(manifest, signing));
    problems.removeAll(QString());
    return tell(problems);
}

int generate(const QCommandLineParser& parser, const QStringList& places) {
    if (places.size() != 1 || !parser.optionNames().isEmpty())
        return Console::refuse("keygen takes the file of the secret key", Console::Usage);
    const QString problem = writeKeyPair(places[0]);
    return problem.isEmpty() ? Console::Done : Console::refuse(Console::visible(problem));
}

std::optional<int> carryOut(const QCommandLineParser& parser, const QString& command, const QStringList& places) {
    constexpr struct {
        const char* command;
        PackageType type;
    } Builds[] = {{"software", PackageType::Software}, {"fpga", PackageType::Fpga}, {"module", PackageType::Module}};
    for (const auto& row : Builds) {
        if (command == row.command)
            return build(row.type, parser, places);
    }
    if (command == "check" || command == "list")
        return inspect(command == "list", parser, places);
    if (command == "sign")
        return sign(parser, places);
    if (command == "keygen")
        return generate(parser, places);
    return std::nullopt;
}

} // namespace

int main(int argc, char** argv) {
    const Console::Tool tool{
        "Builds update packages with their manifest, checks one, and lists what an installation of it would do.\n\n"
        "  update-pack --version 2.1 --install app=/opt/app --run \"sudo ldconfig\" --reboot software FOLDER OUTPUT\n"
        "  update-pack --version 1.4 fpga SIGNED-IMAGE OUTPUT\n"
        "  update-pack --version 5.0 module FILE OUTPUT\n"
        "  update-pack keygen SECRET-KEY\n"
        "  update-pack --key SECRET-KEY --release 7 --model KV-6000 sign PACKAGE\n"
        "  update-pack --public PUBLIC-KEY check PACKAGE\n"
        "  update-pack list PACKAGE\n\n"
        "PACKAGE is a manifest or the folder that holds it. A build with --key signs at once. Components are installed "
        "in the order of their options.\n"
        "Ends with 0 when done, 1 when something is refused, 2 when called the wrong way.",
        "software, fpga, module, keygen, sign, check or list",
        "the source and the folder to write, the package, or the key to write",
        "PLACE...",
        {{"version", "Version that the instrument shows.", "version"},
         {"name", "Name in the manifest; it decides the kind: FW, FPGA or NMX.", "name"},
         {"description", "Description in the manifest.", "text"},
         {"install",
          "Copies a file or folder of the package so that it is that place of the instrument; a place that ends in / "
          "is the "
          "folder to put it into. Folders on the way are made.",
          "name=place"},
         {"delete", "Deletes a file or folder of the unpacked package.", "name"},
         {"run", "Runs a command on the instrument; its failure stops the installation.", "command"},
         {"try", "Runs a command on the instrument; its failure is written to the log.", "command"},
         QCommandLineOption("reboot", "Reboots the instrument."),
         {"key", "Secret key to sign with; keygen makes one, and its public half beside it.", "file"},
         {"release", "Release counter of a signed package; no panel that requires signatures goes back.", "number"},
         {"model", "Model of the instrument that a signed package is for.", "model"},
         {"public", "Public key that check demands the signature of.", "file"}}};
    return Console::run(argc, argv, tool, carryOut);
}
