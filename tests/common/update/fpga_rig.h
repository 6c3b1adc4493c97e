#pragma once

#include "common/update/fwUpdater.h"
#include "sim/fpga_board.h"

#include <QEventLoop>
#include <QThread>
#include <memory>
#include <vector>

/// A board that has burnt its image before anybody waits for it.
inline Sim::FpgaBoardSettings quickBoard() {
    Sim::FpgaBoardSettings settings;
    settings.burnMs = 60;
    settings.statusMs = 5;
    settings.port = 0;
    return settings;
}

/// Simulated boards on addresses of this machine and one port, served by the event loop of the test's thread.
struct FpgaRig {
    std::vector<std::unique_ptr<Sim::FpgaBoard>> boards;
    QVector<QHostAddress> addresses;
    quint16 port = 0;

    bool start(int count, Sim::FpgaBoardSettings settings = quickBoard(),
               const QStringList& places = {"127.0.0.2", "127.0.0.3", "127.0.0.4", "127.0.0.5"}) {
        for (int i = 0; i < count; ++i) {
            settings.address = QHostAddress(places.at(i));
            boards.push_back(std::make_unique<Sim::FpgaBoard>(settings));
            QString error;
            if (!boards.back()->listen(error))
                return false;
            addresses << settings.address;
            port = settings.port = boards.front()->port();
        }
        return true;
    }
};

/// Runs a blocking function on a thread of its own while this thread serves its event loop.
template <typename Function>
void onWorker(Function function) {
    std::unique_ptr<QThread> thread(QThread::create(function));
    QEventLoop loop;
    QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec();
    thread->wait();
}

/// Bytes that repeat in no block.
inline QByteArray testImage(int size) {
    QByteArray image(size, Qt::Uninitialized);
    quint32 state = 12345;
    for (char& byte : image) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return image;
}

inline void setImage(FpgaUpdater& updater, const QByteArray& image) {
    updater.setImage(reinterpret_cast<const unsigned char*>(image.constData()), static_cast<quint32>(image.size()));
}
