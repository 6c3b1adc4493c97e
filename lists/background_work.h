#pragma once

#include <QObject>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/// Does one piece of work after the other on a thread of its own, for what may block. Created, asked and destroyed on
/// one thread, which runs an event loop; the destructor waits for the piece under way and drops the others.
class BackgroundWork : public QObject {
    Q_OBJECT

public:
    /// What follows from a piece of work; done on the owner's thread.
    using Outcome = std::function<void()>;
    using Work = std::function<Outcome()>;

    explicit BackgroundWork(QObject* parent) : QObject(parent) {}
    ~BackgroundWork() override;

    void start(Work work);

    /// Something was started whose outcome is not done yet.
    bool isBusy() const { return m_open > 0; }

private:
    void run();
    void finish();

    int m_open = 0;
    std::thread m_thread; ///< from the first piece on
    std::mutex m_mutex;   ///< of what follows
    std::condition_variable m_changed;
    std::deque<Work> m_todo;
    std::deque<Outcome> m_done;
    bool m_ends = false;
};
