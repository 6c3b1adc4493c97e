#include "portable/widgets/ToastOverlay.h"
#include "portable/widgets/styles/tokens.h"
#include "rig/panelfixture.h"
#include "rig/tourguide.h"

#include <QDir>
#include <QMovie>
#include <QPainter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace Kavor::HandheldGui;

void aboutStops(TourGuide& g) {
    const QTemporaryDir media;
    qputenv("VELDA_MEDIA", QFile::encodeName(media.path()));
    qputenv("VELDA_USER", "velda");
    QDir(media.path()).mkpath("velda/STICK");
    g.start();
    g.press("funcAbout");
    g.press("aboutLicences");
    g.shot("about-licences");
    g.press("licencesBack");
    auto* save = g.panel().widget<QPushButton>("aboutDiagnostics");
    const auto shots = [&](const QString& during, const QString& after) {
        g.press("aboutDiagnostics");
        if (!during.isEmpty())
            g.shot(during);
        if (!QTest::qWaitFor([save] { return save->isEnabled(); }, 20000))
            qFatal("The diagnostics do not end.");
        g.shot(after);
        g.panel().window().toast()->hideImmediate();
    };
    shots("about-saving", "about-saved");
    QDir(media.filePath("velda")).removeRecursively();
    shots(QString(), "about-not-saved");
    qunsetenv("VELDA_MEDIA");
    qunsetenv("VELDA_USER");
}

void splashStop(TourGuide& g) {
    QMovie movie(":/logo.gif");
    for (int frame = 0; frame < 18; ++frame) // a GIF is read forwards
        movie.jumpToNextFrame();
    QPixmap screen(g.panel().window().size());
    screen.fill(QColor(Style::Ground));
    const QPixmap frame = movie.currentPixmap();
    QPainter(&screen).drawPixmap(screen.rect().center() - frame.rect().center(), frame);
    g.visit({"splash", nullptr, QPoint(), screen, QRect()});
}
