#include "rig/paneltour.h"

#include <QApplication>
#include <QDir>
#include <QSaveFile>
#include <QTextStream>
#include <cstdio>

namespace {

bool writeIndex(const QDir& folder, const QStringList& names) {
    QSaveFile index(folder.filePath(QStringLiteral("index.html")));
    if (!index.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    QTextStream out(&index);
    out << "<!doctype html><meta charset=\"utf-8\"><title>Panel pictures</title>\n"
           "<style>body{background:#222;color:#ddd;font-family:sans-serif}img{width:640px;margin:4px}"
           "figure{display:inline-block;margin:8px}</style>\n";
    for (const QString& name : names)
        out << "<figure><img src=\"" << name << ".png\"><figcaption>" << name << "</figcaption></figure>\n";
    out.flush();
    return index.commit();
}

} // namespace

/// Writes one picture of everything that the panel shows into a folder, with an index.html.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    if (application.arguments().size() != 2) {
        std::fprintf(stderr, "usage: panel_gallery DIR\n");
        return 2;
    }
    const QDir folder(application.arguments().at(1));
    if (!folder.mkpath(QStringLiteral(".")))
        qFatal("%s cannot be made.", qPrintable(folder.path()));
    QStringList names;
    PanelTour tour([&](const PanelTour::Stop& stop) {
        if (!stop.picture.save(folder.filePath(stop.name + QStringLiteral(".png"))))
            qFatal("%s.png cannot be written.", qPrintable(stop.name));
        names << stop.name;
    });
    tour.run();
    if (!writeIndex(folder, names))
        qFatal("index.html cannot be written.");
    std::printf("%d pictures\n", tour.count());
    return 0;
}
