#include "app/BookGate.h"

#include <filesystem>
#include <system_error>

#include "store/BookCheck.h"
#include "store/Provisioning.h"
#include "ui/Clock.h"
#include "ui/MessageService.h"

namespace fs = std::filesystem;

namespace {

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

QString folderOf(const std::string& bookPath)
{
    return q(fs::path(bookPath).parent_path().string());
}

// What went wrong, with the file's path, and what the user can do about it.
struct Refusal {
    QString message;
    QString advice;
};

Refusal refusalFor(const BookCheck& check, const std::string& bookPath)
{
    const QString file = q(bookPath);
    const QString detail = check.detail.empty() ? QString() : QStringLiteral("\n（%1）").arg(q(check.detail));
    switch (check.verdict) {
    case BookVerdict::FolderReadOnly:
        return {QStringLiteral("家計簿のフォルダに書き込めないため、家計簿を開けません。\n%1").arg(file),
                QStringLiteral("フォルダ %1 の書き込み権限を確かめてから、もう一度起動してください。")
                    .arg(folderOf(bookPath))};
    case BookVerdict::FileReadOnly:
        return {QStringLiteral("家計簿のファイルが読み取り専用のため、開けません。\n%1%2").arg(file, detail),
                QStringLiteral("ファイルの書き込み権限を確かめてから、もう一度起動してください。")};
    case BookVerdict::Unreadable:
        return {QStringLiteral("家計簿のファイルを読み込めません。\n%1%2").arg(file, detail),
                QStringLiteral("ファイルの読み取り権限とディスクの状態を確かめてから、もう一度起動してください。")};
    case BookVerdict::Locked:
        return {QStringLiteral("家計簿のファイルは別のプログラムが書き込み中です。\n%1").arg(file),
                QStringLiteral("そのプログラム（バックアップや同期のソフトなど）が終わってから、もう一度起動してください。")};
    case BookVerdict::WrongSchema:
        return {QStringLiteral("このファイルは Zenvora の家計簿の形式ではないため、開けません。\n%1%2").arg(file, detail),
                QStringLiteral("ファイルには手を加えていません。正しい家計簿のファイルを置くか、"
                               "backups フォルダのバックアップを Zenvora.sql として戻してから、もう一度起動してください。")};
    default:
        return {QStringLiteral("家計簿のファイルを開けません。\n%1%2").arg(file, detail), QString()};
    }
}

bool provision(const std::string& bookPath)
{
    std::string error;
    if (provisionBook(bookPath, &error)) return true;
    messageService().someMessageWithAlert(QStringLiteral("家計簿のファイルを用意できませんでした。\n%1").arg(q(bookPath)),
                                          q(error));
    return false;
}

// Moves the damaged book and the journals SQLite keeps beside it out of the
// way: a journal left in place would be played back into the new book.
bool keepDamagedBook(const std::string& bookPath, const std::string& kept)
{
    std::error_code ec;
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
        const std::string from = bookPath + suffix;
        if (!fs::exists(from, ec)) continue;
        fs::rename(from, kept + suffix, ec);
        if (ec) {
            messageService().someMessageWithAlert(
                QStringLiteral("壊れたファイルの名前を変えられませんでした。\n%1").arg(q(from)), q(ec.message()));
            return false;
        }
    }
    return true;
}

bool offerNewBook(const BookCheck& check, const std::string& bookPath)
{
    const std::string kept =
        damagedBookPath(bookPath, currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")));
    const QString detail = check.detail.empty() ? QString() : QStringLiteral("（%1）\n").arg(q(check.detail));
    const QString question =
        QStringLiteral("家計簿のファイルが壊れているため、開けません。\n%1\n%2\n"
                       "新しい家計簿を始めることができます。壊れたファイルは消さずに、次の名前で残します。\n%3\n\n"
                       "backups フォルダにバックアップがあれば、それを Zenvora.sql として戻すこともできます。")
            .arg(q(bookPath), detail, q(kept));
    if (!messageService().yesNoMessageWithAlert(question, QStringLiteral("新しい家計簿を始める"),
                                                QStringLiteral("終了する")))
        return false;
    return keepDamagedBook(bookPath, kept) && provision(bookPath);
}

}  // namespace

std::string damagedBookPath(const std::string& bookPath, const QString& stamp)
{
    return bookPath + ".damaged-" + stamp.toStdString();
}

bool prepareBookForStart(const std::string& bookPath)
{
    const BookCheck check = checkBook(bookPath);
    switch (check.verdict) {
    case BookVerdict::Ready:
    case BookVerdict::Missing:
        return provision(bookPath);
    case BookVerdict::Damaged:
        return offerNewBook(check, bookPath);
    default: {
        const Refusal refusal = refusalFor(check, bookPath);
        messageService().someMessageWithAlert(refusal.message, refusal.advice);
        return false;
    }
    }
}

void sayBookAlreadyOpen(const std::string& bookPath)
{
    messageService().someMessageWithAlert(
        QStringLiteral("この家計簿はすでに別の Zenvora で開かれています。\n%1").arg(q(bookPath)),
        QStringLiteral("開いている Zenvora のウィンドウを使ってください。"));
}
