#include "history/sqliteFile.h"

#include <sqlite3.h>

#include <cmath>
#include <limits>

namespace {

enum { PRIMARY_CODE = 0xFF, LONGEST_WAIT_MS = 500 };

[[noreturn]] void fail(sqlite3* file, int result)
{
    const int code = result & PRIMARY_CODE;
    throw SqliteError(code, file ? sqlite3_errmsg(file) : sqlite3_errstr(code));
}

} // namespace

bool SqliteError::isBroken() const
{
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
}

void SqliteFile::Close::operator()(sqlite3* file) const
{
    sqlite3_close_v2(file);
}

/// SQLite gives a handle also for a file that it cannot open: only the handle has the reason.
SqliteFile::SqliteFile(const QString& name, Opening opening)
{
    const int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (opening == CREATE ? SQLITE_OPEN_CREATE : 0);
    sqlite3* file = nullptr;
    const int result = sqlite3_open_v2(name.toUtf8().constData(), &file, flags, nullptr);
    m_file.reset(file);
    if (result != SQLITE_OK) fail(file, result);
    sqlite3_busy_timeout(file, LONGEST_WAIT_MS);
    if (opening == READING) execute("PRAGMA query_only = 1");
}

void SqliteFile::execute(const char* statements)
{
    const int result = sqlite3_exec(handle(), statements, nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) fail(handle(), result);
}

qint64 SqliteFile::number(const char* statement)
{
    SqliteStatement query(*this, statement);
    return query.next() ? query.integer(0) : 0;
}

bool SqliteFile::emptyLog()
{
    const int result =
        sqlite3_wal_checkpoint_v2(handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
    if (result == SQLITE_BUSY) return false;
    if (result != SQLITE_OK) fail(handle(), result);
    return true;
}

bool SqliteFile::isGone()
{
    int hasMoved = 0;
    sqlite3_file_control(handle(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    return hasMoved != 0;
}

void SqliteStatement::Finalize::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

SqliteStatement::SqliteStatement(const SqliteFile& file, const char* text)
{
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(file.handle(), text, -1, &statement, nullptr);
    m_statement.reset(statement);
    if (result != SQLITE_OK) fail(file.handle(), result);
}

void SqliteStatement::check(int result) const
{
    if (result != SQLITE_OK) fail(sqlite3_db_handle(m_statement.get()), result);
}

SqliteStatement& SqliteStatement::bind(int parameter, qint64 value)
{
    check(sqlite3_bind_int64(m_statement.get(), parameter + 1, value));
    return *this;
}

SqliteStatement& SqliteStatement::bindText(int parameter, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    check(sqlite3_bind_text(m_statement.get(), parameter + 1, bytes.constData(), int(bytes.size()),
                            SQLITE_TRANSIENT));
    return *this;
}

SqliteStatement& SqliteStatement::bindBlob(int parameter, const QByteArray& bytes)
{
    check(sqlite3_bind_blob(m_statement.get(), parameter + 1, bytes.constData(), int(bytes.size()),
                            SQLITE_TRANSIENT));
    return *this;
}

SqliteStatement& SqliteStatement::bindNumber(int parameter, double value)
{
    check(std::isnan(value) ? sqlite3_bind_null(m_statement.get(), parameter + 1)
                            : sqlite3_bind_double(m_statement.get(), parameter + 1, value));
    return *this;
}

bool SqliteStatement::next()
{
    const int result = sqlite3_step(m_statement.get());
    if (result == SQLITE_ROW) return true;
    if (result == SQLITE_DONE) {
        reset();
        return false;
    }
    const std::string why = sqlite3_errmsg(sqlite3_db_handle(m_statement.get()));
    reset();
    throw SqliteError(result & PRIMARY_CODE, why);
}

void SqliteStatement::run()
{
    while (next())
        ;
}

void SqliteStatement::reset()
{
    sqlite3_reset(m_statement.get());
}

qint64 SqliteStatement::integer(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

QByteArray SqliteStatement::blob(int column) const
{
    const auto* const bytes =
        static_cast<const char*>(sqlite3_column_blob(m_statement.get(), column));
    return QByteArray(bytes, sqlite3_column_bytes(m_statement.get(), column));
}

double SqliteStatement::number(int column) const
{
    if (sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL)
        return std::numeric_limits<double>::quiet_NaN();
    return sqlite3_column_double(m_statement.get(), column);
}

SqliteTransaction::SqliteTransaction(SqliteFile& file, Kind kind) : m_file(file)
{
    file.execute(kind == WRITE ? "BEGIN IMMEDIATE" : "BEGIN");
}

/// SQLite may have rolled it back itself, for example when the disk is full.
SqliteTransaction::~SqliteTransaction()
{
    if (m_isOpen && !sqlite3_get_autocommit(m_file.handle()))
        sqlite3_exec(m_file.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void SqliteTransaction::commit()
{
    m_file.execute("COMMIT");
    m_isOpen = false;
}
