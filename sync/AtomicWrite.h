#pragma once

#include <string>

// Writes bytes to path so that nobody, a file-sync tool included, ever sees
// a partial file under that name: the bytes go to a temporary name beside it
// (".<name>.tmp", which no reader of the sync folder takes for one of its
// files), are flushed to the disk, and the file is then renamed into place.
// With replace false an existing file at path is left alone and the call
// fails (operation files are immutable). On failure nothing is left behind
// and *error says why, naming the file.
bool writeFileAtomically(const std::string& path, const std::string& bytes, bool replace, std::string* error);

// The whole file, or false (with *error) when it cannot be read.
bool readWholeFile(const std::string& path, std::string* bytes, std::string* error);
