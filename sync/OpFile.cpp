#include "sync/OpFile.h"

#include <algorithm>
#include <cstring>

#include "sync/Crc32.h"

namespace {

constexpr char kMagic[8] = {'Z', 'V', 'S', 'Y', 'N', 'C', 'O', 'P'};
constexpr int kFormat = 1;

// Offsets of the fixed header.
constexpr size_t kFormatAt = 8;                    // u16
constexpr size_t kSchemaAt = 10;                   // u16
constexpr size_t kBookAt = 12;                     // 16 bytes
constexpr size_t kDeviceAt = 28;                   // u8
constexpr size_t kInstallAt = 29;                  // 16 bytes
constexpr size_t kSeqAt = 45;                      // i64
constexpr size_t kTsAt = 53;                       // i64
constexpr size_t kChecksumAt = 61;                 // u32
constexpr size_t kLabelSizeAt = 65;                // u32, then the label, then u32 changeset size
constexpr size_t kFixedHeader = kLabelSizeAt + 4;  // 69

void putLittle(std::string& out, uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) out += static_cast<char>((value >> (8 * i)) & 0xff);
}

uint64_t getLittle(const std::string& in, size_t at, int bytes)
{
    uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) value |= uint64_t{static_cast<uint8_t>(in[at + i])} << (8 * i);
    return value;
}

void putUuid(std::string& out, const Uuid& id) { out.append(reinterpret_cast<const char*>(id.bytes.data()), 16); }

Uuid getUuid(const std::string& in, size_t at)
{
    Uuid id;
    std::memcpy(id.bytes.data(), in.data() + at, 16);
    return id;
}

uint32_t checksumOf(const std::string& bytes)
{
    static const char kZero[4] = {};
    uint32_t crc = crc32(bytes.data(), kChecksumAt);
    crc = crc32(kZero, 4, crc);
    return crc32(bytes.data() + kChecksumAt + 4, bytes.size() - kChecksumAt - 4, crc);
}

}  // namespace

std::string encodeOpFile(const Op& op)
{
    std::string out(kMagic, sizeof kMagic);
    putLittle(out, kFormat, 2);
    putLittle(out, static_cast<uint64_t>(op.meta.schemaVersion), 2);
    putUuid(out, op.meta.book);
    putLittle(out, static_cast<uint64_t>(op.meta.device), 1);
    putUuid(out, op.meta.install);
    putLittle(out, static_cast<uint64_t>(op.meta.seq), 8);
    putLittle(out, static_cast<uint64_t>(op.meta.ts), 8);
    putLittle(out, 0, 4);  // the checksum, filled in below
    putLittle(out, op.meta.label.size(), 4);
    out += op.meta.label;
    putLittle(out, op.changeset.size(), 4);
    out += op.changeset;
    const uint32_t crc = checksumOf(out);
    for (int i = 0; i < 4; ++i) out[kChecksumAt + i] = static_cast<char>((crc >> (8 * i)) & 0xff);
    return out;
}

OpFileProblem decodeOpFile(const std::string& bytes, const Uuid& book, Op* op)
{
    const size_t magicBytes = std::min(bytes.size(), sizeof kMagic);
    if (magicBytes == 0 || std::memcmp(bytes.data(), kMagic, magicBytes) != 0) return OpFileProblem::NotAnOpFile;
    if (bytes.size() < kFixedHeader) return OpFileProblem::Truncated;
    if (getLittle(bytes, kFormatAt, 2) != kFormat) return OpFileProblem::NewerFormat;
    const size_t labelSize = getLittle(bytes, kLabelSizeAt, 4);
    const size_t changesetSizeAt = kFixedHeader + labelSize;
    if (bytes.size() < changesetSizeAt + 4) return OpFileProblem::Truncated;
    const size_t changesetSize = getLittle(bytes, changesetSizeAt, 4);
    const size_t end = changesetSizeAt + 4 + changesetSize;
    if (bytes.size() < end) return OpFileProblem::Truncated;
    if (bytes.size() > end || getLittle(bytes, kChecksumAt, 4) != checksumOf(bytes)) return OpFileProblem::Damaged;

    OpMeta& meta = op->meta;
    meta.schemaVersion = static_cast<int>(getLittle(bytes, kSchemaAt, 2));
    if (meta.schemaVersion != kSyncSchemaVersion) return OpFileProblem::OtherSchema;
    meta.book = getUuid(bytes, kBookAt);
    if (meta.book != book) return OpFileProblem::OtherBook;
    meta.device = static_cast<int>(getLittle(bytes, kDeviceAt, 1));
    meta.install = getUuid(bytes, kInstallAt);
    meta.seq = static_cast<int64_t>(getLittle(bytes, kSeqAt, 8));
    meta.ts = static_cast<int64_t>(getLittle(bytes, kTsAt, 8));
    meta.label = bytes.substr(kFixedHeader, labelSize);
    op->changeset = bytes.substr(changesetSizeAt + 4, changesetSize);
    return OpFileProblem::None;
}

std::string opFileRefusal(OpFileProblem problem, const std::string& path, int foundSchemaVersion)
{
    const std::string file = "同期フォルダのファイル「" + path + "」";
    const std::string notApplied = "このファイルとその PC のこれより後の変更は適用していません。";
    switch (problem) {
    case OpFileProblem::None:
        return {};
    case OpFileProblem::Unreadable:
        return file + "を読み込めません。" + notApplied;
    case OpFileProblem::NotAnOpFile:
        return file + "は Zenvora の同期ファイルではありません。" + notApplied;
    case OpFileProblem::NewerFormat:
        return file + "は新しい版の Zenvora で書かれています。Zenvora を更新してください。" + notApplied;
    case OpFileProblem::Truncated:
        return file + "は途中で切れています。" + notApplied;
    case OpFileProblem::Damaged:
        return file + "は壊れています (検査値が合いません)。" + notApplied;
    case OpFileProblem::OtherSchema:
        return file + "は別の版の Zenvora (データ形式 " + std::to_string(foundSchemaVersion) + "、この版は " +
               std::to_string(kSyncSchemaVersion) + ") で書かれています。両方の PC を同じ版にしてください。" +
               notApplied;
    case OpFileProblem::OtherBook:
        return file + "は別の家計簿のものです。" + notApplied;
    case OpFileProblem::Misplaced:
        return file + "は名前と中身が食い違っています。" + notApplied;
    }
    return {};
}
