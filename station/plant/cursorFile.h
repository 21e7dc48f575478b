#ifndef CURSOR_FILE_H
#define CURSOR_FILE_H

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

/// A small file that is stored as a whole, again and again, by a thread of its own: its owner never
/// waits for the disk.
///
///     owner    store(a)   store(b) store(c)      ~CursorFile()
///     thread   | writes a ........ | writes c |  ends
///
/// Invariants:
/// - The file holds one of the contents as a whole. A younger content is never followed by an older
///   one.
/// - One content is written at a time, and one waits: the youngest.
/// - Behind the destructor nothing waits.
///
/// Trouble is told once on standard error, until a content was stored again.
/// One thread owns it.
class CursorFile
{
public:
    explicit CursorFile(QString name);
    ~CursorFile();

    const QString& name() const
    {
        return m_name;
    }

    /// What was stored before; null: there is no file. Empty: it cannot be read.
    std::optional<QByteArray> load() const;

    void store(QByteArray content);

    /// Whether a content is not on the disk yet, and may still come there.
    bool isStoring() const;
    void awaitStored() const;

private:
    void run();
    void write(const QByteArray& content);

    const QString m_name;
    bool m_isTroubleTold = false; ///< of the thread

    mutable std::mutex m_mutex; ///< guards what follows
    mutable std::condition_variable m_changed;
    std::optional<QByteArray> m_waiting;
    bool m_isWriting = false;
    bool m_isEnding = false;

    std::thread m_thread; ///< of the owner
};

#endif
