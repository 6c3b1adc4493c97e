#include "sim/fpga_boards.h"

#include <cstdio>
#include <memory>
#include <vector>

namespace Sim {

FpgaBoards::~FpgaBoards() {
    quit();
    wait();
}

bool FpgaBoards::start(const FpgaBoardsOptions& options, QString& error) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_options = options;
    }
    setObjectName(QStringLiteral("fpga boards"));
    QThread::start();
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_opened; });
    error = m_error;
    return error.isEmpty();
}

// The boards live and die on the thread that made their sockets.
void FpgaBoards::run() {
    std::vector<std::unique_ptr<FpgaBoard>> boards;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const QHostAddress& address : m_options.addresses) {
            FpgaBoardSettings settings = m_options.board;
            settings.address = address;
            boards.push_back(std::make_unique<FpgaBoard>(settings));
            FpgaBoard& board = *boards.back();
            const int number = static_cast<int>(boards.size());
            FpgaFaults faults;
            faults.lossPercent = m_options.lossPercent;
            faults.seed = static_cast<quint32>(number);
            if (number == m_options.silentBoard)
                faults.silentFrom = m_options.silentFrom;
            board.setFaults(faults);
            QObject::connect(&board, &FpgaBoard::burnt, &board, [&board, address] { tell(board, address); });
            QString refusal;
            if (!board.listen(refusal) && m_error.isEmpty())
                m_error = refusal;
        }
        m_opened = true;
    }
    m_changed.notify_all();
    exec();
}

void FpgaBoards::tell(const FpgaBoard& board, const QHostAddress& address) {
    std::printf("veldasim: board %s has burnt %d bytes, SHA-256 %s\n", qPrintable(address.toString()),
                board.image().size(), board.sha256().constData());
    std::fflush(stdout);
}

} // namespace Sim
