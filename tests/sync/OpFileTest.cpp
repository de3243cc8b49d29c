// The operation file: what is written reads back, and every damaged,
// foreign or newer file is refused with a message that names it.
#include <gtest/gtest.h>

#include "sync/Crc32.h"
#include "sync/OpFile.h"

namespace {

Op sampleOp(const Uuid& book)
{
    Op op;
    op.meta.book = book;
    op.meta.device = 3;
    op.meta.install = *Uuid::parse("0f1e2d3c-4b5a-4968-8776-5a4b3c2d1e0f");
    op.meta.seq = 42;
    op.meta.ts = 1'790'000'123'456;
    op.meta.label = "食費/外食 1,200円の削除";
    op.changeset = std::string("\x54\x05\x00\x01\x00Items\x00\x09", 13) + std::string(300, '\x7f');
    return op;
}

TEST(OpFileTest, writtenOperationReadsBackExactly)
{
    const Uuid book = Uuid::generate();
    const Op op = sampleOp(book);
    Op back;
    ASSERT_EQ(decodeOpFile(encodeOpFile(op), book, &back), OpFileProblem::None);
    EXPECT_EQ(back.meta.book, book);
    EXPECT_EQ(back.meta.device, 3);
    EXPECT_EQ(back.meta.install, op.meta.install);
    EXPECT_EQ(back.meta.seq, 42);
    EXPECT_EQ(back.meta.ts, op.meta.ts);
    EXPECT_EQ(back.meta.label, op.meta.label);
    EXPECT_EQ(back.changeset, op.changeset);
    EXPECT_EQ(back.meta.key(), (OpKey{op.meta.ts, 3, 42}));
}

TEST(OpFileTest, everyCutAndEveryFlippedByteIsRefused)
{
    const Uuid book = Uuid::generate();
    const std::string bytes = encodeOpFile(sampleOp(book));
    Op back;
    for (size_t size = 9; size < bytes.size(); ++size)
        EXPECT_EQ(decodeOpFile(bytes.substr(0, size), book, &back), OpFileProblem::Truncated) << size;
    for (size_t at = 12; at < bytes.size(); ++at) {
        std::string damaged = bytes;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
        const OpFileProblem problem = decodeOpFile(damaged, book, &back);
        // A flip in a length field reads as a cut or a longer file: refused either way.
        EXPECT_TRUE(problem == OpFileProblem::Damaged || problem == OpFileProblem::Truncated) << at;
    }
    EXPECT_EQ(decodeOpFile(bytes + "x", book, &back), OpFileProblem::Damaged);
}

TEST(OpFileTest, foreignNewerAndOtherSchemaFilesAreRefusedByName)
{
    const Uuid book = Uuid::generate();
    Op op = sampleOp(book);
    Op back;
    EXPECT_EQ(decodeOpFile(encodeOpFile(op), Uuid::generate(), &back), OpFileProblem::OtherBook);
    EXPECT_EQ(decodeOpFile("PK\x03\x04 a zip file", book, &back), OpFileProblem::NotAnOpFile);
    EXPECT_EQ(decodeOpFile("", book, &back), OpFileProblem::NotAnOpFile);
    std::string newer = encodeOpFile(op);
    newer[8] = 2;  // the file format
    EXPECT_EQ(decodeOpFile(newer, book, &back), OpFileProblem::NewerFormat);
    op.meta.schemaVersion = kSyncSchemaVersion + 1;
    ASSERT_EQ(decodeOpFile(encodeOpFile(op), book, &back), OpFileProblem::OtherSchema);

    const std::string path = "/home/a/同期/ops/x/0000000042.op";
    EXPECT_EQ(opFileRefusal(OpFileProblem::OtherSchema, path, back.meta.schemaVersion),
              "同期フォルダのファイル「" + path +
                  "」は別の版の Zenvora (データ形式 2、この版は 1) で書かれています。両方の PC を同じ版にしてください。"
                  "このファイルとその PC のこれより後の変更は適用していません。");
    for (OpFileProblem p : {OpFileProblem::Unreadable, OpFileProblem::NotAnOpFile, OpFileProblem::NewerFormat,
                            OpFileProblem::Truncated, OpFileProblem::Damaged, OpFileProblem::OtherBook,
                            OpFileProblem::Misplaced})
        EXPECT_NE(opFileRefusal(p, path, 1).find("「" + path + "」"), std::string::npos);
}

TEST(OpFileTest, checksumAndIdsFollowTheirStandards)
{
    EXPECT_EQ(crc32("123456789", 9), 0xCBF43926u);  // the CRC-32 check value
    const Uuid id = Uuid::generate();
    EXPECT_EQ(Uuid::parse(id.text()), id);
    EXPECT_EQ(id.text()[14], '4');  // version 4
    EXPECT_FALSE(Uuid::parse("0F1E2D3C-4B5A-4968-8776-5A4B3C2D1E0F"));  // one id, one written form
    EXPECT_FALSE(Uuid::parse("0f1e2d3c-4b5a-4968-8776-5a4b3c2d1e0"));
}

}  // namespace
