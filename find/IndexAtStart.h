#pragma once

class DataModel;

// Makes the search index of the store's book when it has none (or one made
// with another folding) and brings it up to date: at the start, once the
// book has passed its checks, and after a backup was restored. Building the
// index of a large book takes a few seconds once: a progress window says so
// meanwhile. A failure is printed on standard error and the program goes on
// (searching by words then says why it cannot).
void prepareSearchIndex(DataModel& dm);
