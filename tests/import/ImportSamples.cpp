#include "tests/import/ImportSamples.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

std::string samplePath(const std::string& name)
{
    return std::string(ZENVORA_IMPORT_SAMPLES) + "/" + name;
}

StatementReading readSample(const std::string& name, const ReadOptions& options)
{
    return readStatementFile(samplePath(name), options);
}

std::vector<std::string> entryLines(const StatementFile& s)
{
    std::vector<std::string> out;
    for (const StatementRow& r : s.rows)
        if (r.kind == RowKind::Entry)
            out.push_back(r.date.hizuke() + " " + std::to_string(r.kingaku) + " " + std::string(s.text(r.text)));
    return out;
}

std::vector<std::string> refusedLines(const StatementFile& s)
{
    std::vector<std::string> out;
    for (const StatementRow& r : s.rows)
        if (r.kind == RowKind::Refused) out.push_back(std::to_string(r.line) + ": " + std::string(s.text(r.reason)));
    return out;
}

InOut totals(const StatementFile& s)
{
    InOut t;
    for (const StatementRow& r : s.rows) {
        if (r.kind != RowKind::Entry) continue;
        (r.kingaku > 0 ? t.in : t.out) += r.kingaku > 0 ? r.kingaku : -r.kingaku;
    }
    return t;
}

TempFile::TempFile(const std::string& name, const std::string& bytes)
{
    std::string pattern = (std::filesystem::temp_directory_path() / "zenvora-import-XXXXXX").string();
    dir_ = mkdtemp(pattern.data());
    path_ = dir_ + "/" + name;
    std::ofstream(path_, std::ios::binary) << bytes;
}

TempFile::~TempFile()
{
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
}
