#pragma once

#include "store/MessageSink.h"

struct sqlite3;

// Runs one SQL statement that returns no rows (BEGIN, COMMIT, ...) on its own
// statement handle; true when it completed.
bool runControlStatement(sqlite3* db, const char* sql);

// A write transaction for one store operation: BEGIN in the constructor,
// commit() makes it durable, and the destructor rolls back whatever was not
// committed, so every early return leaves the database as it was. Messages
// raised while it exists are delivered after it has closed (committed or
// rolled back), never while it holds the book's write lock.
class Transaction {
public:
    explicit Transaction(sqlite3* db);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // False when BEGIN failed; the caller reports it with the connection's error.
    bool began() const { return open_; }

    // COMMIT; on failure the transaction is rolled back and false returned.
    bool commit();

private:
    MessageHold hold_;  // destroyed after the destructor's ROLLBACK
    sqlite3* db_;
    bool open_;
};
