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
    return problems.isEmpty() ? Console::kDone : Console::kRefused;
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
        return Console::refuse("a package is built of a source into a folder", Console::kUsage);
    PackageRequest request;
    request.type = type;
    request.name = parser.value("name");
    request.version = parser.value("version");
    request.description = parser.value("description");
    request.source = places[0];
    request.output = places[1];
    const QString problem = takeComponents(parser, request);
    if (!problem.isEmpty())
        return Console::refuse(problem, Console::kUsage);
    if (type != PackageType::Software && !request.components.isEmpty())
        return Console::refuse("only a software package has components", Console::kUsage);
    return tell(buildPackage(request));
}

int inspect(bool list, const QStringList& places) {
    if (places.size() != 1)
        return Console::refuse("name one manifest, or the folder that holds it", Console::kUsage);
    const QString manifest = QFileInfo(places[0]).isDir() ? places[0] + "/Manifest" : places[0];
    const QStringList problems = checkPackage(manifest);
    if (list && QFileInfo(manifest).isFile()) {
        int number = 0;
        for (const QString& step : listPackage(manifest))
            Console::say(QStringLiteral("%1. %2").arg(++number).arg(step));
    }
    return tell(problems);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Builds update packages with their manifest, checks one, and lists what an installation of it would do.\n\n"
        "  update-pack --version 2.1 --install app=/opt/app --run \"sudo ldconfig\" --reboot software FOLDER OUTPUT\n"
        "  update-pack --version 1.4 fpga SIGNED-IMAGE OUTPUT\n"
        "  update-pack --version 5.0 module FILE OUTPUT\n"
        "  update-pack check PACKAGE\n"
        "  update-pack list PACKAGE\n\n"
        "PACKAGE is a manifest or the folder that holds it. Components are installed in the order of their options.\n"
        "Ends with 0 when done, 1 when something is refused, 2 when called the wrong way.");
    parser.addPositionalArgument("command", "software, fpga, module, check or list");
    parser.addPositionalArgument("places", "the source and the folder to write, or the package", "PLACE...");
    parser.addOption({"version", "Version that the instrument shows.", "version"});
    parser.addOption({"name", "Name in the manifest; it decides the kind: FW, FPGA or NMX.", "name"});
    parser.addOption({"description", "Description in the manifest.", "text"});
    parser.addOption({"install", "Copies a file or folder of the package to a place of the instrument.", "name=place"});
    parser.addOption({"run", "Runs a command on the instrument; its failure stops the installation.", "command"});
    parser.addOption({"reboot", "Reboots the instrument."});
    int code = Console::kDone;
    if (!Console::parse(parser, code))
        return code;
    const QStringList arguments = parser.positionalArguments();
    constexpr struct {
        const char* command;
        PackageType type;
    } kBuilds[] = {{"software", PackageType::Software}, {"fpga", PackageType::Fpga}, {"module", PackageType::Module}};
    for (const auto& row : kBuilds) {
        if (arguments.value(0) == row.command)
            return build(row.type, parser, arguments.mid(1));
    }
    if (arguments.value(0) == "check" || arguments.value(0) == "list")
        return inspect(arguments.value(0) == "list", arguments.mid(1));
    return Console::refuse("say software, fpga, module, check or list, or --help", Console::kUsage);
}
