#include "history/historySchema.h"

#include "history/rowPack.h"

#include <QRandomGenerator>

#include <sqlite3.h>

#include <limits>

namespace {

enum { APPLICATION = 0x6B616B62, VERSION = 2 };

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

const char TABLES_OF_VERSION_2[] = "CREATE TABLE packings (first INTEGER PRIMARY KEY);"
                                   "CREATE TABLE identity (id INTEGER PRIMARY KEY);";

QByteArray pragma(const char* name, int value)
{
    return QByteArray("PRAGMA ") + name + " = " + QByteArray::number(value);
}

void addTablesOfVersion2(SqliteFile& file)
{
    file.execute(TABLES_OF_VERSION_2);
    const quint64 random = QRandomGenerator::system()->generate64();
    const qint64 identity = qint64(random & quint64(std::numeric_limits<qint64>::max()));
    SqliteStatement insert(file, "INSERT INTO identity (id) VALUES (?)");
    insert.bind(0, std::max<qint64>(identity, 1)).run();
}

/// The packs of one packing follow each other, and the next one begins behind the last row of them
/// all.
void findPackings(SqliteFile& file)
{
    SqliteStatement packs(file, "SELECT id, data FROM packs ORDER BY id");
    SqliteStatement insert(file, "INSERT INTO packings (first) VALUES (?)");
    qint64 last = 0;
    while (packs.next()) {
        const auto rows = unpackedRows(packs.blob(1));
        if (!rows || rows->empty()) throw SqliteError(SQLITE_CORRUPT, "a pack of rows is damaged");
        if (packs.integer(0) > last) insert.bind(0, packs.integer(0)).run();
        last = std::max(last, rows->back().sequence);
    }
}

/// In one commit: a kill leaves the file as it was, or whole.
void bringUpToDate(SqliteFile& file)
{
    SqliteTransaction transaction(file, SqliteTransaction::WRITE);
    addTablesOfVersion2(file);
    findPackings(file);
    file.execute(pragma("user_version", VERSION).constData());
    transaction.commit();
}

/// A new file says whose it is and has all tables in one commit: a kill leaves it empty or whole.
void makeTables(SqliteFile& file)
{
    SqliteTransaction transaction(file, SqliteTransaction::WRITE);
    file.execute(TABLES);
    addTablesOfVersion2(file);
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
    if (file->number("PRAGMA user_version") < VERSION) bringUpToDate(*file);
    return file;
}

std::unique_ptr<SqliteFile> openHistoryForReading(const QString& name)
{
    auto file = std::make_unique<SqliteFile>(name, SqliteFile::READING);
    if (!isEmpty(*file)) checkOwner(*file);
    return file;
}
