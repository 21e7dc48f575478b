#include "history/historySchema.h"

namespace {

enum { APPLICATION = 0x6B616B62, VERSION = 1 };

// Pages that were given up are used again; the file gets smaller only when the cap was made smaller
// (incremental).
const char SETTINGS[] = "PRAGMA auto_vacuum = INCREMENTAL;"
                        "PRAGMA journal_mode = WAL;"
                        "PRAGMA synchronous = NORMAL;"
                        "PRAGMA wal_autocheckpoint = 0;"
                        "PRAGMA temp_store = MEMORY;";

// rows of spans: level 0 is one pack. whole: no row of it was dropped.
const char TABLES[] =
    "CREATE TABLE series (id INTEGER PRIMARY KEY, link TEXT NOT NULL, tag TEXT NOT NULL,"
    " era INTEGER NOT NULL, UNIQUE (link, tag, era));"
    "CREATE TABLE runs (id INTEGER PRIMARY KEY, era INTEGER NOT NULL, begin INTEGER NOT NULL,"
    " end INTEGER NOT NULL, sequence INTEGER NOT NULL);"
    "CREATE TABLE fresh (sequence INTEGER PRIMARY KEY, series INTEGER NOT NULL,"
    " time INTEGER NOT NULL, state INTEGER NOT NULL, value REAL);"
    "CREATE TABLE packs (id INTEGER PRIMARY KEY, series INTEGER NOT NULL, number INTEGER NOT NULL,"
    " rows INTEGER NOT NULL, data BLOB NOT NULL);"
    "CREATE TABLE spans (series INTEGER NOT NULL, level INTEGER NOT NULL, number INTEGER NOT NULL,"
    " whole INTEGER NOT NULL, pack INTEGER NOT NULL, rows INTEGER NOT NULL,"
    " begin INTEGER NOT NULL, end INTEGER NOT NULL, good INTEGER NOT NULL,"
    " ends_good INTEGER NOT NULL, minimum REAL, maximum REAL, last REAL,"
    " PRIMARY KEY (series, level, number)) WITHOUT ROWID;";

QByteArray pragma(const char* name, int value)
{
    return QByteArray("PRAGMA ") + name + " = " + QByteArray::number(value);
}

/// A new file says whose it is and has all tables in one commit: a kill leaves it empty or whole.
void makeTables(SqliteFile& file)
{
    SqliteTransaction transaction(file, SqliteTransaction::WRITE);
    file.execute(TABLES);
    file.execute(pragma("application_id", APPLICATION).constData());
    file.execute(pragma("user_version", VERSION).constData());
    transaction.commit();
}

bool isEmpty(SqliteFile& file)
{
    return file.number("SELECT count(*) FROM sqlite_master") == 0 &&
           file.number("PRAGMA application_id") == 0 && file.number("PRAGMA user_version") == 0;
}

/// Only reads: a file of somebody else stays as it is.
void checkOwner(SqliteFile& file)
{
    if (file.number("PRAGMA application_id") != APPLICATION)
        throw HistoryTrouble("the history's file is the database of another program");
    if (file.number("PRAGMA user_version") > VERSION)
        throw HistoryTrouble("the history's file was written by a newer kakb-station");
}

} // namespace

std::unique_ptr<SqliteFile> openHistoryFile(const QString& name)
{
    auto file = std::make_unique<SqliteFile>(name, SqliteFile::CREATE);
    const bool isNew = isEmpty(*file);
    if (!isNew) checkOwner(*file);
    file->execute(SETTINGS);
    if (isNew) makeTables(*file);
    return file;
}

std::unique_ptr<SqliteFile> openHistoryForReading(const QString& name)
{
    auto file = std::make_unique<SqliteFile>(name, SqliteFile::READING);
    if (!isEmpty(*file)) checkOwner(*file);
    return file;
}
