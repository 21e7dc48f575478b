#ifndef CONFIG_MISTAKES_H
#define CONFIG_MISTAKES_H

#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

/// The mistakes of a configuration: all of them, for one report.
class ConfigMistakes
{
public:
    /// @param fileName  as the user gave it
    explicit ConfigMistakes(QString fileName) : m_fileName(std::move(fileName)) {}

    /// @param line  of the configuration file, from 1
    void add(int line, const QString& sentence);

    /// Mistakes of another file, such as a tag file: lines that name it. The same lines again are
    /// left out.
    void addLines(const QString& lines);

    bool isEmpty() const
    {
        return m_own.empty() && m_others.isEmpty();
    }

    /// One line for each mistake, "FILE: line 3: sentence": first the configuration's by line.
    QString text() const;

private:
    const QString m_fileName;
    std::vector<std::pair<int, QString>> m_own;
    QStringList m_others;
};

#endif
