#include "import/StatementReader.h"

#include <QCryptographicHash>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <memory>

#include "import/ByteSniff.h"
#include "import/DuplicateKeys.h"
#include "import/RowReader.h"
#include "import/UnicodeText.h"

namespace {

constexpr size_t kPieceBytes = 1 << 20;
constexpr size_t kFirstLinesShown = 5;

std::string quoted(const std::string& fileName)
{
    return "「" + fileName + "」";
}

Refusal refusal(RefusalReason reason, std::string message)
{
    return {reason, std::move(message), {}, {}};
}

std::optional<Refusal> refuseContent(ByteContent content, const std::string& name)
{
    switch (content) {
    case ByteContent::Text: return std::nullopt;
    case ByteContent::Pdf:
        return refusal(RefusalReason::Pdf, quoted(name) + "はPDFのファイルです。明細はCSV形式でダウンロードしてください。");
    case ByteContent::Archive:
    case ByteContent::OldExcel:
        return refusal(RefusalReason::Spreadsheet,
                       quoted(name) + "はExcelなどの表計算のファイルです。CSV形式で保存したファイルを選んでください。");
    case ByteContent::Utf16:
        return refusal(RefusalReason::Utf16, quoted(name) + "はUTF-16で書かれています。"
                                                            "UTF-8かShift_JISのCSVで保存したファイルを選んでください。");
    case ByteContent::Binary:
        return refusal(RefusalReason::Binary, quoted(name) + "はCSVのテキストファイルではありません。");
    }
    return std::nullopt;
}

std::string garbledMessage(const std::string& name, uint32_t line)
{
    return quoted(name) + "は文字化けしています（" + std::to_string(line) +
           "行目）。文字化けは元に戻せないため取り込めません。銀行やカード会社のサイトからもう一度ダウンロードしてください。";
}

// One attempt at reading the text in one encoding.
class Pass {
public:
    Pass(const std::string& name, const ReadOptions& options, StatementFile& statement)
        : name_(name), options_(options), statement_(statement),
          records_([this](const CsvRecord& r) { onRecord(r); })
    {
    }

    std::optional<Refusal> refused;
    bool wrongEncoding = false;  // strict UTF-8 failed: try CP932

    void run(std::istream& in, uint64_t size, TextEncoding encoding)
    {
        PieceDecoder decoder(encoding);
        if (!decoder.isValid()) {
            refused = refusal(RefusalReason::NotDecodable, quoted(name_) + "を読めません: Shift_JIS の変換が使えません。");
            return;
        }
        QCryptographicHash sha(QCryptographicHash::Sha256);
        std::string carry;
        std::vector<char> buffer(kPieceBytes);
        uint64_t done = 0;
        bool first = true;
        while (!refused && !stopped_ && !wrongEncoding) {
            in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
            const size_t got = static_cast<size_t>(in.gcount());
            const bool end = got < buffer.size();
            sha.addData(QByteArrayView(buffer.data(), static_cast<qsizetype>(got)));
            done += got;
            carry.append(buffer.data(), got);
            std::string_view piece(carry);
            if (first) piece.remove_prefix(utf8BomLength(piece));
            // Up to the last line end (none yet: read on), or everything at the end.
            const size_t cut = end ? piece.size() : piece.rfind('\n') + 1;
            std::string_view whole = piece.substr(0, cut);
            if (end && whole.ends_with('\x1A')) whole.remove_suffix(1);  // a DOS end-of-file mark
            if (cut > 0 || end) decodePiece(decoder, whole, encoding);
            carry.erase(0, carry.size() - (piece.size() - cut));
            first = first && cut == 0 && !end;
            if (wrongEncoding) break;
            if (options_.progress && !options_.progress(done, size)) {
                refused = refusal(RefusalReason::Cancelled, quoted(name_) + "の読み込みを中止しました。");
            }
            if (end) break;
        }
        if (refused || wrongEncoding) return;
        if (!records_.finish()) refused = refusal(RefusalReason::NotDecodable, quoted(name_) + "を読めません: " + records_.error());
        if (!layoutFound_ && !stopped_) recogniseNow();
        statement_.sha256 = sha.result().toHex().toStdString();
        statement_.fileSize = done;
        if (statement_.fileSize != size) refused = changed();
    }

    Refusal changed() const
    {
        return refusal(RefusalReason::ChangedWhileReading,
                       quoted(name_) + "は読み込み中に書き換えられました。書き込みが終わってからもう一度選んでください。");
    }

    void finishStatement()
    {
        if (reader_) {
            statement_.hasTotalLine = reader_->hasStatedTotal();
            statement_.totalLine = reader_->statedTotal();
            statement_.sectionNumbers = reader_->sectionNumbers();
        }
    }

    std::vector<std::string> firstLines;

private:
    void decodePiece(PieceDecoder& decoder, std::string_view bytes, TextEncoding encoding)
    {
        QString text;
        if (!decoder.decode(bytes, text)) {
            if (encoding == TextEncoding::Utf8) {
                wrongEncoding = true;
                return;
            }
            refused = refusal(RefusalReason::NotDecodable,
                              quoted(name_) + "はUTF-8としてもShift_JISとしても読めません（" +
                                  std::to_string(linesDecoded_ + 1) + "行目付近）。文字化けしたファイルは取り込めません。");
            refused->firstLines = firstLines;
            return;
        }
        if (firstLines.empty()) keepFirstLines(text);
        const qsizetype bad = findReplacementCharacter(text);
        if (bad >= 0) {
            const auto line = static_cast<uint32_t>(linesDecoded_ + 1 + text.left(bad).count(u'\n'));
            refused = refusal(RefusalReason::Garbled, garbledMessage(name_, line));
            refused->firstLines = firstLines;
            return;
        }
        linesDecoded_ += static_cast<uint64_t>(text.count(u'\n'));
        const std::string utf8 = toUtf8(text);
        if (!records_.feed(utf8)) refused = refusal(RefusalReason::NotDecodable, quoted(name_) + "を読めません: " + records_.error());
    }

    void keepFirstLines(const QString& text)
    {
        const QStringList lines = text.split(u'\n');
        for (qsizetype i = 0; i < lines.size() && firstLines.size() < kFirstLinesShown; ++i) {
            QString line = lines[i];
            line.remove(u'\r');
            firstLines.push_back(toUtf8(line.left(200)));
        }
    }

    void onRecord(const CsvRecord& record)
    {
        if (stopped_ || refused) return;
        if (layoutFound_) {
            reader_->read(record, statement_.rows);
            return;
        }
        const bool blank = std::all_of(record.fields.begin(), record.fields.end(),
                                       [](const std::string& f) { return trimmedCell(f).empty(); });
        if (!blank) firstRecords_.push_back(record);
        if (record.line >= kHeaderSearchLines) recogniseNow();
    }

    void recogniseNow()
    {
        layoutFound_ = true;
        if (firstRecords_.empty()) {
            refused = refusal(RefusalReason::Empty, quoted(name_) + "は空のファイルです。");
            stopped_ = true;
            return;
        }
        std::optional<Layout> layout;
        if (options_.chosenProfile) {
            layout = applyProfile(*options_.chosenProfile, firstRecords_, options_.chosenHeaderLine);
        } else {
            layout = recognise(firstRecords_, options_.savedProfiles);
            if (!layout) layout = recognise(firstRecords_, builtInProfiles());
        }
        if (!layout || !layout->profile.wrongFile.empty()) {
            refused = unrecognised(layout);
            stopped_ = true;
            return;
        }
        statement_.layout = std::move(*layout);
        reader_ = std::make_unique<RowReader>(statement_.layout, statement_.pool);
        for (const CsvRecord& r : firstRecords_) reader_->read(r, statement_.rows);
        firstRecords_.clear();
        firstRecords_.shrink_to_fit();
    }

    Refusal unrecognised(const std::optional<Layout>& layout)
    {
        Refusal r;
        if (layout) {
            r = refusal(RefusalReason::WrongFile, quoted(name_) + ": " + layout->profile.wrongFile);
        } else {
            QString start;
            for (const std::string& line : firstLines) start += QString::fromStdString(line) + u'\n';
            r = looksGarbled(start) ? refusal(RefusalReason::Garbled, garbledMessage(name_, 1))
                                    : refusal(RefusalReason::Unrecognised,
                                              quoted(name_) + "は知っている明細の形式ではありません。"
                                                              "見出しの行と、日付・内容・金額の列を指定してください。");
        }
        r.firstLines = firstLines;
        r.firstRecords = std::move(firstRecords_);
        return r;
    }

    const std::string& name_;
    const ReadOptions& options_;
    StatementFile& statement_;
    CsvRecords records_;
    std::vector<CsvRecord> firstRecords_;
    std::unique_ptr<RowReader> reader_;
    bool layoutFound_ = false;
    bool stopped_ = false;
    uint64_t linesDecoded_ = 0;
};

std::string monthText(int nen, int tuki)
{
    return std::to_string(nen) + "年" + std::to_string(tuki) + "月";
}

// The period a statement covers, for its display name: the month it is paid
// in for a card statement that says so, else the months of its rows.
std::string periodText(const StatementFile& s)
{
    ImportDate first, last;
    for (const StatementRow& r : s.rows) {
        if (r.kind != RowKind::Entry) continue;
        if (first.isNull() || r.date < first) first = r.date;
        if (last.isNull() || last < r.date) last = r.date;
    }
    const StatedValues& stated = s.layout.stated;
    if (!stated.paymentDate.isNull()) return monthText(stated.paymentDate.nen(), stated.paymentDate.tuki());
    if (stated.paymentMonth > 0 && !last.isNull())
        return monthText(last.nen() + (stated.paymentMonth < last.tuki() ? 1 : 0), stated.paymentMonth);
    if (first.isNull()) return {};
    if (first.nen() == last.nen() && first.tuki() == last.tuki()) return monthText(first.nen(), first.tuki());
    return monthText(first.nen(), first.tuki()) + "〜" + monthText(last.nen(), last.tuki());
}

}  // namespace

size_t StatementFile::count(RowKind kind) const
{
    size_t n = 0;
    for (const StatementRow& r : rows) n += r.kind == kind;
    return n;
}

StatementReading readStatementStream(std::istream& in, uint64_t size, const std::string& name, const ReadOptions& options)
{
    StatementReading out;
    out.statement.fileName = name;
    if (size == 0) {
        out.refusal = refusal(RefusalReason::Empty, quoted(name) + "は空のファイルです。");
        return out;
    }
    if (size > options.sizeLimit) {
        out.refusal = refusal(RefusalReason::TooLarge, quoted(name) + "は大きすぎるため読み込めません（" +
                                                           std::to_string((size + (1 << 20) - 1) >> 20) + " MB。上限は " +
                                                           std::to_string(options.sizeLimit >> 20) + " MB です）。");
        return out;
    }
    std::string head(static_cast<size_t>(std::min<uint64_t>(size, 64 << 10)), '\0');
    in.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<size_t>(in.gcount()));
    if ((out.refusal = refuseContent(sniffBytes(head), name))) return out;

    // A pass in CP932 after strict UTF-8 failed part-way reads the start again:
    // the progress shown never goes back.
    ReadOptions passOptions = options;
    uint64_t reported = 0;
    if (options.progress) {
        passOptions.progress = [&](uint64_t done, uint64_t total) {
            if (done <= reported) return true;
            reported = done;
            return options.progress(done, total);
        };
    }
    TextEncoding encoding = utf8BomLength(head) > 0 ? TextEncoding::Utf8Bom : TextEncoding::Utf8;
    for (;;) {
        in.clear();
        in.seekg(0);
        out.statement = StatementFile();
        out.statement.fileName = name;
        out.statement.encoding = encoding;
        Pass pass(name, passOptions, out.statement);
        pass.run(in, size, encoding);
        if (pass.wrongEncoding) {
            encoding = TextEncoding::Cp932;
            continue;
        }
        if (pass.refused) {
            out.refusal = std::move(pass.refused);
            return out;
        }
        pass.finishStatement();
        break;
    }
    StatementFile& s = out.statement;
    numberOccurrences(s.rows, s.pool);
    const std::string period = periodText(s);
    s.displayName = s.layout.profile.name + (period.empty() ? "" : " (" + period + ")");
    return out;
}

StatementReading readStatementFile(const std::string& path, const ReadOptions& options)
{
    namespace fs = std::filesystem;
    const std::string name = fs::path(path).filename().string();
    std::error_code ec;
    const uint64_t size = fs::file_size(path, ec);
    const auto written = fs::last_write_time(path, ec);
    std::ifstream in(path, std::ios::binary);
    if (ec || !in || fs::is_directory(path)) {
        StatementReading out;
        out.refusal = refusal(RefusalReason::CannotOpen, quoted(name) + "を開けません: " +
                                                             (ec ? ec.message() : std::string(std::strerror(errno))));
        return out;
    }
    StatementReading out = readStatementStream(in, size, name, options);
    std::error_code after;
    if (out.ok() && (fs::file_size(path, after) != size || fs::last_write_time(path, after) != written)) {
        out.refusal = refusal(RefusalReason::ChangedWhileReading,
                              quoted(name) + "は読み込み中に書き換えられました。書き込みが終わってからもう一度選んでください。");
    }
    return out;
}
