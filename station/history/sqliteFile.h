#ifndef SQLITE_FILE_H
#define SQLITE_FILE_H

#include <QByteArray>
#include <QString>

#include <memory>
#include <stdexcept>

struct sqlite3;
struct sqlite3_stmt;

/// A call of SQLite failed. what() is one sentence.
struct SqliteError : std::runtime_error
{
    SqliteError(int errorCode, const std::string& sentence)
        : std::runtime_error(sentence), code(errorCode)
    {
    }

    /// Whether what the file holds is damaged, or is no database at all.
    bool isBroken() const;

    const int code; ///< SQLite's primary result code
};

/// An open SQLite file. One thread uses it at a time.
class SqliteFile
{
public:
    enum Opening {
        CREATE,  ///< the file is made when it is missing
        READING, ///< the file has to be there; nothing is written
    };

    /// @throws SqliteError
    SqliteFile(const QString& name, Opening opening);

    /// Runs statements that give no rows of interest. @throws SqliteError
    void execute(const char* statements);

    /// The first column of the first row of a statement; 0: it gave no row. @throws SqliteError
    qint64 number(const char* statement);

    /// Moves the log's pages into the file and makes the log empty. @return false: another
    /// connection reads from the log. @throws SqliteError
    bool emptyLog();

    /// Whether the name no longer leads to the open file.
    bool isGone();

    sqlite3* handle() const
    {
        return m_file.get();
    }

private:
    struct Close
    {
        void operator()(sqlite3* file) const;
    };

    std::unique_ptr<sqlite3, Close> m_file;
};

/// A statement. Parameters and columns count from 0. It must end before its file does. A read that
/// is left before its last row holds its transaction until reset().
class SqliteStatement
{
public:
    /// @throws SqliteError
    SqliteStatement(const SqliteFile& file, const char* text);

    SqliteStatement& bind(int parameter, qint64 value);
    SqliteStatement& bindText(int parameter, const QString& text);
    SqliteStatement& bindBlob(int parameter, const QByteArray& bytes);

    /// SQLite has no nan: it is bound as NULL.
    SqliteStatement& bindNumber(int parameter, double value);

    /// Goes to the next row. @return false: there is none, and it is reset. @throws SqliteError
    bool next();

    /// Runs a statement that gives no rows. @throws SqliteError
    void run();

    void reset();

    qint64 integer(int column) const;
    QByteArray blob(int column) const;

    /// NULL is read as nan.
    double number(int column) const;

private:
    struct Finalize
    {
        void operator()(sqlite3_stmt* statement) const;
    };

    void check(int result) const;

    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

/// A transaction. It is rolled back unless it is committed.
class SqliteTransaction
{
public:
    enum Kind { READ, WRITE };

    /// @throws SqliteError
    SqliteTransaction(SqliteFile& file, Kind kind);
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;

    /// @throws SqliteError
    void commit();

private:
    SqliteFile& m_file;
    bool m_isOpen = true;
};

#endif
