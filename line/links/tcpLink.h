#ifndef TCP_LINK_H
#define TCP_LINK_H

#include "links/cancellation.h"
#include "links/link.h"

#include <QTcpSocket>

/// Carries RTU frames over a TCP socket, as a serial device server does. Qt makes the connection
/// and needs a QCoreApplication for it. The bytes bypass Qt's buffers, because a wait on the
/// descriptor would miss bytes in a buffer.
///
/// A peer that vanished without closing the connection is noticed within seconds: during traffic by
/// missing acknowledgements, otherwise by keep-alives.
class TcpLink final : public Link
{
public:
    TcpLink(const QString& host, int port);

    /// @param cancellation  ends the name lookup and the connecting at once
    TcpLink(const QString& host, int port, Cancellation& cancellation);

    /// Whether this process has given up a name lookup. The lookup continues in a thread of Qt, and
    /// Qt waits for its end when the program exits. Every thread may call it.
    static bool hasLeftLookupBehind();

    void write(const QByteArray& bytes) override;
    QByteArray read() override;
    int descriptor() const override;

private:
    void connectTo(const QString& host, int port, const Cancellation& cancellation);
    QString reasonFor(const Cancellation& cancellation) const;
    LinkError error(const QString& reason) const;
    LinkError systemError(int number) const;

    const QString m_name;
    QTcpSocket m_socket;
};

#endif
