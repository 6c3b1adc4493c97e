#include "sim/fpga_boards.h"

#include <cstdio>

namespace Sim {

FpgaBoards::FpgaBoards() : m_home(std::make_unique<QObject>()) {
    m_home->moveToThread(&m_thread);
    m_thread.setObjectName(QStringLiteral("fpga boards"));
    m_thread.start();
}

FpgaBoards::~FpgaBoards() {
    // Sockets are closed on the thread that made them.
    QMetaObject::invokeMethod(
        m_home.get(), [this] { m_boards.clear(); }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

bool FpgaBoards::start(const FpgaBoardsOptions& options, QString& error) {
    bool ok = true;
    const auto listen = [&] {
        for (const QHostAddress& address : options.addresses) {
            FpgaBoardSettings settings = options.board;
            settings.address = address;
            m_boards.push_back(std::make_unique<FpgaBoard>(settings));
            FpgaBoard& board = *m_boards.back();
            const int number = static_cast<int>(m_boards.size());
            FpgaFaults faults;
            faults.lossPercent = options.lossPercent;
            faults.seed = static_cast<quint32>(number);
            if (number == options.silentBoard)
                faults.ignoredInits = FpgaFaults::kAlways;
            board.setFaults(faults);
            QObject::connect(&board, &FpgaBoard::burnt, &board, [&board, address] { tell(board, address); });
            ok = ok && board.listen(error);
        }
    };
    QMetaObject::invokeMethod(m_home.get(), listen, Qt::BlockingQueuedConnection);
    return ok;
}

void FpgaBoards::tell(const FpgaBoard& board, const QHostAddress& address) {
    std::printf("veldasim: board %s has burnt %d bytes, SHA-256 %s\n", qPrintable(address.toString()),
                board.image().size(), board.sha256().constData());
    std::fflush(stdout);
}

} // namespace Sim
