// One program per book: the lock is the file's, whatever path leads to it.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "store/BookLock.h"
#include "store/BookRestore.h"
#include "tests/store/StoreFixture.h"

namespace fs = std::filesystem;

namespace {

using BookLockTest = StoreFixture;

TEST_F(BookLockTest, EveryPathToTheFileMeetsOneLockWhichFollowsAReplacedBook)
{
    fs::create_symlink(path, dir + "/link.sql");
    fs::create_directory(dir + "/elsewhere");
    fs::create_hard_link(path, dir + "/elsewhere/hard.sql");
    const BookPath viaLink = resolveBookPath(dir + "/link.sql");
    EXPECT_EQ(viaLink.path, fs::canonical(path).string());
    EXPECT_TRUE(viaLink.danglingLink.empty());
    EXPECT_EQ(resolveBookPath(dir + "/./new.sql").path, fs::canonical(dir).string() + "/new.sql");

    BookLock held(path);
    ASSERT_EQ(held.state(), BookLock::State::Held);
    EXPECT_EQ(BookLock::holderOf(dir + "/elsewhere/hard.sql"), ::getpid());
    for (const std::string& other : {viaLink.path, dir + "/elsewhere/hard.sql"}) {
        SCOPED_TRACE(other);
        EXPECT_EQ(BookLock(other).state(), BookLock::State::HeldElsewhere);
    }
    // No file beside the book holds the lock: removing what is there frees nothing.
    for (const auto& entry : fs::directory_iterator(dir))
        if (entry.path() != path && entry.is_regular_file()) fs::remove(entry.path());
    EXPECT_EQ(BookLock(path).state(), BookLock::State::HeldElsewhere);

    // A new book in the old one's place is locked as it arrives; the old
    // file, kept aside, is free.
    std::string error;
    ASSERT_TRUE(held.replaceBook([&] { return startNewBook(path, dir + "/kept.sql", &error); })) << error;
    EXPECT_EQ(held.state(), BookLock::State::Held);
    EXPECT_EQ(held.identity(), identityOf(path));
    EXPECT_EQ(BookLock(path).state(), BookLock::State::HeldElsewhere);
    EXPECT_EQ(BookLock(dir + "/kept.sql").state(), BookLock::State::Held);
    EXPECT_EQ(BookLock(dir + "/new.sql").state(), BookLock::State::NoBook);
}

}  // namespace
