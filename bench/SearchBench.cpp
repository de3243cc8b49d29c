#include "bench/SearchBench.h"

#include <cstdio>

#include "bench/Compare.h"
#include "bench/Floor.h"
#include "store/DataModel.h"
#include "store/SearchIndex.h"
#include "store/SearchQuery.h"

namespace {

// A shop in the notes and a category: "the convenience store, under 交際費".
const char* const kWords = "ｺﾝﾋﾞﾆ 交際費";

std::string idList(const std::vector<int64_t>& ids)
{
    std::string out;
    for (int64_t id : ids) out += (out.empty() ? "" : ",") + std::to_string(id);
    return out;
}

}  // namespace

void benchIndexBuild(const std::string& path)
{
    std::string error;
    IndexBuild built = IndexBuild::Failed;
    const double ms = millisOf([&] { built = ensureSearchIndexAt(path, {}, &error); });
    if (built != IndexBuild::Built) std::fprintf(stderr, "search index not built: %s\n", error.c_str());
    std::printf("bench search_index_build_1m ms=%.0f\n", ms);
    std::fflush(stdout);
}

void benchSearch(DataModel& dm, Floor& floor, int runs)
{
    dm.refreshSearchIndex();
    SearchConnection connection(dm.bookPath());
    FoundItems found;
    std::string error;

    // The floor runs the statement the store's words make, with the words
    // folded and the category ids found beforehand: the notes holding
    // コンビニ, their entries, those filed under 交際費 or noting it.
    const std::vector<SearchWord> words = dm.searchWords(kWords);
    const std::string floorWords =
        "SELECT i.Id, i.Hizuke, i.SisanNo, i.SyubetuNo, i.HimokuNo, i.IdouSisanNo, i.Nyuukin, i.Syukkin, i.Bikou "
        "FROM ItemsFtsEntry e CROSS JOIN Items i ON i.Id = e.Id "
        "WHERE e.NoteId IN (SELECT rowid FROM ItemsFts WHERE ItemsFts MATCH ?) "
        "AND (e.NoteId IN (SELECT rowid FROM ItemsFts WHERE ItemsFts MATCH ?) "
        "OR (i.SyubetuNo IN (1,2) AND i.HimokuNo IN (" + idList(words[1].himokuIds) + "))) "
        "ORDER BY i.Hizuke DESC, i.Id DESC";
    const std::vector<std::string> phrases{ftsPhrase(words[0].folded), ftsPhrase(words[1].folded)};
    SearchCriteria same;
    same.words = words;
    if (searchSql(same).sql != floorWords || searchSql(same).texts != phrases)
        std::fprintf(stderr, "search_words_1m: the floor runs another statement\n");
    double wordsMs = 0;
    compare(
        "search_words_1m", runs,
        [&](int) {
            wordsMs = millisOf([&] {
                SearchCriteria c;
                c.words = dm.searchWords(kWords);
                connection.search(c, &found, &error);
            });
        },
        [&](int) { floor.readFound(floorWords, phrases); });
    std::printf("bench search_words_1m found=%lld last_ms=%.1f\n", static_cast<long long>(found.count), wordsMs);

    SearchCriteria range;
    range.kingakuMin = 1000;
    range.kingakuMax = 1200;
    const std::string floorRange =
        "SELECT i.Id, i.Hizuke, i.SisanNo, i.SyubetuNo, i.HimokuNo, i.IdouSisanNo, i.Nyuukin, i.Syukkin, i.Bikou "
        "FROM Items i WHERE ((i.SyubetuNo IN (2,4) AND i.Nyuukin BETWEEN 1000 AND 1200) OR "
        "(i.SyubetuNo IN (1,3) AND i.Syukkin BETWEEN 1000 AND 1200)) ORDER BY i.Hizuke DESC, i.Id DESC";
    if (searchSql(range).sql != floorRange)
        std::fprintf(stderr, "search_amount_range_1m: the floor runs another statement\n");
    compare("search_amount_range_1m", runs, [&](int) { connection.search(range, &found, &error); },
            [&](int) { floor.readFound(floorRange, {}); });
    std::printf("bench search_amount_range_1m found=%lld\n", static_cast<long long>(found.count));
    std::fflush(stdout);
}
