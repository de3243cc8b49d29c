#pragma once

#include <string>

class DataModel;
class Floor;

// Times making the search index of the generated book (printed alone), then
// two searches over all assets against the bare API running the same query:
// search_words_1m (two words, each matched in the notes and the category
// names) and search_amount_range_1m.
void benchIndexBuild(const std::string& path);
void benchSearch(DataModel& dm, Floor& floor, int runs);
