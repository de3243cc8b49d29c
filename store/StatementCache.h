#pragma once

#include <map>
#include <memory>
#include <string>

#include "store/Statement.h"

struct sqlite3;

// Prepared statements kept for reuse while one piece of work runs many
// small statements (applying thousands of operations): preparing costs
// more than running one. get() hands the statement back reset, with no
// bindings; every statement is finalized when the cache goes, which must
// be before the work's transaction ends.
class StatementCache {
public:
    explicit StatementCache(sqlite3* db) : db_(db) {}
    StatementCache(const StatementCache&) = delete;
    StatementCache& operator=(const StatementCache&) = delete;

    sqlite3* db() const { return db_; }
    // The statement for sql, or nullptr when it cannot be prepared.
    Statement* get(const std::string& sql);

private:
    sqlite3* db_;
    std::map<std::string, std::unique_ptr<Statement>> statements_;
};
