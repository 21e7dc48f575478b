#ifndef TABLE_OUTPUT_H
#define TABLE_OUTPUT_H

#include "output/keyInput.h"
#include "output/tableView.h"
#include "output/watchScreen.h"
#include "program/tableTerminal.h"
#include "verbs/healthCheck.h"
#include "verbs/watchOutput.h"
#include "verbs/writeVerb.h"

#include <map>

/// The table of a watch on a terminal, with its keys when standard input is a terminal, too. At the
/// end the last table stays on the user's screen, with the figures below it.
class TableOutput : public WatchOutput
{
public:
    /// @param tags    borrowed
    /// @param health  borrowed; learns of the writes
    TableOutput(const std::vector<Tag>& tags, const DriverLibrary& driver, HealthCheck& health);

    News wait(HostProgram& host, int ms) override;
    void show(const News& news, HostProgram& host) override;
    bool isOver() const override
    {
        return m_view.isOver();
    }
    void end(const LinkFigures& figures) override;

private:
    /// A write that has not ended. Meanwhile the driver shows the written value; the table keeps
    /// the value that was read.
    struct Pending
    {
        Assignment assigned;
        std::map<int, TagState> read; ///< states of the tags that share the written memory
    };

    QString valueProblem(int tag, const QString& value) const;
    std::vector<TagState> states(const HostProgram& host) const;
    std::vector<WatchRow> rows(const HostProgram& host, qint64 now) const;
    void noteChanges(const News& news);
    void endWrites(const News& news, qint64 now);
    void startWrite(HostProgram& host, const TableView::Write& write);
    void draw(HostProgram& host);
    void printLastTable(int figuresLength) const;

    const std::vector<Tag>& m_tags;
    const DriverLibrary& m_driver;
    HealthCheck& m_health;
    std::vector<QString> m_writeProblems; ///< by tag
    std::vector<qint64> m_changes;        ///< by tag: number of changes when last noted
    std::vector<qint64> m_changedAt;      ///< by tag
    TableTerminal m_terminal;
    TableView m_view;
    KeyReader m_keys;
    std::map<int, Pending> m_writes; ///< by job
    qint64 m_nextFrame = 0;
    bool m_isPressed = false; ///< a key was pressed since the last frame
    bool m_isDrawn = false;   ///< the table was shown once
};

#endif
