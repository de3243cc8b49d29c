#pragma once

#include <cstdint>
#include <string>

class DataModel;

// Times importing a card statement of 10,000 rows, written in CP932 into
// dir, into the asset sisanId of the generated book:
//   import_card_10k  the import from the read statement to the committed
//                    entries: the book's entries around the statement's
//                    dates and the other assets' around its transfer-like
//                    rows read, every row matched and given its category,
//                    the rows, their origins, the import record and the
//                    learned categories written in one transaction that
//                    records them as one undoable step; against the bare
//                    SQLite API reading the same rows with the same joins,
//                    looking each row's key up in them, writing the same rows
//                    with the same statements and recording them with the
//                    bare session API into the history in the same
//                    transaction.
// and prints the reading of the file on its own line:
//   bench import_card_10k_read decode_parse_ms=<median> preview_ms=<median>
// where preview_ms is the reading followed by what the preview needs (the
// book's rows read and every row matched), without the window.
// Each run starts from the book as generated: what a run wrote is deleted
// before the next, untimed.
void benchImport(DataModel& dm, const std::string& bookPath, const std::string& dir, int64_t sisanId, int runs);
