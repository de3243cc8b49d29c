#pragma once

#include <QString>
#include <string>

// The rules the names of assets, categories and sub-items keep. Transfers
// and reports show only names, so two rows of the same name cannot be told
// apart there; and a sub-item's stored name joins its category's and its
// own with "/".

// True when the two names would show alike: the same text once blanks and
// line breaks at both ends are dropped, in Unicode's composed form.
bool sameNamae(const QString& typed, const std::string& stored);

// True when a category or sub-item name holds "/", which would split it.
inline bool hasSlash(const QString& namae)
{
    return namae.contains(u'/');
}
