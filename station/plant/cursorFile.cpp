#include "plant/cursorFile.h"

#include "machine/errorLines.h"
#include "plant/durableFile.h"

#include <QFile>

#include <utility>

CursorFile::CursorFile(QString name) : m_name(std::move(name))
{
    m_thread = std::thread([this] { run(); });
}

CursorFile::~CursorFile()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

std::optional<QByteArray> CursorFile::load() const
{
    QFile file(m_name);
    if (!file.exists()) return std::nullopt;
    if (!file.open(QIODevice::ReadOnly)) return QByteArray();
    return file.readAll();
}

void CursorFile::store(QByteArray content)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_waiting = std::move(content);
    }
    m_changed.notify_all();
}

bool CursorFile::isStoring() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_waiting || m_isWriting;
}

void CursorFile::awaitStored() const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_waiting && !m_isWriting; });
}

void CursorFile::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_waiting || m_isEnding; });
        if (!m_waiting) return;
        const QByteArray content = *std::exchange(m_waiting, std::nullopt);
        m_isWriting = true;
        lock.unlock();
        write(content);
        lock.lock();
        m_isWriting = false;
        m_changed.notify_all();
    }
}

void CursorFile::write(const QByteArray& content)
{
    const QString trouble = writeDurably(m_name, content);
    const bool wasTold = std::exchange(m_isTroubleTold, !trouble.isEmpty());
    if (trouble.isEmpty() || wasTold) return;
    tellOperator(QLatin1String("which rows the broker has cannot be stored in ") + m_name +
                 QLatin1String(": ") + trouble);
}
