#include "tests/store/StoreFixture.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <random>

#include "store/BookCheck.h"

namespace {

using BookCheckTest = StoreFixture;

TEST_F(BookCheckTest, EveryKindOfBookGetsItsVerdictAndStaysByteForByte)
{
    exec("BEGIN");
    for (int i = 0; i < 200; ++i) addSisan(std::string(200, 'x'), i, i);  // a book of several pages
    exec("COMMIT");
    sqlite3_close(side);
    side = nullptr;
    const std::string book = bookBytes();
    std::string noise(8192, '\0');
    std::generate(noise.begin(), noise.end(), std::mt19937(11));
    auto reshaped = [&](const char* sql) {
        return [&, sql] {
            writeBook(book);
            ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
            exec(sql);
        };
    };
    auto withModes = [&](mode_t file, mode_t folder) {
        return [&, file, folder] {
            writeBook(book);
            ASSERT_TRUE(::chmod(path.c_str(), file) == 0 && ::chmod(dir.c_str(), folder) == 0);
        };
    };
    struct Case {
        const char* name;
        std::function<void()> make;
        BookVerdict verdict;
        bool unprivileged = false;  // root may write any file: judge as another user
    };
    const std::vector<Case> cases{
        {"the program's book", [&] { writeBook(book); }, BookVerdict::Ready},
        {"an empty file", [&] { writeBook(""); }, BookVerdict::Missing},
        {"random bytes", [&] { writeBook(noise); }, BookVerdict::Damaged},
        {"cut short", [&] { writeBook(book.substr(0, book.size() / 2)); }, BookVerdict::Damaged},
        {"a missing column",
         reshaped("ALTER TABLE Sisan RENAME TO Old; CREATE TABLE Sisan (Id INTEGER PRIMARY KEY, Namae TEXT, "
                  "SyokiKingaku INTEGER)"),
         BookVerdict::WrongSchema},
        {"an extra column", reshaped("ALTER TABLE Himoku ADD COLUMN Memo TEXT"), BookVerdict::WrongSchema},
        {"a missing table", reshaped("DROP TABLE Items"), BookVerdict::WrongSchema},
        {"locked by another writer", reshaped("BEGIN IMMEDIATE"), BookVerdict::Locked},
        {"a read-only file", withModes(0444, 0777), BookVerdict::FileReadOnly, true},
        {"an unreadable file", withModes(0000, 0777), BookVerdict::Unreadable, true},
        {"a read-only folder", withModes(0666, 0555), BookVerdict::FolderReadOnly, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        c.make();
        const std::string before = bookBytes();
        const bool root = c.unprivileged && ::geteuid() == 0;
        ASSERT_TRUE(!root || ::seteuid(65534) == 0);
        const BookCheck check = checkBook(path);
        ASSERT_TRUE(!root || ::seteuid(0) == 0);
        EXPECT_EQ(check.verdict, c.verdict) << check.detail;
        EXPECT_EQ(bookBytes(), before);
        sqlite3_close(side);
        side = nullptr;
        ASSERT_TRUE(::chmod(path.c_str(), 0600) == 0 && ::chmod(dir.c_str(), 0700) == 0);
    }
    EXPECT_EQ(checkBook(dir + "/new/folder/Zenvora.sql").verdict, BookVerdict::Missing);
}

}  // namespace
