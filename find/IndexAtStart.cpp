#include "find/IndexAtStart.h"

#include <QApplication>
#include <QProgressDialog>
#include <cstdio>
#include <memory>

#include "store/DataModel.h"

void prepareSearchIndex(DataModel& dm)
{
    std::unique_ptr<QProgressDialog> dialog;
    const auto progress = [&dialog](int64_t done, int64_t total) {
        if (!dialog) {
            // Small books are done before anything would be seen.
            dialog = std::make_unique<QProgressDialog>(QStringLiteral("検索用の索引を作成しています（初回のみ）…"),
                                                       QString(), 0, 1000);
            dialog->setWindowTitle(QStringLiteral("Zenvora"));
            dialog->setCancelButton(nullptr);
            dialog->setMinimumDuration(400);
        }
        dialog->setValue(total > 0 ? static_cast<int>(1000 * done / total) : 1000);
        QApplication::processEvents();
        return true;
    };
    if (!dm.openSearchIndex(progress))
        std::fprintf(stderr, "Zenvora: the search index could not be made: %s\n", dm.searchIndexError.c_str());
}
