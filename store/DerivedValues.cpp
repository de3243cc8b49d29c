#include "store/DerivedValues.h"

#include <sqlite3.h>

#include "store/Statement.h"
#include "store/StatementCache.h"

namespace {

// ?1: one category, or NULL for every one.
const char* const kRecountUcount =
    "UPDATE Himoku SET Ucount = max(1, (SELECT count(*) FROM Himoku AS s WHERE s.Hno = Himoku.Id AND "
    "s.Id <> Himoku.Id)) WHERE Hno = Id AND (?1 IS NULL OR Id = ?1) AND Ucount IS NOT max(1, (SELECT count(*) FROM "
    "Himoku AS s WHERE s.Hno = Himoku.Id AND s.Id <> Himoku.Id))";

}  // namespace

bool recountUcount(sqlite3* db)
{
    Statement s;
    return s.prepare(db, kRecountUcount) && s.run();
}

bool recountUcount(StatementCache& cache, const std::set<int64_t>& categories)
{
    for (int64_t category : categories) {
        Statement* s = cache.get(kRecountUcount);
        if (!s || s->bindInt64(1, category) != SQLITE_OK || !s->run()) return false;
    }
    return true;
}

bool recomputeStoredZankin(sqlite3* db, const std::set<int64_t>& sisans)
{
    Statement s;
    if (!s.prepare(db, "UPDATE Sisan SET Zankin = SyokiKingaku + (SELECT coalesce(sum(CASE WHEN SyubetuNo IN (2, 4) "
                       "THEN coalesce(Nyuukin, 0) WHEN SyubetuNo IN (1, 3) THEN -coalesce(Syukkin, 0) ELSE 0 END), 0) "
                       "FROM Items WHERE SisanNo = ?1) WHERE Id = ?1"))
        return false;
    for (int64_t sisan : sisans) {
        s.reset();
        if (s.bindInt64(1, sisan) != SQLITE_OK || !s.run()) return false;
    }
    return true;
}
