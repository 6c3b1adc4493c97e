#pragma once

#include "sim/fpga_board.h"

#include <QThread>

#include <memory>
#include <vector>

namespace Sim {

struct FpgaBoardsOptions {
    static constexpr int kMostBoards = 4;

    QVector<QHostAddress> addresses; ///< one per board
    FpgaBoardSettings board;         ///< of each, but for its address
    int lossPercent = 0;             ///< of the datagrams of each direction, on every board
    int silentBoard = 0;             ///< number, from 1, of a board that answers nothing; 0: none
};

/// The FPGA boards of a module, on a thread of their own. Says on standard output what each holds when it has burnt an
/// image. Created and destroyed on one thread, which needs no event loop.
class FpgaBoards {
public:
    FpgaBoards();
    ~FpgaBoards(); ///< ends the thread and closes the sockets

    /// False, with a sentence, when an address cannot be had. Once.
    [[nodiscard]] bool start(const FpgaBoardsOptions& options, QString& error);

private:
    static void tell(const FpgaBoard& board, const QHostAddress& address);

    QThread m_thread;
    std::unique_ptr<QObject> m_home; ///< lives on the thread, which carries out what is sent to it
    std::vector<std::unique_ptr<FpgaBoard>> m_boards;
};

} // namespace Sim
