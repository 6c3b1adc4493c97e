#include "lists/background_work.h"

BackgroundWork::~BackgroundWork() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ends = true;
    }
    m_changed.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

void BackgroundWork::start(Work work) {
    ++m_open;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_todo.push_back(std::move(work));
    }
    if (!m_thread.joinable())
        m_thread = std::thread([this] { run(); });
    m_changed.notify_one();
}

void BackgroundWork::run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_ends || !m_todo.empty(); });
        if (m_ends)
            return;
        const Work work = std::move(m_todo.front());
        m_todo.pop_front();
        lock.unlock();
        Outcome outcome = work();
        lock.lock();
        m_done.push_back(std::move(outcome));
        QMetaObject::invokeMethod(this, &BackgroundWork::finish, Qt::QueuedConnection);
    }
}

void BackgroundWork::finish() {
    Outcome outcome;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        outcome = std::move(m_done.front());
        m_done.pop_front();
    }
    --m_open;
    outcome();
}
