#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "import/StatementReader.h"

// The sample statements in tests/import/data, written byte for byte in each
// layout's encoding and line ends.
std::string samplePath(const std::string& name);
StatementReading readSample(const std::string& name, const ReadOptions& options = {});

// The entry rows as "date amount text" lines ("2026-07-02 -1200 デビット１ …").
std::vector<std::string> entryLines(const StatementFile& statement);
// The refused rows as "line: reason".
std::vector<std::string> refusedLines(const StatementFile& statement);

struct InOut {
    int64_t in = 0;
    int64_t out = 0;
};
InOut totals(const StatementFile& statement);

// A temporary file with the given bytes, removed with the object.
class TempFile {
public:
    TempFile(const std::string& name, const std::string& bytes);
    ~TempFile();
    const std::string& path() const { return path_; }

private:
    std::string dir_;
    std::string path_;
};
