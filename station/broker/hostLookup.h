#ifndef HOST_LOOKUP_H
#define HOST_LOOKUP_H

#include "http/wakeup.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

/// The IP addresses of a host. The system's lookup waits for servers of names, so it runs in a
/// thread of its own. One that is given up goes on, and nobody reads what it finds.
class HostLookup
{
public:
    /// What was found, in the order in which it should be tried.
    struct Found
    {
        QStringList addresses;
        QString problem; ///< in words, when there is no address
    };

    /// Finds the addresses of a name; it may wait.
    using Resolve = std::function<Found(const QByteArray& name)>;

    /// By the system's own way.
    static Found bySystem(const QByteArray& name);

    /// Begins. An IP address is found at once.
    /// @throws HttpError, std::system_error when the system has no descriptor or thread left
    HostLookup(const QString& host, const Resolve& resolve);

    /// Empty: not yet.
    std::optional<Found> found() const;

    /// Has something to read once found() tells.
    int descriptor() const;

private:
    /// What the two threads share. It lives as long as the last of them.
    struct Answer
    {
        std::mutex mutex;
        std::optional<Found> found; ///< guarded by mutex
        Wakeup wakeup;              ///< guards itself
    };

    const std::shared_ptr<Answer> m_answer;
};

#endif
