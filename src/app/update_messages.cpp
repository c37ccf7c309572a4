#include "app/update_messages.h"

#include <QCoreApplication>

namespace tavrel {
namespace {

using Outcome = UpdateReport::Outcome;

QString text(const char *source)
{
    return QCoreApplication::translate("UpdateMessages", source);
}

QString describe(const platform::UpdateEntry &entry)
{
    QStringList lines{
        text(QT_TRANSLATE_NOOP("UpdateMessages", "当前版本是 %1。")).arg(QCoreApplication::applicationVersion())};
    if (entry.published.isValid())
        lines.append(text(QT_TRANSLATE_NOOP("UpdateMessages", "发布日期：%1"))
                         .arg(entry.published.toString(QStringLiteral("yyyy-MM-dd"))));
    if (!entry.notes.isEmpty())
        lines.append({QString(), entry.notes});
    return lines.join(u'\n');
}

} // namespace

MessageBoard::Message updateMessage(const UpdateReport &report, std::function<void(const QUrl &)> openPage)
{
    MessageBoard::Message message{.topic = QStringLiteral("update"), .title = {}, .text = {}};
    switch (report.outcome) {
    case Outcome::NewVersion:
        message.title = text(QT_TRANSLATE_NOOP("UpdateMessages", "有新版本 %1")).arg(report.entry.version);
        message.text = describe(report.entry);
        if (report.entry.page.isEmpty())
            break;
        message.okText = text(QT_TRANSLATE_NOOP("UpdateMessages", "打开下载页"));
        message.cancelText = text(QT_TRANSLATE_NOOP("UpdateMessages", "以后再说"));
        message.answer = [openPage = std::move(openPage), page = report.entry.page](bool open) {
            if (open)
                openPage(page);
        };
        break;
    case Outcome::UpToDate:
        message.title = text(QT_TRANSLATE_NOOP("UpdateMessages", "已是最新版本"));
        message.text = text(QT_TRANSLATE_NOOP("UpdateMessages", "Tavrel %1 是目前的最新版本。"))
                           .arg(QCoreApplication::applicationVersion());
        break;
    case Outcome::Failed:
        message.icon = ui::dialogs::Icon::Warning;
        message.title = text(QT_TRANSLATE_NOOP("UpdateMessages", "检查更新失败"));
        message.text = report.problem;
        break;
    }
    return message;
}

} // namespace tavrel
