#pragma once

#include "sim/fpga_board.h"

#include <QThread>
#include <condition_variable>
#include <mutex>

namespace Sim {

struct FpgaBoardsOptions {
    static constexpr int MostBoards = 4;

    QVector<QHostAddress> addresses; ///< one per board
    FpgaBoardSettings board;         ///< of each, but for its address
    int lossPercent = 0;             ///< of the datagrams of each direction, on every board
    int silentBoard = 0;             ///< number, from 1, of a board that falls silent; 0: none
    int silentFrom = 0;              ///< the block from which on it answers nothing; 0: from the start of a transfer
};

/// The FPGA boards of a module, on a thread of their own. Says on standard output what each holds when it has burnt an
/// image. Created and destroyed on one thread, which needs no event loop.
class FpgaBoards : private QThread {
public:
    FpgaBoards() = default;
    ~FpgaBoards() override; ///< ends the thread, and with it the sockets

    /// False, with a sentence, when an address cannot be had. Once.
    [[nodiscard]] bool start(const FpgaBoardsOptions& options, QString& error);

protected:
    void run() override;

private:
    static void tell(const FpgaBoard& board, const QHostAddress& address);

    std::mutex m_mutex; ///< what is below goes from thread to thread under it
    std::condition_variable m_changed;
    FpgaBoardsOptions m_options;
    QString m_error;
    bool m_opened = false;
};

} // namespace Sim
