#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QThread>
#include <vector>

class EventHandler;
class QWidget;

namespace Kavor::HandheldGui {

/// What goes into an archive beside the log files. Nothing in it says who uses the instrument: of the environment only
/// what configures the panel, no network names, no accounts.
struct DiagnosticsContent {
    struct Member {
        QString name;
        QByteArray bytes;
    };

    QString name; ///< of the archive, without its ending
    std::vector<Member> members;
    QImage screen;
    QString logFolder;
    QString account; ///< left out of texts and logs wherever a path holds it
};

/// Collects versions, environment, the record of each channel, the names of the stored configurations, the last
/// commands and a picture of the window. GUI thread, a few milliseconds.
DiagnosticsContent collectDiagnostics(EventHandler& handler, QWidget& window);

/// Writes one archive to the first stick that takes it, on a thread of its own. Created, started and destroyed on
/// the GUI thread; the destructor waits for the end.
class DiagnosticsJob : public QThread {
    Q_OBJECT

public:
    /// media: the folder in which each stick is a folder.
    DiagnosticsJob(DiagnosticsContent content, const QString& media, QObject* parent);
    ~DiagnosticsJob() override;

signals:
    /// Once: the archive's name, or an empty one and why there is none.
    void done(const QString& archive, const QString& problem);

protected:
    void run() override;

private:
    QString write(const QString& stick) const;

    const DiagnosticsContent m_content;
    const QString m_media;
};

} // namespace Kavor::HandheldGui
