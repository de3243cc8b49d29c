// The sync folder: only exact names are read, each writer's operations in
// sequence without gaps, refusals stop a writer, claims and applied vectors
// round-trip, and a retired writer's later files are left alone.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "sync/AtomicWrite.h"
#include "sync/SyncFolder.h"

namespace fs = std::filesystem;

namespace {

class SyncFolderTest : public ::testing::Test {
protected:
    fs::path dir = fs::temp_directory_path() / ("zenvora-folder-" + std::to_string(::getpid()));
    SyncFolder folder{(dir / "folder").string()};
    Uuid book = Uuid::generate();
    Uuid writer = Uuid::generate();
    std::vector<DeviceClaim> claims;

    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(folder.prepare(&error)) << error;
        ASSERT_EQ(folder.claimDevice(writer, "台所", &error), 1);
        claims = folder.readClaims();
    }
    void TearDown() override { fs::remove_all(dir); }

    Op op(int64_t seq)
    {
        Op o;
        o.meta = {book, kSyncSchemaVersion, 1, writer, seq, 1000 * seq, "入力の追加"};
        o.changeset = "changes of " + std::to_string(seq);
        return o;
    }
    void write(int64_t seq)
    {
        std::string error;
        ASSERT_TRUE(folder.writeOp(op(seq), &error)) << error;
    }
    void put(const std::string& name, const std::string& bytes)
    {
        std::ofstream((fs::path(folder.opPath(writer, 1)).parent_path() / name).string(), std::ios::binary) << bytes;
    }
    std::vector<int64_t> readySeqs(const AppliedVector& applied = {})
    {
        std::vector<int64_t> seqs;
        for (const Op& o : folder.scan(book, Uuid::generate(), applied, claims).ready) seqs.push_back(o.meta.seq);
        return seqs;
    }
};

TEST_F(SyncFolderTest, conflictCopiesAndTemporaryFilesAreIgnoredAndGapsWait)
{
    write(1);
    write(2);
    write(4);
    const std::string copy = encodeOpFile(op(3));
    put("0000000003.sync-conflict-20261123-101500-ABCDEFG.op", copy);
    put("0000000003 (conflicted copy 2026-11-23 101500).op", copy);
    put(".0000000003.op.tmp", copy);
    put("3.op", copy);
    put("00000000003.op", copy);
    EXPECT_EQ(readySeqs(), (std::vector<int64_t>{1, 2}));
    FolderScan scan = folder.scan(book, Uuid::generate(), {}, claims);
    EXPECT_EQ(scan.waiting.at(writer), 3);
    EXPECT_EQ(scan.largestTs, 2000);
    EXPECT_TRUE(scan.refusals.empty());

    write(3);
    EXPECT_EQ(readySeqs({{writer, 1}}), (std::vector<int64_t>{2, 3, 4}));
    EXPECT_TRUE(folder.scan(book, Uuid::generate(), {{writer, 1}}, claims).waiting.empty());
    std::string error;
    EXPECT_FALSE(folder.writeOp(op(3), &error)) << "operation files are never replaced";
    EXPECT_EQ(folder.lastOpSeq(writer), 4);
}

TEST_F(SyncFolderTest, aTruncatedOrForeignFileStopsItsWriterWithAMessageNamingIt)
{
    write(1);
    const std::string third = encodeOpFile(op(3));
    put("0000000002.op", encodeOpFile(op(2)).substr(0, 60));
    put("0000000003.op", third);
    FolderScan scan = folder.scan(book, Uuid::generate(), {}, claims);
    EXPECT_EQ(scan.ready.size(), 1u);
    ASSERT_EQ(scan.refusals.size(), 1u);
    EXPECT_EQ(scan.refusals[0].problem, OpFileProblem::Truncated);
    EXPECT_EQ(scan.refusals[0].message, opFileRefusal(OpFileProblem::Truncated, folder.opPath(writer, 2), 0));

    Op foreign = op(2);
    foreign.meta.book = Uuid::generate();
    fs::remove(folder.opPath(writer, 2));
    put("0000000002.op", encodeOpFile(foreign));
    scan = folder.scan(book, Uuid::generate(), {{writer, 1}}, claims);
    ASSERT_EQ(scan.refusals.size(), 1u);
    EXPECT_EQ(scan.refusals[0].problem, OpFileProblem::OtherBook);
    EXPECT_TRUE(scan.ready.empty());

    // A file under another writer's name or sequence is refused too.
    fs::remove(folder.opPath(writer, 2));
    put("0000000002.op", third);
    scan = folder.scan(book, Uuid::generate(), {{writer, 1}}, claims);
    ASSERT_EQ(scan.refusals.size(), 1u);
    EXPECT_EQ(scan.refusals[0].problem, OpFileProblem::Misplaced);
}

TEST_F(SyncFolderTest, claimsAppliedVectorsAndTheBookIdRoundTrip)
{
    std::string error;
    const Uuid second = Uuid::generate();
    EXPECT_EQ(folder.claimDevice(second, "書斎", &error), 2);
    EXPECT_EQ(folder.claimDevice(writer, "台所", &error), 1) << "a PC keeps its number";
    EXPECT_TRUE(claimClashes(folder.readClaims()).empty());
    // Operations of a writer whose claim has not arrived yet wait.
    write(1);
    EXPECT_TRUE(folder.scan(book, second, {}, {}).ready.empty());

    // Two PCs that claimed number 2 at once, each in its own copy of the folder.
    std::ofstream((fs::path(folder.root()) / "devices" / ("2-" + Uuid::generate().text())).string()) << "居間\n";
    const std::vector<std::string> clashes = claimClashes(folder.readClaims());
    ASSERT_EQ(clashes.size(), 1u);
    const bool eitherOrder =
        clashes[0] == "PC 番号 2 を 2 台の PC (「書斎」、「居間」) が使っています。同期を止めました。" ||
        clashes[0] == "PC 番号 2 を 2 台の PC (「居間」、「書斎」) が使っています。同期を止めました。";
    EXPECT_TRUE(eitherOrder) << clashes[0];

    const AppliedVector applied = {{writer, 12}, {second, 7}};
    ASSERT_TRUE(folder.publishApplied(second, applied, 1234, &error)) << error;
    EXPECT_EQ(folder.readApplied().at(second), applied);
    EXPECT_EQ(folder.readAppliedTimes().at(second), 1234);

    std::optional<Uuid> id;
    ASSERT_TRUE(folder.readBookId(&id, &error));
    EXPECT_FALSE(id);
    ASSERT_TRUE(folder.writeBookId(book, &error));
    ASSERT_TRUE(folder.readBookId(&id, &error));
    EXPECT_EQ(id, book);
}

TEST_F(SyncFolderTest, aRetiredWritersLaterFilesAreNeverRead)
{
    for (int64_t seq = 1; seq <= 3; ++seq) write(seq);
    std::string error;
    ASSERT_TRUE(folder.retire(writer, 2, &error)) << error;
    ASSERT_TRUE(folder.retire(writer, 3, &error)) << "a retirement is never changed";
    EXPECT_EQ(folder.readRetired(), (std::map<Uuid, int64_t>{{writer, 2}}));
    const FolderScan scan = folder.scan(book, Uuid::generate(), {}, claims, folder.readRetired());
    ASSERT_EQ(scan.ready.size(), 2u);
    EXPECT_TRUE(scan.waiting.empty());
}

}  // namespace
