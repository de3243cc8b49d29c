#include "app/BookGate.h"

#include <QFileInfo>
#include <filesystem>
#include <fstream>

#include "store/BookCheck.h"
#include "store/BookLock.h"
#include "store/BookRestore.h"
#include "store/BookValues.h"
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
    case BookVerdict::ForeignJournal:
        return {QStringLiteral("家計簿のファイルの横に、この家計簿のものではないジャーナルファイルがあります。"
                               "このまま開くと、その中身が家計簿に書き戻されて家計簿が壊れます。\n%1\n%2%3")
                    .arg(file, q(bookPath + "-journal"), detail),
                QStringLiteral("ファイルには手を加えていません。バックアップを戻したときなどに、"
                               "前の家計簿のジャーナルが残ったものです。ジャーナルファイル %1 を別のフォルダに移してから、"
                               "もう一度起動してください。")
                    .arg(q(fs::path(bookPath).filename().string() + "-journal"))};
    default:
        return {QStringLiteral("家計簿のファイルを開けません。\n%1%2").arg(file, detail), QString()};
    }
}

void refuse(const BookCheck& check, const std::string& bookPath)
{
    const Refusal refusal = refusalFor(check, bookPath);
    messageService().someMessageWithAlert(refusal.message, refusal.advice);
}

bool provision(const std::string& bookPath)
{
    std::string error;
    if (provisionBook(bookPath, &error)) return true;
    messageService().someMessageWithAlert(QStringLiteral("家計簿のファイルを用意できませんでした。\n%1").arg(q(bookPath)),
                                          q(error));
    return false;
}

// A missing (or empty) book is created under the folder lock; a book that
// another start created meanwhile is left to it.
bool provisionMissing(const std::string& bookPath, BookLock& lock)
{
    const bool made = lock.replaceBook([&] {
        std::error_code ec;
        if (fs::exists(bookPath, ec) && fs::file_size(bookPath, ec) > 0) return true;
        return provision(bookPath);
    });
    return made && lock.state() == BookLock::State::Held;
}

// The choices for a damaged book, the safe one last.
struct DamageOffer {
    std::string backup;  // the newest sound daily backup, or ""
    std::string kept;    // where the damaged file goes
};

QString damageQuestion(const BookCheck& check, const std::string& bookPath, const DamageOffer& offer)
{
    const QString detail = check.detail.empty() ? QString() : QStringLiteral("（%1）\n").arg(q(check.detail));
    QString question = QStringLiteral("家計簿のファイルが壊れているため、開けません。\n%1\n%2\n").arg(q(bookPath), detail);
    if (offer.backup.empty()) {
        question += QStringLiteral("backups フォルダに、使えるバックアップはありません。\n"
                                   "新しい家計簿を始めることができます。");
    } else {
        const QString made = QFileInfo(q(offer.backup)).lastModified().toString(QStringLiteral("yyyy年MM月dd日 HH:mm"));
        question += QStringLiteral("%1 に作ったバックアップに戻すか、新しい家計簿を始めることができます。\n%2")
                        .arg(made, q(offer.backup));
    }
    return question + QStringLiteral("\n\nどちらの場合も、壊れたファイルは消さずに、次の名前で残します。\n%1").arg(q(offer.kept));
}

bool offerForDamagedBook(const BookCheck& check, const std::string& bookPath, BookLock& lock)
{
    const DamageOffer offer{
        newestSoundBackup(backupFolderOf(bookPath)),
        damagedBookPath(bookPath, currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")))};
    QStringList choices{QStringLiteral("新しい家計簿を始める"), QStringLiteral("終了する")};
    if (!offer.backup.empty()) choices.prepend(QStringLiteral("バックアップに戻す"));
    const int choice = messageService().choiceMessageWithAlert(damageQuestion(check, bookPath, offer), choices);
    if (choice < 0 || choice >= static_cast<int>(choices.size()) - 1) return false;
    const bool restore = !offer.backup.empty() && choice == 0;
    std::string error;
    const bool replaced = lock.replaceBook([&] {
        return restore ? restoreBackup(offer.backup, bookPath, offer.kept, &error)
                       : startNewBook(bookPath, offer.kept, &error);
    });
    if (!replaced) {
        messageService().someMessageWithAlert(
            restore ? QStringLiteral("バックアップを戻せませんでした。\n%1").arg(q(offer.backup))
                    : QStringLiteral("新しい家計簿を用意できませんでした。\n%1").arg(q(bookPath)),
            q(error));
        return false;
    }
    return lock.state() == BookLock::State::Held && provision(bookPath);
}

// Whether the process is stopped (a Ctrl+Z in its terminal, a debugger).
bool stopped(pid_t pid)
{
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(stat, line);
    const auto end = line.rfind(')');
    return end != std::string::npos && end + 2 < line.size() && (line[end + 2] == 'T' || line[end + 2] == 't');
}

}  // namespace

std::string damagedBookPath(const std::string& bookPath, const QString& stamp)
{
    return bookPath + ".damaged-" + stamp.toStdString();
}

std::string backupFolderOf(const std::string& bookPath)
{
    return (fs::path(bookPath).parent_path() / "backups").string();
}

bool prepareBookForStart(const std::string& bookPath, BookLock& lock)
{
    if (lock.state() == BookLock::State::Held) removeReplacementLeftovers(bookPath);
    const BookCheck check = checkBookLayout(bookPath);
    switch (check.verdict) {
    case BookVerdict::Missing:
        return provisionMissing(bookPath, lock);
    case BookVerdict::Ready:
        return true;
    case BookVerdict::Damaged:
        return offerForDamagedBook(check, bookPath, lock);
    default:
        refuse(check, bookPath);
        return false;
    }
}

PagesVerdict acceptBookPages(const BookCheck& pages, const std::string& bookPath, BookLock& lock)
{
    switch (pages.verdict) {
    case BookVerdict::Ready:
        return provision(bookPath) ? PagesVerdict::Sound : PagesVerdict::Refused;
    case BookVerdict::Damaged:
        return offerForDamagedBook(pages, bookPath, lock) ? PagesVerdict::Replaced : PagesVerdict::Refused;
    default:
        refuse(pages, bookPath);
        return PagesVerdict::Refused;
    }
}

int sayBookAlreadyOpen(const std::string& bookPath, const SingleInstance::Reply& reply)
{
    const QString file = q(bookPath);
    switch (reply.answer) {
    case SingleInstance::Answer::Raised:
    case SingleInstance::Answer::Starting:
        return 0;
    case SingleInstance::Answer::Asking:
        messageService().someMessageWithAlert(
            QStringLiteral("この家計簿は、別の Zenvora が開こうとしているところです。\n%1").arg(file),
            QStringLiteral("その Zenvora が、家計簿について確認のメッセージを表示しています。そちらで答えてください。"));
        return 0;
    case SingleInstance::Answer::Silent:
        break;
    }
    const QString who = reply.pid > 0 ? QStringLiteral("（プロセス番号 %1）").arg(reply.pid) : QString();
    const QString advice =
        reply.pid > 0 && stopped(reply.pid)
            ? QStringLiteral("そのプログラムは一時停止しています（端末で Ctrl+Z を押したときなど）。"
                             "その端末で fg と入力して再開するか、そのプログラムを終了してから、もう一度起動してください。")
            : QStringLiteral("そのプログラムが止まっているか、時間のかかる処理の途中です。しばらく待ってからもう一度起動するか、"
                             "そのプログラムを終了してから起動してください。");
    messageService().someMessageWithAlert(
        QStringLiteral("この家計簿を開いている別の Zenvora%1が応答しません。\n%2").arg(who, file), advice);
    return 1;
}

void sayDanglingLink(const BookPath& path)
{
    messageService().someMessageWithAlert(
        QStringLiteral("家計簿として指定されたリンクの先に、ファイルがありません。\n%1\n→ %2")
            .arg(q(path.danglingLink), q(path.missingTarget)),
        QStringLiteral("新しい家計簿は作っていません。リンク先のファイルを戻すか、リンクを直してから、もう一度起動してください。"));
}

void sayUnreadableValue(const std::string& bookPath, const BadValue& bad)
{
    messageService().someMessageWithAlert(
        QStringLiteral("家計簿のファイルに、Zenvora が読めない値があります。\n%1\n表 %2、Id %3 の行の %4 の欄：「%5」")
            .arg(q(bookPath), q(bad.table))
            .arg(bad.id)
            .arg(q(bad.column), q(bad.value)),
        QStringLiteral("数値の欄には、範囲内の整数だけが入ります（金額は -2,147,483,648 から 2,147,483,647 まで）。"
                       "ファイルには手を加えていません。別のツールで値を直すか、backups フォルダのバックアップを戻してから、"
                       "もう一度起動してください。"));
}

void sayBookIsBeingRead(const std::string& bookPath)
{
    messageService().someMessageWithAlert(
        QStringLiteral("別のプログラムが家計簿のファイルを読み込み中のため、訂正した残高をまだ保存できません。\n%1")
            .arg(q(bookPath)),
        QStringLiteral("画面の残高は、記録から計算した正しい値です。残高は、次に変更を保存するときか、終了するときに保存します。"));
}
