#include "tools/console.h"
#include "tools/package_build.h"
#include "tools/package_check.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>

namespace {

int tell(const QStringList& problems) {
    for (const QString& problem : problems)
        Console::refuse(problem);
    return problems.isEmpty() ? Console::Done : Console::Refused;
}

// The order on the command line is the order of the installation, across the kinds of options.
QString takeComponents(const QCommandLineParser& parser, PackageRequest& request) {
    QStringList installs = parser.values("install");
    QStringList runs = parser.values("run");
    for (const QString& option : parser.optionNames()) {
        MANIFEST_DATA_COMPONENT component{"file", {}, "action", {}};
        if (option == "install") {
            const QString text = installs.takeFirst();
            const int at = text.indexOf('=');
            if (at < 1)
                return QStringLiteral("--install takes NAME=DESTINATION");
            component.name = text.left(at);
            component.destination = text.mid(at + 1);
            component.action = "copy";
            if (QFileInfo(request.source + '/' + component.name).isDir())
                component.type = "dir";
        } else if (option == "run") {
            component.name = runs.takeFirst();
        } else if (option == "reboot") {
            component.name = "sudo reboot";
        } else {
            continue;
        }
        request.components << component;
    }
    return {};
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
    const QString problem = takeComponents(parser, request);
    if (!problem.isEmpty())
        return Console::refuse(problem, Console::Usage);
    if (type != PackageType::Software && !request.components.isEmpty())
        return Console::refuse("only a software package has components", Console::Usage);
    return tell(buildPackage(request));
}

int inspect(bool list, const QCommandLineParser& parser, const QStringList& places) {
    if (places.size() != 1 || !parser.optionNames().isEmpty())
        return Console::refuse("name one manifest, or the folder that holds it, and no options", Console::Usage);
    const QString manifest = QFileInfo(places[0]).isDir() ? places[0] + "/Manifest" : places[0];
    const QStringList problems = checkPackage(manifest);
    if (list && QFileInfo(manifest).isFile()) {
        int number = 0;
        for (const QString& step : listPackage(manifest))
            Console::say(QStringLiteral("%1. %2").arg(++number).arg(step));
    }
    return tell(problems);
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
    return std::nullopt;
}

} // namespace

int main(int argc, char** argv) {
    const Console::Tool tool{
        "Builds update packages with their manifest, checks one, and lists what an installation of it would do.\n\n"
        "  update-pack --version 2.1 --install app=/opt/app --run \"sudo ldconfig\" --reboot software FOLDER OUTPUT\n"
        "  update-pack --version 1.4 fpga SIGNED-IMAGE OUTPUT\n"
        "  update-pack --version 5.0 module FILE OUTPUT\n"
        "  update-pack check PACKAGE\n"
        "  update-pack list PACKAGE\n\n"
        "PACKAGE is a manifest or the folder that holds it. Components are installed in the order of their options.\n"
        "Ends with 0 when done, 1 when something is refused, 2 when called the wrong way.",
        "software, fpga, module, check or list",
        "the source and the folder to write, or the package",
        "PLACE...",
        {{"version", "Version that the instrument shows.", "version"},
         {"name", "Name in the manifest; it decides the kind: FW, FPGA or NMX.", "name"},
         {"description", "Description in the manifest.", "text"},
         {"install", "Copies a file or folder of the package to a place of the instrument.", "name=place"},
         {"run", "Runs a command on the instrument; its failure stops the installation.", "command"},
         QCommandLineOption("reboot", "Reboots the instrument.")}};
    return Console::run(argc, argv, tool, carryOut);
}
