#pragma once

#include <string>

// Makes the search index of the book at path before the store opens it.
// Building the index of a large book takes a few seconds once: a progress
// window says so meanwhile. A failure is printed on standard error and the
// program goes on (searching by words then says why it cannot).
void prepareSearchIndex(const std::string& path);
