#include "common/update/component_plan.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>

namespace {

struct Rule {
    const char* type;
    const char* action;
    const char* verb; ///< null: the name is the command
    bool hasDestination;
    bool stops;
    const char* failure;
};

// Commands that copy or delete are skipped when they fail; a file's "action" is what an installation hangs on.
constexpr Rule Rules[] = {
    {"file", "copy", "sudo cp ", true, false, "failed file copy command"},
    {"file", "delete", "sudo rm ", false, false, "failed file delete command"},
    {"file", "action", nullptr, false, true, "failed action command"},
    {"dir", "copy", "sudo cp -r ", true, false, "failed dir copy command"},
    {"dir", "delete", "sudo rm -rf ", false, false, "failed dir delete command"},
    {"dir", "action", nullptr, false, false, "failed dir action command"},
};

QString wordProblem(const char* what, const QString& text) {
    if (text.isEmpty())
        return QStringLiteral("its %1 is empty").arg(what);
    if (text.startsWith('-'))
        return QStringLiteral("its %1 starts with \"-\"").arg(what);
    if (!isPlainWord(text))
        return QStringLiteral("its %1 holds a character that may not stand in a command").arg(what);
    return {};
}

bool isInside(const QString& path, const QString& folder) {
    return path == folder || path.startsWith(folder + '/');
}

// Every step of the way is looked at: a link half way down leads out as well as one at the end. A link that leads
// nowhere, or round in a circle, counts as leading out.
QString wayProblem(const QString& name, const QString& folder) {
    const QStringList steps = name.split('/', Qt::SkipEmptyParts);
    if (steps.contains(QStringLiteral("..")))
        return QStringLiteral("its name leads out of the package");
    const QString home = QFileInfo(folder).canonicalFilePath();
    QString path = folder;
    for (int i = -1; i < steps.size(); ++i) {
        if (i >= 0)
            path += '/' + steps.at(i);
        const QFileInfo info(path);
        if (!info.isSymLink() && !info.exists())
            break;
        if (info.isSymLink() && (i < 0 || !info.exists() || !isInside(info.canonicalFilePath(), home)))
            return QStringLiteral("its name leads out of the package through a link");
    }
    return {};
}

// To copy a pipe is to wait for ever for somebody who writes into it; a device has no end.
QString contentProblem(const QString& path) {
    const auto isSpecial = [](const QFileInfo& info) {
        return !info.isSymLink() && info.exists() && !info.isFile() && !info.isDir();
    };
    const QFileInfo top(path);
    bool special = isSpecial(QFileInfo(top.canonicalFilePath()));
    if (top.isDir() && !top.isSymLink()) {
        QDirIterator at(path, QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (!special && at.hasNext()) {
            at.next();
            special = isSpecial(at.fileInfo());
        }
    }
    return special ? QStringLiteral("it is or holds a pipe, a socket or a device") : QString();
}

QString refusalOf(const Rule& rule, const MANIFEST_DATA_COMPONENT& component, const QString& scratch) {
    QString problem = wordProblem("name", component.name);
    if (problem.isEmpty() && rule.hasDestination)
        problem = wordProblem("destination", component.destination);
    if (problem.isEmpty())
        problem = wayProblem(component.name, patchFolder(scratch));
    if (problem.isEmpty() && rule.hasDestination)
        problem = contentProblem(patchFolder(scratch) + '/' + component.name);
    return problem;
}

ComponentPlan unknown(const MANIFEST_DATA_COMPONENT& component) {
    ComponentPlan plan;
    const bool isFile = component.type == QLatin1String("file");
    plan.kindKnown = isFile || component.type == QLatin1String("dir");
    plan.stops = isFile;
    plan.failure = plan.kindKnown ? QStringLiteral("unknown %1 action").arg(component.type) : "unknown component type";
    plan.subject = plan.kindKnown ? component.action : component.type;
    return plan;
}

} // namespace

bool isPlainWord(const QString& text) {
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) {
        const char16_t u = c.unicode();
        return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') ||
               QStringLiteral("._-+@%,:=/").contains(c);
    });
}

QString patchFolder(const QString& scratch) {
    return scratch + QStringLiteral("/patch");
}

ComponentPlan planComponent(const MANIFEST_DATA_COMPONENT& component, const QString& scratch) {
    const auto rule = std::find_if(std::begin(Rules), std::end(Rules), [&](const Rule& row) {
        return component.type == QLatin1String(row.type) && component.action == QLatin1String(row.action);
    });
    if (rule == std::end(Rules))
        return unknown(component);
    ComponentPlan plan;
    plan.known = true;
    plan.kindKnown = true;
    plan.isCommand = !rule->verb;
    plan.stops = rule->stops;
    plan.failure = QLatin1String(rule->failure);
    plan.command = component.name;
    if (rule->verb) {
        plan.command = rule->verb + patchFolder(scratch) + '/' + component.name;
        if (rule->hasDestination)
            plan.command += ' ' + component.destination;
        plan.refusal = refusalOf(*rule, component, scratch);
    }
    static const QRegularExpression down(QStringLiteral("\\b(reboot|shutdown|poweroff|halt|kexec)\\b"));
    plan.mayReboot = plan.isCommand && down.match(plan.command).hasMatch();
    plan.reboots = plan.isCommand && plan.stops && plan.command == QLatin1String("sudo reboot");
    plan.subject = plan.command;
    return plan;
}
