#pragma once

#include <functional>
#include <string>
#include <string_view>

// How texts are made comparable for searching: the notes in the search index,
// the names of categories and assets, and every search word go through the
// same folding, so that variants a user does not tell apart (half- and
// full-width forms, letter case, a long-vowel mark at the end of a katakana
// word) match each other. The store has no Unicode tables of its own: the
// application installs a folding (Unicode NFKC and more), like the message
// sink. The default folds only ASCII letter case.
using TextFold = std::function<std::string(std::string_view text)>;

// Replaces the process-wide folding; `version` names it, so that an index
// built with another folding is rebuilt. An empty function restores the
// default. Install it before the first store opens a book.
void setTextFold(TextFold fold, std::string version);

// The text folded by the installed folding.
std::string foldText(std::string_view text);

// The name of the installed folding.
const std::string& textFoldVersion();
