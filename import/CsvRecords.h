#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

struct csv_parser;

// One record of a CSV text: its fields exactly as written (quotes removed,
// doubled quotes undone, no blank trimmed) and the line it starts on.
struct CsvRecord {
    uint32_t line = 0;
    std::vector<std::string> fields;
};

// Splits UTF-8 CSV text into records with libcsv, piece by piece, so a file
// never has to be in memory whole. Accepts CRLF, LF and CR line ends and a
// missing final line end; quoted fields may hold commas, quotes and line
// breaks. Blank lines give no record but count as lines.
class CsvRecords {
public:
    using Sink = std::function<void(const CsvRecord&)>;

    explicit CsvRecords(Sink sink);
    ~CsvRecords();
    CsvRecords(const CsvRecords&) = delete;
    CsvRecords& operator=(const CsvRecords&) = delete;

    // Parses the next piece; false when libcsv runs out of memory (see error()).
    bool feed(std::string_view text);
    // Ends the text: delivers a last record without a line end.
    bool finish();
    std::string error() const;

private:
    static void onField(void* text, size_t size, void* self);
    static void onRecordEnd(int terminator, void* self);

    Sink sink_;
    csv_parser* parser_;
    CsvRecord record_;
    uint32_t line_ = 1;
    uint32_t breaksInFields_ = 0;
    bool afterCarriageReturn_ = false;
};
