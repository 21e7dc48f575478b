#ifndef TCP_LINK_H
#define TCP_LINK_H

#include "links/cancellation.h"
#include "links/link.h"

#include <QTcpSocket>

/// RTU frames over a socket, as a serial device server passes them on. Connected by Qt, which needs
/// a QCoreApplication for it; the bytes go past its buffers, where a wait on the descriptor would
/// miss them. A peer that is gone without a word is noticed within seconds: by its
/// missing acknowledgements while there is traffic, by keep-alives otherwise.
class TcpLink final : public Link
{
public:
    TcpLink(const QString& host, int port);

    /// @param cancellation  ends the lookup of the name and the connecting at once
    TcpLink(const QString& host, int port, Cancellation& cancellation);

    /// A lookup of this program's was given up. It goes on by itself, and Qt waits for its end when
    /// the program exits. From any thread.
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
