#include "common/update/fpga_update_job.h"

#include "common/update/fpga_image.h"
#include "common/update/fwUpdater.h"
#include "common/update/update_texts.h"
#include "platform/devicepaths.h"

#include <QThread>
#include <utility>

FpgaUpdateSettings FpgaUpdateSettings::forChannels(int channels) {
    FpgaUpdateSettings settings;
    const QStringList addresses = DevicePaths::fpgaAddresses().mid(0, std::max(channels, 0));
    for (const QString& address : addresses)
        settings.boards << QHostAddress(address);
    return settings;
}

FpgaUpdateJob::FpgaUpdateJob(const FpgaUpdateSettings& settings, QObject* parent)
    : QObject(parent), m_settings(settings) {
    qRegisterMetaType<FpgaBoardStates>();
}

FpgaUpdateJob::~FpgaUpdateJob() {
    if (!m_thread)
        return;
    m_thread->disconnect(this);
    m_thread->requestInterruption();
    m_thread->wait();
}

void FpgaUpdateJob::start(const QString& imagePath) {
    Q_ASSERT(!m_thread);
    m_thread.reset(QThread::create([this, imagePath] {
        Outcome outcome = work(imagePath);
        std::lock_guard<std::mutex> lock(m_mutex);
        m_outcome = std::move(outcome);
    }));
    m_thread->setObjectName("fpga update");
    connect(m_thread.get(), &QThread::finished, this, &FpgaUpdateJob::onThreadFinished);
    m_thread->start();
}

FpgaUpdateJob::Outcome FpgaUpdateJob::work(const QString& imagePath) {
    QByteArray image;
    QString error;
    if (!loadFpgaImage(imagePath, image, error))
        return {false, error, QStringLiteral("the image was refused")};
    emit imageAccepted();
    FpgaUpdater updater;
    updater.setImage(reinterpret_cast<const unsigned char*>(image.constData()), static_cast<quint32>(image.size()));
    updater.setTargets(m_settings.boards.constData(), m_settings.boards.size(), m_settings.port);
    updater.setProgressCallback(
        [](int, int phase, int percent, void* context) {
            static_cast<FpgaUpdateJob*>(context)->reportProgress(phase, percent);
        },
        this);
    updater.setBoardCallback([this](const FpgaBoardStates& states) { emit boards(states); });
    const bool ok = updater.runBlocking(m_settings.ackTimeoutMs, m_settings.ackPollMs, m_settings.burnPollMs,
                                        m_settings.burnSilenceMs, m_settings.burnTotalMs);
    if (ok)
        return {true, UpdateTexts::fpgaDone(), UpdateTexts::fpgaDoneBriefly(m_settings.boards.size())};
    const QStringList silent = updater.silentBoards();
    return {false, UpdateTexts::fpgaFailed(silent, updater.step()), UpdateTexts::noAnswer(silent)};
}

// An image has up to 65534 blocks; the screen needs a hundred of these reports.
void FpgaUpdateJob::reportProgress(int phase, int percent) {
    if (phase == m_lastPhase && percent == m_lastPercent)
        return;
    m_lastPhase = phase;
    m_lastPercent = percent;
    emit progress(phase, percent);
}

void FpgaUpdateJob::onThreadFinished() {
    m_thread->wait();
    Outcome outcome;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        outcome = m_outcome;
    }
    emit ended(outcome.ok, outcome.message, outcome.end);
}
