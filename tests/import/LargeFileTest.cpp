// A million-row statement is read piece by piece: memory grows with the rows
// kept, never with copies of the file, and the progress reaches the end.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/import/ImportSamples.h"

namespace {

// The peak resident memory of this process so far, in bytes (VmHWM).
uint64_t peakMemory()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (word == "VmHWM:") {
            uint64_t kb = 0;
            status >> kb;
            return kb * 1024;
        }
    return 0;
}

}  // namespace

TEST(LargeFile, AMillionRowsAreReadWithProgressAndBoundedMemory)
{
    constexpr int kRows = 1'000'000;
    // A 楽天銀行 statement in CP932: the header, then rows with a day-and-row text.
    std::string bytes = "\x8E\xE6\x88\xF8\x93\xFA,\x93\xFC\x8F\x6F\x8B\xE0(\x89\x7E),\x8E\xE6\x88\xF8\x8C\xE3\x8E\x63\x8D\x82(\x89\x7E),"
                        "\x93\xFC\x8F\x6F\x8B\xE0\x93\xE0\x97\x65\r\n";  // 取引日,入出金(円),取引後残高(円),入出金内容
    bytes.reserve(static_cast<size_t>(kRows) * 40);
    int64_t sum = 0;
    for (int i = 0; i < kRows; ++i) {
        const int amount = (i % 2 ? 1 : -1) * (100 + i % 9000);
        sum += amount;
        bytes += "2026" + std::string(i % 12 < 9 ? "0" : "") + std::to_string(i % 12 + 1) + "1" + std::to_string(i % 9) +
                 "," + std::to_string(amount) + ",0,\x83\x65\x83\x58\x83\x67" + std::to_string(i) + "\r\n";  // テスト<i>
    }
    const TempFile file("large.csv", bytes);
    const uint64_t size = bytes.size();
    bytes = std::string();

    const uint64_t before = peakMemory();
    uint64_t last = 0;
    int calls = 0;
    ReadOptions options;
    options.progress = [&](uint64_t done, uint64_t total) {
        EXPECT_EQ(total, size);
        EXPECT_GT(done, last);
        last = done;
        ++calls;
        return true;
    };
    const StatementReading r = readStatementFile(file.path(), options);
    ASSERT_TRUE(r.ok()) << r.refusal->message;
    EXPECT_EQ(last, size);
    EXPECT_GE(calls, static_cast<int>(size >> 20));
    EXPECT_EQ(r.statement.encoding, TextEncoding::Cp932);
    ASSERT_EQ(r.statement.count(RowKind::Entry), static_cast<size_t>(kRows));
    EXPECT_EQ(totals(r.statement).in - totals(r.statement).out, sum);
    EXPECT_EQ(r.statement.text(r.statement.rows.back().text), "テスト999999");

    // What is kept per row, and the peak on top of it: no copy of the file's text.
    const uint64_t kept = r.statement.rows.capacity() * sizeof(StatementRow) + r.statement.pool.bytes();
    EXPECT_LT(kept / kRows, 200u);
    const uint64_t growth = peakMemory() - before;
    EXPECT_LT(growth, kept + kept / 2 + (64u << 20)) << "kept " << kept << ", file " << size;
}
