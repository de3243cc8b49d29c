#pragma once

#include <string>

struct sqlite3;
struct sqlite3_session;

// A session of SQLite's session extension that records, while it lives,
// every change to the tables its filter accepts; the changeset is the net
// effect of those changes. started() is false when the session could not be
// made (nothing is recorded then).
class SessionRecording {
public:
    using TableFilter = int (*)(void*, const char* table);
    SessionRecording(sqlite3* db, TableFilter filter);
    ~SessionRecording();
    SessionRecording(const SessionRecording&) = delete;
    SessionRecording& operator=(const SessionRecording&) = delete;

    bool started() const { return session_ != nullptr; }
    bool isEmpty() const;
    // The changeset so far; false, with SQLite's reason in *error, when it
    // cannot be read.
    bool changeset(std::string* bytes, std::string* error = nullptr) const;

    // A filter: the book's three tables only.
    static int onlyBookTables(void*, const char* table);

private:
    sqlite3_session* session_ = nullptr;
};
