#ifndef CONTROLLED_PLC_H
#define CONTROLLED_PLC_H

#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// A simulated PLC on a free TCP port, whose memory and faults the test commands.
class ControlledPlc
{
public:
    explicit ControlledPlc(const QStringList& arguments = {})
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QString::fromUtf8(KAKB_SIMULATOR_FILE),
                        QStringList(arguments) << QLatin1String("--tcp") << QLatin1String("0")
                                               << QLatin1String("--control") << controlPath());
        while (!m_process.canReadLine() && m_process.waitForReadyRead(PROCESS_MS)) {
        }
        m_link = QString::fromUtf8(m_process.readLine()).trimmed();
        m_control.connectToServer(controlPath());
        EXPECT_TRUE(m_control.waitForConnected(PROCESS_MS));
    }
    ~ControlledPlc()
    {
        end();
    }

    /// "tcp:127.0.0.1,PORT"
    const QString& link() const
    {
        return m_link;
    }

    /// The answer to a command of the simulator's control socket: "ok", or "ok VALUE".
    std::string command(const char* line)
    {
        m_control.write(QByteArray(line) + '\n');
        while (!m_control.canReadLine() && m_control.waitForReadyRead(PROCESS_MS)) {
        }
        return m_control.readLine().trimmed().toStdString();
    }

    void end()
    {
        m_process.kill();
        m_process.waitForFinished(PROCESS_MS);
    }

private:
    enum { PROCESS_MS = 10000 };

    QString controlPath() const
    {
        return m_folder.filePath(QLatin1String("control"));
    }

    const QTemporaryDir m_folder;
    QProcess m_process;
    QString m_link;
    QLocalSocket m_control;
};

#endif
