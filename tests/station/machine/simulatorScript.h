#ifndef SIMULATOR_SCRIPT_H
#define SIMULATOR_SCRIPT_H

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/types.h>

#include <cstdio>
#include <vector>

/// A script in place of the simulated PLC. It notes each of its starts, and can be changed.
class SimulatorScript
{
public:
    /// One start of the script.
    struct Start
    {
        pid_t process = 0;
        qint64 time = 0; ///< ms since the machine started, in steps of 10
    };

    SimulatorScript() : m_program(m_folder.filePath(QLatin1String("plc")))
    {
        becomePlc();
    }

    const QString& program() const
    {
        return m_program;
    }

    /// What the program does from now on.
    void write(const char* commands)
    {
        const QString next = m_program + QLatin1String(".next");
        QFile file(next);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("#!/bin/sh\nread now rest </proc/uptime\n"
                              "echo $$ $now >> \"$0.started\"\n") +
                   commands + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        file.close();
        ASSERT_EQ(0, std::rename(qPrintable(next), qPrintable(m_program)));
    }

    void becomePlc()
    {
        write("exec " KAKB_SIMULATOR_FILE " \"$@\"");
    }

    std::vector<Start> starts() const
    {
        QFile file(m_program + QLatin1String(".started"));
        std::vector<Start> all;
        if (!file.open(QIODevice::ReadOnly)) return all;
        for (QByteArray line = file.readLine(); line.endsWith('\n'); line = file.readLine()) {
            const QByteArrayList words = line.trimmed().split(' ');
            all.push_back({words.first().toInt(), qRound64(words.last().toDouble() * 1000)});
        }
        return all;
    }

    /// The process ids of all that were started.
    std::vector<pid_t> started() const
    {
        std::vector<pid_t> all;
        for (const Start& start : starts())
            all.push_back(start.process);
        return all;
    }

private:
    const QTemporaryDir m_folder;
    const QString m_program;
};

#endif
