#include "store/StatementCache.h"

Statement* StatementCache::get(const std::string& sql)
{
    auto found = statements_.find(sql);
    if (found != statements_.end()) {
        found->second->reset();
        return found->second.get();
    }
    auto statement = std::make_unique<Statement>();
    if (!statement->prepare(db_, sql)) return nullptr;
    return statements_.emplace(sql, std::move(statement)).first->second.get();
}
