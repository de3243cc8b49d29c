#include "store/SessionRecording.h"

#include <sqlite3.h>

#include "store/BookTables.h"

SessionRecording::SessionRecording(sqlite3* db, TableFilter filter)
{
    if (sqlite3session_create(db, "main", &session_) != SQLITE_OK) {
        session_ = nullptr;
        return;
    }
    sqlite3session_table_filter(session_, filter, nullptr);
    if (sqlite3session_attach(session_, nullptr) != SQLITE_OK) {
        sqlite3session_delete(session_);
        session_ = nullptr;
    }
}

SessionRecording::~SessionRecording()
{
    if (session_) sqlite3session_delete(session_);
}

bool SessionRecording::isEmpty() const
{
    return sqlite3session_isempty(session_) != 0;
}

bool SessionRecording::changeset(std::string* bytes, std::string* error) const
{
    int size = 0;
    void* data = nullptr;
    const int rc = sqlite3session_changeset(session_, &size, &data);
    if (rc == SQLITE_OK) bytes->assign(static_cast<const char*>(data), static_cast<size_t>(size));
    else if (error) *error = sqlite3_errstr(rc);
    sqlite3_free(data);
    return rc == SQLITE_OK;
}

int SessionRecording::onlyBookTables(void*, const char* table)
{
    return bookTable(table) != nullptr;
}
