#pragma once

#include <QObject>

class QLabel;
class QMovie;

namespace Kavor::HandheldGui {

/// The animation in front of the panel while it starts: a picture in the middle of the whole screen that ends after one
/// pass, whether the animation stops or loops. Deletes itself at the end. GUI thread.
class Splash : public QObject {
    Q_OBJECT

public:
    /// movie: a resource or file name. A movie that cannot be read ends the splash as soon as it starts.
    explicit Splash(const QString& movie, QObject* parent = nullptr);

    /// Plays the animation and covers the screen.
    void start();

signals:
    /// Once, when the animation has been played.
    void ended();

private:
    void onFrame(int frame);
    void end();

    QMovie* m_movie;
    QLabel* m_label;
    int m_previousFrame = -1;
    bool m_done = false;
};

} // namespace Kavor::HandheldGui
