#include "store/Changeset.h"

#include <sqlite3.h>

#include <cstring>

ChangesetReader::ChangesetReader(std::string changeset) : bytes_(std::move(changeset))
{
    rc_ = sqlite3changeset_start(&iter_, static_cast<int>(bytes_.size()), bytes_.data());
}

ChangesetReader::~ChangesetReader()
{
    if (iter_) sqlite3changeset_finalize(iter_);
}

bool ChangesetReader::next()
{
    if (rc_ != SQLITE_OK && rc_ != SQLITE_ROW) return false;
    rc_ = sqlite3changeset_next(iter_);
    if (rc_ != SQLITE_ROW) return false;
    int op = 0;
    int indirect = 0;
    if (sqlite3changeset_op(iter_, &table_, &columns_, &op, &indirect) != SQLITE_OK) {
        rc_ = SQLITE_CORRUPT;
        return false;
    }
    op_ = op == SQLITE_INSERT ? RowOp::Insert : op == SQLITE_DELETE ? RowOp::Delete : RowOp::Update;
    return true;
}

bool ChangesetReader::ok() const
{
    return rc_ == SQLITE_OK || rc_ == SQLITE_ROW || rc_ == SQLITE_DONE;
}

bool ChangesetReader::isTable(const char* name) const
{
    return std::strcmp(table_, name) == 0;
}

sqlite3_value* ChangesetReader::before(int column) const
{
    sqlite3_value* value = nullptr;
    if (op_ == RowOp::Insert || column >= columns_) return nullptr;
    if (sqlite3changeset_old(iter_, column, &value) != SQLITE_OK) return nullptr;
    return value;
}

sqlite3_value* ChangesetReader::after(int column) const
{
    sqlite3_value* value = nullptr;
    if (op_ == RowOp::Delete || column >= columns_) return nullptr;
    if (sqlite3changeset_new(iter_, column, &value) != SQLITE_OK) return nullptr;
    return value;
}

sqlite3_value* ChangesetReader::latest(int column) const
{
    sqlite3_value* value = after(column);
    return value ? value : before(column);
}

int64_t ChangesetReader::intOf(sqlite3_value* value)
{
    return value ? sqlite3_value_int64(value) : 0;
}

std::string ChangesetReader::textOf(sqlite3_value* value)
{
    const auto* text = value ? reinterpret_cast<const char*>(sqlite3_value_text(value)) : nullptr;
    return text ? std::string(text, static_cast<size_t>(sqlite3_value_bytes(value))) : std::string();
}

bool ChangesetReader::isNull(sqlite3_value* value)
{
    return !value || sqlite3_value_type(value) == SQLITE_NULL;
}

bool invertChangeset(const std::string& changeset, std::string* inverted)
{
    int size = 0;
    void* bytes = nullptr;
    if (sqlite3changeset_invert(static_cast<int>(changeset.size()), changeset.data(), &size, &bytes) != SQLITE_OK)
        return false;
    inverted->assign(static_cast<const char*>(bytes), static_cast<size_t>(size));
    sqlite3_free(bytes);
    return true;
}
