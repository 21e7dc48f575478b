#ifndef TCP_LINK_H
#define TCP_LINK_H

#include "links/link.h"

#include <QTcpSocket>

/// RTU frames over a socket, as a serial device server passes them on. A peer that is gone without
/// a word is noticed within seconds: by its missing acknowledgements while there is traffic, by
/// keep-alives otherwise.
class TcpLink final : public Link
{
public:
    TcpLink(const QString& host, int port);

    void write(const QByteArray& bytes) override;
    QByteArray read() override;
    int descriptor() const override;

private:
    LinkError error() const;
    void noticeDeadPeers();

    QTcpSocket m_socket;
    QString m_name;
};

#endif
