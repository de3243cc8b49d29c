#pragma once

#include <cstdint>
#include <string>

#include "store/OpKey.h"
#include "store/Uuid.h"

// The layout version of the recorded tables as operations carry them.
// Raise it whenever a recorded table gains, loses or changes a column: SQLite
// silently skips changes to a table whose columns do not match, so a PC
// must never apply a changeset written for another layout.
constexpr int kSyncSchemaVersion = 1;

// Who wrote an operation, where it sorts, and what it says it did.
struct OpMeta {
    Uuid book;                              // the book the operation belongs to
    int schemaVersion = kSyncSchemaVersion;
    int device = 0;                         // the writer's device number, 1..15
    Uuid install;                           // the writer's installation
    int64_t seq = 0;                        // 1, 2, 3 ... per installation
    int64_t ts = 0;                         // hybrid logical timestamp (HybridClock.h)
    std::string label;                      // the step's label, as its history shows it

    OpKey key() const { return {ts, device, seq}; }
};

// One recorded operation: who and when, and the session extension's
// changeset of the rows it changed.
struct Op {
    OpMeta meta;
    std::string changeset;
};

// Why an operation file cannot be used. A file that is refused is never
// applied, nor anything of its writer after it.
enum class OpFileProblem {
    None,
    Unreadable,    // the file could not be read
    NotAnOpFile,   // no operation file's signature
    NewerFormat,   // written by a later version in a layout this one cannot read
    Truncated,     // shorter than its header says
    Damaged,       // the checksum does not match, or bytes after the end
    OtherSchema,   // written for another layout of the tables
    OtherBook,     // belongs to another book
    Misplaced,     // its header names another writer or sequence than its file name
};

// The file's bytes: a fixed header (signature, format, schema version, book
// id, device number, installation id, sequence, timestamp, checksum), the
// label and the changeset, each with its length. The checksum is the CRC-32
// of the whole file with the checksum's own four bytes taken as zero.
std::string encodeOpFile(const Op& op);

// Reads bytes back into *op. Checks, in this order: signature, format,
// length (truncation), checksum, schema version, book. On a problem *op is
// unspecified, except that op->meta.schemaVersion holds the version found
// for OtherSchema.
OpFileProblem decodeOpFile(const std::string& bytes, const Uuid& book, Op* op);

// The message that tells the user why the file at path was refused, naming it.
std::string opFileRefusal(OpFileProblem problem, const std::string& path, int foundSchemaVersion);
