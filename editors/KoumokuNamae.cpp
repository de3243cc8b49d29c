#include "editors/KoumokuNamae.h"

namespace {

QString comparable(const QString& namae)
{
    return namae.trimmed().normalized(QString::NormalizationForm_C);
}

}  // namespace

bool sameNamae(const QString& typed, const std::string& stored)
{
    return comparable(typed) == comparable(QString::fromStdString(stored));
}
