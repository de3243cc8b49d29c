#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/CsvRecords.h"
#include "import/ImportProfile.h"
#include "import/Recognition.h"
#include "import/StatementRow.h"
#include "import/TextDecoding.h"
#include "import/TextPool.h"

// Why a file was not read. Nothing of a refused file is imported.
enum class RefusalReason {
    CannotOpen,
    Empty,
    TooLarge,
    Pdf,
    Spreadsheet,
    Utf16,
    Binary,
    NotDecodable,         // neither strict UTF-8 nor CP932
    Garbled,              // replacement characters or mojibake already in the text
    Unrecognised,         // no profile fits: the mapping step is needed
    WrongFile,            // a known file that is no statement
    Cancelled,
    ChangedWhileReading,  // the file grew or changed while it was read
};

struct Refusal {
    RefusalReason reason;
    std::string message;                  // Japanese, naming the file
    std::vector<std::string> firstLines;  // the start of the text as decoded, so the user sees what is wrong
    std::vector<CsvRecord> firstRecords;  // for the mapping step of an unrecognised file
};

// A statement file read into rows.
struct StatementFile {
    std::string fileName;
    uint64_t fileSize = 0;
    std::string sha256;  // hex of the file's bytes, for the import record
    TextEncoding encoding = TextEncoding::Utf8;
    Layout layout;
    std::string displayName;  // "楽天カード ご利用明細 (2026年10月)"
    std::vector<StatementRow> rows;
    TextPool pool;
    bool hasTotalLine = false;  // a total line of the file's own, and what it states
    int64_t totalLine = 0;
    std::vector<std::string> sectionNumbers;

    std::string_view text(TextRef ref) const { return pool.view(ref); }
    size_t count(RowKind kind) const;
};

struct ReadOptions {
    // Saved mappings, tried before the built-in profiles.
    std::vector<ImportProfile> savedProfiles;
    // A profile the user chose for this file (the mapping step), and its header line.
    std::optional<ImportProfile> chosenProfile;
    uint32_t chosenHeaderLine = 0;
    // Files larger than this are refused before reading (bytes).
    uint64_t sizeLimit = 256ull << 20;
    // Called after each piece read with the bytes done and the file's size;
    // returning false cancels the reading.
    std::function<bool(uint64_t done, uint64_t total)> progress;
};

// The result of reading: a refusal, or the statement.
struct StatementReading {
    std::optional<Refusal> refusal;
    StatementFile statement;
    bool ok() const { return !refusal; }
};

// Reads a statement file piece by piece (memory grows with the rows, never
// with a copy of the whole file): decodes it (UTF-8 BOM stripped, strict
// UTF-8, else CP932), splits the CSV, recognises the layout, reads every line
// into a row and numbers the duplicate keys.
StatementReading readStatementFile(const std::string& path, const ReadOptions& options = {});

// The same on a stream of `size` bytes; `fileName` names it in messages.
StatementReading readStatementStream(std::istream& in, uint64_t size, const std::string& fileName,
                                     const ReadOptions& options = {});
