#include "app/update_messages.h"
#include "platform/unsupported/unsupported_services.h"
#include "support/test_main.h"
#include "ui/dialog_hosts.h"
#include "ui/theme_source.h"

#include <QApplication>
#include <QPushButton>

using namespace tavrel;
using Outcome = UpdateReport::Outcome;

namespace {

UpdateReport newVersion()
{
    return {.outcome = Outcome::NewVersion,
            .entry = {.build = 200,
                      .version = u"0.2.0"_qs,
                      .published = QDate(2026, 11, 23),
                      .notes = u"<b>is text</b>"_qs,
                      .page = QUrl(u"https://example.org/get"_qs)},
            .problem = {}};
}

QList<QPushButton *> shownButtons()
{
    QList<QPushButton *> buttons;
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows)
        if (window->isVisible())
            for (auto *button : window->findChildren<QPushButton *>())
                if (button->isVisible())
                    buttons.append(button);
    return buttons;
}

} // namespace

class UpdateMessagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saysWhatWasFound()
    {
        QList<QUrl> opened;
        const auto open = [&opened](const QUrl &page) { opened.append(page); };
        const auto message = updateMessage(newVersion(), open);
        QVERIFY(message.title.contains(u"0.2.0"));
        QCOMPARE(message.text, u"当前版本是 0.1.5。\n发布日期：2026-11-23\n\n<b>is text</b>"_qs);
        message.answer(false);
        QVERIFY(opened.isEmpty());
        message.answer(true);
        QCOMPARE(opened, QList{QUrl(u"https://example.org/get"_qs)});

        UpdateReport bare = newVersion();
        bare.entry.page.clear();
        bare.entry.published = {};
        bare.entry.notes.clear();
        const auto noPage = updateMessage(bare, open);
        QCOMPARE(noPage.text, u"当前版本是 0.1.5。"_qs);
        QVERIFY(noPage.cancelText.isEmpty() && !noPage.answer); // nothing to choose
    }

    // The outcome of a later check takes the place of an open message: its buttons have to mean what it says.
    void aLaterOutcomeBringsItsButtons()
    {
        QList<QUrl> opened;
        const auto open = [&opened](const QUrl &page) { opened.append(page); };
        const ui::ThemeSource themes;
        MessageBoard board({platform::Unsupported::windowController(), [](QWindow *) {}, themes});
        board.show(updateMessage({.outcome = Outcome::Failed, .entry = {}, .problem = u"!"_qs}, open));
        QTRY_COMPARE(shownButtons().size(), 1);
        board.show(updateMessage(newVersion(), open));
        QTRY_COMPARE(shownButtons().size(), 2);
        QCOMPARE(shownButtons().last()->text(), u"打开下载页"_qs);
        shownButtons().last()->click();
        QTRY_COMPARE(opened.size(), 1);
        QVERIFY(!board.isOpen());
    }
};

TAVREL_TEST_MAIN(QApplication, UpdateMessagesTest)
#include "test_update_messages.moc"
