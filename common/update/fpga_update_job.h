#pragma once

#include "common/update/fpga_board_state.h"

#include <QObject>
#include <QVector>
#include <memory>
#include <mutex>

class QThread;

struct FpgaUpdateSettings {
    QVector<QHostAddress> boards; ///< one per channel
    quint16 port = 7502;
    int ackTimeoutMs = 5000;    ///< for one acknowledgement of all boards
    int ackPollMs = 10;         ///< step of that wait
    int burnPollMs = 200;       ///< step of the wait for a status
    int burnSilenceMs = 180000; ///< longest silence of all boards while they burn
    int burnTotalMs = 3600000;  ///< longest burn

    /// The defaults with the first `channels` of the instrument's board addresses.
    static FpgaUpdateSettings forChannels(int channels);
};

/// One FPGA update from its file to its outcome, on a thread of its own: reads and checks the image, sends it, waits
/// for the boards. Lives on the GUI thread, which it never blocks; all signals come on the thread it lives on.
class FpgaUpdateJob : public QObject {
    Q_OBJECT

public:
    explicit FpgaUpdateJob(const FpgaUpdateSettings& settings, QObject* parent = nullptr);

    /// A job that still runs is broken off within one poll interval or the read of its file, and emits nothing more.
    ~FpgaUpdateJob() override;

    /// Starts; once per job.
    void start(const QString& imagePath);

signals:
    /// The image was read and accepted; now it is sent.
    void imageAccepted();

    /// As FpgaUpdater::ProgressCallback, only when it changes.
    void progress(int phase, int percent);

    /// How the boards stand, a few times a second.
    void boards(const FpgaBoardStates& states);

    /// Exactly once, when the thread has ended: the sentence is what the user is to read, the end the same in a few
    /// words.
    void ended(bool ok, const QString& message, const QString& end);

private:
    struct Outcome {
        bool ok = false;
        QString message;
        QString end;
    };

    Outcome work(const QString& imagePath);
    void onThreadFinished();
    void reportProgress(int phase, int percent);

    FpgaUpdateSettings m_settings;
    std::unique_ptr<QThread> m_thread;
    std::mutex m_mutex; ///< guards m_outcome
    Outcome m_outcome;
    int m_lastPhase = -1; ///< these two belong to the worker while it runs
    int m_lastPercent = -1;
};
