#include "tests/store/StoreFixture.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>

#include "store/BookCheck.h"

namespace {

class BookCheckTest : public StoreFixture {
protected:
    std::string bytes() const
    {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void write(const std::string& content) const { std::ofstream(path, std::ios::binary | std::ios::trunc) << content; }

    // Checks the book as an unprivileged user: root may write any file.
    BookCheck checkAsUser()
    {
        const bool root = ::geteuid() == 0;
        EXPECT_TRUE(!root || ::seteuid(65534) == 0);
        BookCheck check = checkBook(path);
        EXPECT_TRUE(!root || ::seteuid(0) == 0);
        return check;
    }
};

TEST_F(BookCheckTest, AProgramsBookIsReadyAndAMissingOrEmptyOneIsToBeProvisioned)
{
    addSisan("現金", 0, 0);
    EXPECT_EQ(checkBook(path).verdict, BookVerdict::Ready);
    EXPECT_EQ(checkBook(dir + "/none.sql").verdict, BookVerdict::Missing);
    EXPECT_EQ(checkBook(dir + "/new/folder/Zenvora.sql").verdict, BookVerdict::Missing);
    sqlite3_close(side);
    side = nullptr;
    write("");
    EXPECT_EQ(checkBook(path).verdict, BookVerdict::Missing);
}

TEST_F(BookCheckTest, ForeignCutShortAndReshapedBooksAreRefusedUntouched)
{
    exec("BEGIN");
    for (int i = 0; i < 200; ++i) addSisan(std::string(200, 'x'), i, i);  // a book of several pages
    exec("COMMIT");
    sqlite3_close(side);
    side = nullptr;
    const std::string book = bytes();
    std::string noise(8192, '\0');
    std::mt19937 random(11);
    for (char& c : noise) c = static_cast<char>(random());

    struct Case {
        const char* name;
        std::function<void()> make;
        BookVerdict verdict;
        const char* detail;
    };
    auto reshaped = [&](const char* sql) {
        return [&, sql] {
            write(book);
            ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
            exec(sql);
            sqlite3_close(side);
            side = nullptr;
        };
    };
    const std::vector<Case> cases{
        {"random bytes", [&] { write(noise); }, BookVerdict::Damaged, "not a SQLite database"},
        {"a text file", [&] { write("家計簿\n"); }, BookVerdict::Damaged, "not a SQLite database"},
        {"cut short", [&] { write(book.substr(0, book.size() / 2)); }, BookVerdict::Damaged, ""},
        {"a missing column",
         reshaped("ALTER TABLE Sisan RENAME TO Old; CREATE TABLE Sisan (Id INTEGER PRIMARY KEY, Namae TEXT, "
                  "SyokiKingaku INTEGER)"),
         BookVerdict::WrongSchema, "Sisan(Id,Namae,SyokiKingaku)"},
        {"an extra column", reshaped("ALTER TABLE Himoku ADD COLUMN Memo TEXT"), BookVerdict::WrongSchema,
         "Himoku(Id,SyubetuNo,Namae,Hno,Ucount,Memo)"},
        {"a missing table", reshaped("DROP TABLE Items"), BookVerdict::WrongSchema, "table Items missing"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        c.make();
        const std::string before = bytes();
        const BookCheck check = checkBook(path);
        EXPECT_EQ(check.verdict, c.verdict);
        if (*c.detail) {
            EXPECT_EQ(check.detail, c.detail);
        }
        EXPECT_EQ(bytes(), before);
        EXPECT_FALSE(std::filesystem::exists(path + "-journal"));
    }
}

TEST_F(BookCheckTest, ABookThatCannotBeWrittenIsRefusedUntouched)
{
    addSisan("現金", 0, 0);
    const std::string before = bytes();

    // Another program holds the write lock.
    exec("BEGIN IMMEDIATE");
    EXPECT_EQ(checkBook(path).verdict, BookVerdict::Locked);
    exec("ROLLBACK");
    sqlite3_close(side);
    side = nullptr;

    ASSERT_EQ(::chmod(dir.c_str(), 0777), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    EXPECT_EQ(checkAsUser().verdict, BookVerdict::FileReadOnly);
    ASSERT_EQ(::chmod(path.c_str(), 0000), 0);
    EXPECT_EQ(checkAsUser().verdict, BookVerdict::Unreadable);
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(::chmod(dir.c_str(), 0555), 0);
    EXPECT_EQ(checkAsUser().verdict, BookVerdict::FolderReadOnly);
    ASSERT_EQ(::chmod(dir.c_str(), 0700), 0);
    EXPECT_EQ(bytes(), before);
}

}  // namespace
