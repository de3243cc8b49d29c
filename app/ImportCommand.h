#pragma once

#include <cstdio>
struct CommandLine;

// zenvora --book PATH --import FILE... --asset NAME [--dry-run] [--accept-candidates]
//
// Imports statements into the book without a window and without a display,
// through the same reading, matching and store write as the window. It
// takes the book's lock first and refuses while a window has the book open.
// For each file, in order, it prints to `out`
//   import FILE layout=ID read=N imported=N already=N possible_duplicates=N transfers=N refused=N income=YEN expense=YEN
// then one line per unreadable row
//   refused FILE line=N reason=...
// and writes to `err` why a file was refused as a whole. Possible
// duplicates and transfer candidates are imported only when asked to. A
// file whose rows' categories are not all known (learned or a layout's
// default) is refused: the window asks for them. Returns the exit code: 0,
// or 1 when the book, the asset or any file was refused.
int runImportCommand(const CommandLine& line, std::FILE* out, std::FILE* err);
